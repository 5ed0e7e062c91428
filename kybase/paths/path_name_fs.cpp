// KyPathName: questions to the file system, creating and removing, the current
// directory, the 8.3 spelling and the locale variant of a path.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kybase/locale/kylocale.h"
#include "kybase/locale/locale_descriptor.h"
#include "kybase/paths/path_name.h"
#include "kybase/paths/path_name_internal.h"

namespace {

const long kMsdosMagic = 0x4d44;

std::string Bytes(const KyString& value) {
  const char* text;
  const int size = KyPathBytes(value, text);
  return std::string(text, static_cast<std::size_t>(size));
}

// A directory form is stat'ed by its name without the trailing separator.
bool StatText(const KyString& text, struct stat& record) {
  const KyPathName path(text);
  const std::string name =
      Bytes(path.isDirectory() ? path.getDirName(false, KyPathName::kSystemPathType) : text);
  return ::stat(name.c_str(), &record) == 0;
}

bool StatPath(const KyPathName& path, struct stat& record) {
  return StatText(path.getString(KyPathName::kSystemPathType), record);
}

// The current directory, whatever its length; empty when the system cannot say.
std::string CurrentDirectory() {
  std::vector<char> buffer(256);
  for (;;) {
    if (::getcwd(buffer.data(), buffer.size()) != nullptr) return std::string(buffer.data());
    if (errno != ERANGE) return std::string();
    buffer.resize(buffer.size() * 2);
  }
}

// Non-blocking, so that a FIFO without a writer (or reader) answers at once instead of
// holding the caller.
bool OpenAndClose(const std::string& name, int flags) {
  const int fd = ::open(name.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

// A file made only to see that it can be made, and removed at once.
bool MakeAndUnlink(const std::string& name) {
  if (!OpenAndClose(name, O_WRONLY | O_CREAT | O_EXCL)) return false;
  ::unlink(name.c_str());
  return true;
}

bool IsRoot(const std::string& name) {
  struct stat self;
  struct stat root;
  return ::stat(name.c_str(), &self) == 0 && ::stat("/", &root) == 0 && self.st_dev == root.st_dev &&
         self.st_ino == root.st_ino;
}

bool IsLink(const std::string& name) {
  struct stat record;
  return ::lstat(name.c_str(), &record) == 0 && S_ISLNK(record.st_mode);
}

}  // namespace

namespace {

// The access tests behind isReadable and isWritable: mode 4 reads, mode 2 writes.
bool AccessTest(const KyPathName& path, int mode) {
  const std::string text = Bytes(path.getString(KyPathName::kSystemPathType));
  const std::string dirName = Bytes(path.getDirName(false, KyPathName::kSystemPathType));
  if (mode == 4) {
    if (path.isDirectory()) {
      struct statfs volume;
      if (::statfs(dirName.c_str(), &volume) == 0 && static_cast<long>(volume.f_type) == kMsdosMagic) return true;
      DIR* handle = ::opendir(text.c_str());
      if (handle == nullptr) return false;
      ::closedir(handle);
      return true;
    }
    return OpenAndClose(text, O_RDONLY);
  }
  if (path.isDirectory()) {
    if (path.doesExist()) return MakeAndUnlink(text + "kyvtempaccess.tst");
    // The reversed sense is kept: a directory that can be made is left behind and the
    // answer is false; one that cannot is reported writable.
    if (::mkdir(dirName.c_str(), 0777) == 0) return false;
    ::rmdir(dirName.c_str());
    return true;
  }
  if (!path.doesExist()) return MakeAndUnlink(text);
  return OpenAndClose(text, O_WRONLY);
}

std::string TargetOf(const KyPathName& path) {
  return Bytes(path.isDirectory() ? path.getDirName(false, KyPathName::kSystemPathType)
                                  : path.getString(KyPathName::kSystemPathType));
}

}  // namespace

bool KyPathName::doesExist() const {
  struct stat record;
  return StatPath(*this, record);
}

bool KyPathName::isSystemDirectory() const {
  KyPathName copy(*this);
  copy.forceDirectory();
  struct stat record;
  return StatPath(copy, record) && S_ISDIR(record.st_mode);
}

bool KyPathName::isReadable() const {
  const bool readable = ::access(TargetOf(*this).c_str(), R_OK) == 0;
  const bool tested = AccessTest(*this, 4);
  return readable && tested;
}

bool KyPathName::isWritable() const {
  const bool exists = doesExist();
  const std::string target = exists ? TargetOf(*this) : Bytes(getDirName(false, kSystemPathType));
  if (exists && !isDirectory() && ::access(target.c_str(), W_OK) != 0) return false;
  return AccessTest(*this, 2);
}

bool KyPathName::isExecutable() const {
  if (!isReadable()) return false;
  for (const char* extension : {"exe", "bat", "com"})
    if (_extension.caseCompare(extension) == 0) return true;
  return !isDirectory() && ::access(TargetOf(*this).c_str(), X_OK) == 0;
}

bool KyPathName::isNewer(const KyPathName& other) const {
  struct stat mine;
  struct stat theirs;
  return StatPath(*this, mine) && StatPath(other, theirs) && mine.st_mtime >= theirs.st_mtime;
}

bool KyPathName::isSensitive() const {
  // A path without a device names no volume: not sensitive.
  if (_device.isEmpty()) return false;
  std::string root = Bytes(_device);
  if (_device.getLength() == 1) root += ':';
  root += '\\';
  struct statfs volume;
  if (::statfs(root.c_str(), &volume) != 0) return false;
  // FAT volumes ignore case; statfs has no flag for a case-insensitive search, which
  // therefore reads as clear.
  return static_cast<long>(volume.f_type) != kMsdosMagic;
}

bool KyPathName::queryAccessTime(long long& time) const {
  struct stat record;
  if (!StatPath(*this, record)) return false;
  time = static_cast<long long>(record.st_atime);
  return true;
}

bool KyPathName::queryModificationTime(long long& time) const {
  struct stat record;
  if (!StatPath(*this, record)) return false;
  time = static_cast<long long>(record.st_mtime);
  return true;
}

bool KyPathName::queryChangedStatusTime(long long& time) const {
  struct stat record;
  if (!StatPath(*this, record)) return false;
  time = static_cast<long long>(record.st_ctime);
  return true;
}

bool KyPathName::queryMode(short& mode) const {
  mode = 0;
  struct stat record;
  if (!StatPath(*this, record)) return false;
  mode = static_cast<short>(record.st_mode);
  return true;
}

bool KyPathName::changeMode(short mode) const {
  if (isDirectory() || !doesExist()) return false;
  return ::chmod(Bytes(getString(kSystemPathType)).c_str(), static_cast<mode_t>(static_cast<unsigned short>(mode))) == 0;
}

bool KyPathName::changeCurrentDirectory() const {
  return ::chdir(Bytes(getDirName(false, kSystemPathType)).c_str()) == 0;
}

bool KyPathName::create(short mode, bool recursive) const {
  if (doesExist()) return true;
  const auto setMode = [mode](const char* name) {
    if (mode != -1) ::chmod(name, static_cast<mode_t>(static_cast<unsigned short>(mode)));
  };
  if (!isDirectory()) {
    KyPathName parent(*this);
    parent._fileName = KyString();
    parent._extension = KyString();
    if (!parent.create(mode, recursive)) return false;
    const std::string text = Bytes(getString(kSystemPathType));
    std::FILE* file = std::fopen(text.c_str(), "w");
    if (file == nullptr || std::fclose(file) != 0) return false;
    setMode(text.c_str());
    return true;
  }
  if (!recursive) return false;
  // The directories from this one up to the first that exists (or the top level),
  // climbed on one buffer: each ancestor is the text up to one of its "/".
  std::string names = Bytes(getUnixDirectory(true));
  std::vector<std::size_t> ends;  // the length of each missing name, deepest first
  std::size_t end = names.size();
  int level = computeLevelNumber();
  // Above the first level the text has two "/" at least, so each climb finds one.
  for (;;) {
    ends.push_back(end - 1);
    if (level <= 1) break;
    end = names.rfind('/', end - 2) + 1;
    --level;
    names[end - 1] = '\0';
    struct stat record;
    const bool exists = ::stat(names.c_str(), &record) == 0;
    names[end - 1] = '/';
    if (exists) break;
  }
  for (std::size_t k = ends.size(); k-- > 0;) {
    const char saved = names[ends[k]];
    names[ends[k]] = '\0';
    const bool made = ::mkdir(names.c_str(), 0777) == 0;
    if (made) setMode(names.c_str());
    names[ends[k]] = saved;
    if (!made) return false;
  }
  return true;
}

bool KyPathName::remove(bool recursive) const {
  if (!doesExist()) return false;
  if (!isDirectory()) return std::remove(Bytes(getString(kSystemPathType)).c_str()) == 0;
  const std::string name = Bytes(getDirName(false, kSystemPathType));
  // A link is removed as a link, never followed; the root is never removed.
  if (IsLink(name)) return ::unlink(name.c_str()) == 0;
  if (IsRoot(name)) return false;
  if (!isSystemDirectory()) return false;
  if (isEmptyDirectory()) return ::rmdir(name.c_str()) == 0;
  if (!recursive) return false;
  bool result = openDir();
  if (result) {
    KyPathName entry;
    while (readDir(entry)) {
      if (entry.isEmpty()) continue;
      const KyString directory = entry.getUnixDirectory(true);
      if (directory == "../" || directory == "/") continue;
      // The "." entry of a path with a device names this very directory.
      if (entry._directory.isEmpty() && entry.isDirectory()) {
        result = false;
        continue;
      }
      KyPathName full(*this);
      full.merge(entry);
      const std::string fullName = Bytes(full.isDirectory() ? full.getDirName(false, kSystemPathType)
                                                            : full.getString(kSystemPathType));
      if (IsLink(fullName))
        result = (::unlink(fullName.c_str()) == 0) && result;
      else
        result = full.remove(true) && result;
    }
    closeDir();
  }
  return (::rmdir(name.c_str()) == 0) && result;
}

void KyPathName::QueryCurrentDirectory(char* const buffer, int size, KyString* device) {
  int saved = -1;
  if (device != nullptr && !device->isEmpty()) {
    // The way back is a handle on the directory, which works however long its name is
    // and even when it was removed meanwhile.
    saved = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    KyPathName root;
    root.setDevice(*device, -1, 0);
    root.setUnixDirectory("/", -1, 0);
    // A root that cannot be entered leaves the current directory as the answer.
    static_cast<void>(::chdir(Bytes(root.getDirName(false, kSystemPathType)).c_str()) == 0);
  }
  const std::string current = CurrentDirectory();
  if (buffer != nullptr && size > 0) {
    if (current.size() < static_cast<std::size_t>(size))
      std::memcpy(buffer, current.c_str(), current.size() + 1);
    else
      buffer[0] = '\0';
  }
  if (saved >= 0) {
    static_cast<void>(::fchdir(saved) == 0);
    ::close(saved);
  }
}

void KyPathName::queryCurrentDirectory(KyString* device) {
  std::string current;
  if (device != nullptr && !device->isEmpty()) {
    std::vector<char> buffer(4096);
    for (;;) {
      QueryCurrentDirectory(buffer.data(), static_cast<int>(buffer.size()), device);
      if (buffer[0] != '\0' || buffer.size() > (1u << 24)) break;
      buffer.resize(buffer.size() * 4);
    }
    current = buffer.data();
  } else {
    current = CurrentDirectory();
  }
  setUnixDirName(KyPathText(current), -1, 0);
}

KyString KyPathName::get83DosValue() const {
  KyString value(_device);
  if (_device.getLength() == 1) value += ":";
  if (!_directory.isEmpty() || isDirectory()) {
    KyString d = getDosDirectory(true);
    const KyString separator("\\");
    const KyString dot(".");
    int a = d.startsWith(separator) ? 1 : 0;
    int b = d.getIndexOf(separator, a);
    // The offsets kept after a long stem are those of the original 8.3 cut; a removal
    // always shortens the text and every other step moves a forward, so this ends.
    while (b >= 0) {
      const int p = d.getIndexOf(dot, a);
      int limit = 8;
      if (p >= 0 && p < b) {
        if (p - a > 8) {
          d.remove(a + 8, p);
          b += 8 - p;
        }
        a = p + 1;
        limit = 3;
      }
      if (b - a > limit) {
        d.remove(a + limit, b);
        b += limit - (b - a);
      }
      a = b + 1;
      b = d.getIndexOf(separator, a);
    }
    value += d;
  }
  value += _fileName.getSubString(0, 8);
  if (!_extension.isEmpty()) {
    value += ".";
    value += _extension.getSubString(0, 3);
  }
  _value = value;
  _dirty = true;
  return value;
}

void KyPathName::localize() {
  KyPathName local("locale/");
  KyLocale* locale = KyLocale::Get(false, nullptr);
  if (locale == nullptr) return;
  KyLocaleCatDescriptor* descriptor = locale->getCategory(kCategoryMessages);
  char* name = nullptr;
  if (descriptor != nullptr && descriptor->isStandard()) {
    name = descriptor->getStdLocaleName();
  } else if (descriptor == nullptr) {
    return;
  } else {
    const char* system = descriptor->getSystemLocaleName();
    if (system == nullptr || *system == '\0') return;
    name = new char[std::strlen(system) + 1];
    std::strcpy(name, system);
  }
  if (name != nullptr && *name != '\0') {
    for (char* c = name; *c != '\0'; ++c)
      if (*c == '\\') *c = '/';
    local.addUnixDirectory(name, -1, 0);
  }
  delete[] name;
  local._fileName = _fileName;
  local._extension = _extension;
  merge(local);
}

bool KyPathName::doesExist(const KyString& text) { return KyPathName(text).doesExist(); }

bool KyPathName::isExecutable(const KyString& text) { return KyPathName(text).isExecutable(); }

bool KyPathName::isReadable(const KyString& text) { return KyPathName(text).isReadable(); }

bool KyPathName::isWritable(const KyString& text) { return KyPathName(text).isWritable(); }

KyString KyPathName::Localize(const KyString& text) {
  KyPathName path(text);
  path.localize();
  return path.getString(kSystemPathType);
}
