// KyPathName: the directory scan kept in the object, and matching against a pattern.
#include <dirent.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "kybase/paths/path_name.h"
#include "kybase/paths/path_name_internal.h"

namespace {

// A scan of name, positioned before its first entry; null when the directory cannot
// be read.
KyDirScan* OpenScan(const std::string& name) {
  DIR* handle = ::opendir(name.c_str());
  if (handle == nullptr) return nullptr;
  return new KyDirScan{handle, false, 0, name, std::string()};
}

bool NextEntry(KyDirScan& scan, unsigned char& type) {
  if (scan.finished) return false;
  const dirent* entry = ::readdir(scan.handle);
  if (entry == nullptr) {
    scan.finished = true;
    return false;
  }
  scan.entry = entry->d_name;
  type = entry->d_type;
  ++scan.nextIndex;
  return true;
}

// Whether text matches pattern, both lowered first when case does not count.
bool Matches(KyString text, KyString pattern, bool sensitive) {
  if (!sensitive) {
    text.toLower();
    pattern.toLower();
  }
  return text.matches(pattern);
}

}  // namespace

bool KyPathName::openDir() const {
  if (_scan != nullptr) closeDir();
  const char* text;
  const KyString name = getDirName(true, kSystemPathType);
  const int size = KyPathBytes(name, text);
  _scan = OpenScan(std::string(text, static_cast<std::size_t>(size)));
  if (_scan != nullptr) return true;
  // A root that cannot be opened still counts as opened, and its scan is empty.
  return _directory == "/";
}

bool KyPathName::readDir(KyPathName& entry) const {
  unsigned char type = DT_UNKNOWN;
  if (_scan == nullptr || !NextEntry(*_scan, type)) return false;
  // A single-byte name is used where it stands; a multi-byte one goes through a string,
  // which stops at an invalid sequence.
  KyString name;
  const char* text = _scan->entry.c_str();
  int size = static_cast<int>(_scan->entry.size());
  if (MB_CUR_MAX >= 2) {
    name = KyString(text);
    size = KyPathBytes(name, text);
  }
  // The entry's own type stands in for a stat where the two agree; links and unknown
  // types are stat'ed through the path, so a link to a directory reads as one. A
  // directory entry keeps this path's device and has the name as its directory; a
  // file entry is the bare name.
  bool directory = type == DT_DIR;
  if (type == DT_UNKNOWN || type == DT_LNK) {
    entry = *this;
    entry.setBaseNameBytes(text, 0, size, size - 1);
    directory = entry.isSystemDirectory();
  }
  if (directory) {
    entry._device = _device;
    entry._directory = KyString();
    entry.setDirBytes(text, 0, size);
    entry._fileName = KyString();
    entry._extension = KyString();
  } else {
    entry.clearDirAndDevice();
    entry.setBaseNameBytes(text, 0, size, size - 1);
  }
  entry.closeDir();
  return true;
}

void KyPathName::rewindDir() const {
  if (_scan == nullptr) return;
  ::rewinddir(_scan->handle);
  _scan->finished = false;
  _scan->nextIndex = 0;
}

bool KyPathName::closeDir() const {
  if (_scan != nullptr) {
    ::closedir(_scan->handle);
    delete _scan;
    _scan = nullptr;
  }
  return true;
}

bool KyPathName::isEmptyDirectory() const {
  if (!openDir()) return false;
  bool empty = true;
  KyPathName entry;
  while (readDir(entry)) {
    if (entry.isEmpty() || entry.getUnixDirectory(true) == "../" || entry.isAbsolute()) continue;
    empty = false;
    break;
  }
  closeDir();
  return empty;
}

bool KyPathName::match(const KyPathName& pattern) const {
  const bool sensitive = isSensitive() && pattern.isSensitive();
  if (!Matches(_device, pattern._device, sensitive)) return false;
  if (!Matches(getUnixDirectory(true), pattern.getUnixDirectory(true), sensitive)) return false;
  const KyString base = getBaseName();
  const KyString alternatives = pattern.getBaseName();
  const char* text;
  const int size = KyPathBytes(alternatives, text);
  const std::string p(text, static_cast<std::size_t>(size));
  const std::size_t o = p.find('(');
  const std::size_t c = p.find(')');
  const std::size_t b = o == std::string::npos ? std::string::npos : p.find('|', o);
  if (o == std::string::npos || c == std::string::npos || b == std::string::npos || c <= o || b >= c)
    return Matches(base, alternatives, sensitive);
  const std::string head = p.substr(0, o);
  const std::string tail = p.substr(c + 1);
  // The search for the next "|" runs to the end of the pattern, past ")".
  std::size_t from = o + 1;
  for (std::size_t bar = b; bar != std::string::npos; bar = p.find('|', bar + 1)) {
    if (Matches(base, KyPathText(head + p.substr(from, bar - from) + tail), sensitive)) return true;
    from = bar + 1;
  }
  // The last alternative runs to ")"; after a "|" beyond ")" it is empty.
  const std::string last = from < c ? p.substr(from, c - from) : std::string();
  return Matches(base, KyPathText(head + last + tail), sensitive);
}
