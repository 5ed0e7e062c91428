// KyPathName: the model, the parsers, normalisation and the text forms.
#include "kybase/paths/path_name.h"

#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>

#include "kybase/paths/path_name_internal.h"

namespace {

// The byte offset of character `chars` of a multi-byte text, and of the end when it
// has fewer characters.
int ByteOfChar(const char* text, int size, int chars) {
  std::mbstate_t state{};
  int used = 0;
  for (int n = 0; n < chars && used < size; ++n) {
    const std::size_t step = std::mbrlen(text + used, static_cast<std::size_t>(size - used), &state);
    if (step == 0 || step > static_cast<std::size_t>(size - used)) return size;
    used += static_cast<int>(step);
  }
  return used;
}

std::string Slashed(const char* text, int begin, int end) {
  std::string sub(text + begin, static_cast<std::size_t>(end - begin));
  for (char& c : sub)
    if (c == '\\') c = '/';
  return sub;
}

bool IsDriveLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int LastOf(const char* text, char c, int from) {
  for (int i = from; i >= 0; --i)
    if (text[i] == c) return i;
  return -1;
}

}  // namespace

KyString KyPathText(const char* text, int count) {
  if (count <= 0) return KyString();
  if (MB_CUR_MAX < 2) return KyString(text, count);
  // A multi-byte string reads its text to the terminator.
  return KyString(std::string(text, static_cast<std::size_t>(count)).c_str());
}

KyPathSpan KyPathSpanOf(const KyString& value, int end, int start) {
  KyPathSpan span;
  span.size = KyPathBytes(value, span.text);
  KyInternalString* body = value.getInternalString();
  const int chars = body->getLength();
  span.empty = span.size == 0 || end == 0 || end < -1 || (end > 0 && end <= start) || (end == -1 && chars <= start);
  if (start < 0) start = 0;
  if (start > chars) start = chars;
  const bool whole = end == -1 || end >= chars;
  int last = whole ? chars : end;
  if (last < start) last = start;
  if (last == start) span.empty = true;
  if (body->isMultiByte() == 0) {
    span.begin = start;
    span.end = last;
  } else {
    span.begin = ByteOfChar(span.text, span.size, start);
    span.end = span.begin + ByteOfChar(span.text + span.begin, span.size - span.begin, last - start);
  }
  // A search "at or before end" also looks at the character at end.
  span.probe = whole || span.end >= span.size ? span.size - 1 : span.end;
  return span;
}

bool KyIsNormalDirectory(const char* text, int size) {
  if (size == 0 || text[size - 1] != '/') return false;
  if (size >= 2 && text[0] == '.' && text[1] == '/') return false;
  int s = 0;
  if (size >= 3 && text[0] == '.' && text[1] == '.' && text[2] == '/') {
    while (s + 3 <= size && text[s] == '.' && text[s + 1] == '.' && text[s + 2] == '/') s += 3;
    s -= 1;
  }
  for (int i = 0; i + 1 < size; ++i) {
    if (text[i] != '/') continue;
    if (text[i + 1] == '/') return false;
    if (text[i + 1] != '.') continue;
    if (i + 2 < size && text[i + 2] == '/') return false;
    // A "/../" at the very start ends the resolution before anything changes.
    if (i + 3 < size && text[i + 2] == '.' && text[i + 3] == '/' && i >= s && i > 0) return false;
  }
  return true;
}

namespace {

// The directory steps in place on buf, which holds the text and room for one more
// byte; returns the new length. Every step writes no further than it has read.
int NormalizeInto(const char* text, int size, char* buf) {
  std::char_traits<char>::copy(buf, text, static_cast<std::size_t>(size));
  int n = size;
  if (n == 0 || buf[n - 1] != '/') buf[n++] = '/';
  // "/./" by "/" in one substitution pass. Occurrences overlapping by their last "/"
  // ("/././") are cut back to one "/", as the string's substitution does.
  int w = 0;
  for (int i = 0; i < n;) {
    if (i + 2 < n && buf[i] == '/' && buf[i + 1] == '.' && buf[i + 2] == '/') {
      buf[w++] = '/';
      i += 2;
      while (i + 2 < n && buf[i + 1] == '.' && buf[i + 2] == '/') i += 2;
      i += 1;
    } else {
      buf[w++] = buf[i++];
    }
  }
  n = w;
  // Runs of "/" become one.
  w = 0;
  for (int i = 0; i < n; ++i)
    if (buf[i] != '/' || w == 0 || buf[w - 1] != '/') buf[w++] = buf[i];
  n = w;
  int first = 0;
  if (n >= 2 && buf[0] == '.' && buf[1] == '/') first = 2;
  // s ends the leading group of "../"; "x/../" pairs after it are taken out from the
  // left, a pair that meets the group extends it, and a "/../" at the very start ends
  // the work. The text is read once: a pair is seen when its last "/" arrives.
  const char* t = buf + first;
  const int length = n - first;
  int s = 0;
  if (length >= 3 && t[0] == '.' && t[1] == '.' && t[2] == '/') {
    while (s + 3 <= length && t[s] == '.' && t[s + 1] == '.' && t[s + 2] == '/') s += 3;
    s -= 1;
  }
  w = 0;
  for (int k = 0; k < length; ++k) {
    buf[w++] = t[k];
    const int i = w - 4;
    if (i < s || t[k] != '/' || buf[i] != '/' || buf[i + 1] != '.' || buf[i + 2] != '.') continue;
    if (i == 0) {
      std::char_traits<char>::move(buf + w, t + k + 1, static_cast<std::size_t>(length - k - 1));
      return w + length - k - 1;
    }
    if (i == s) {
      s += 3;
      continue;
    }
    int p = i - 1;
    while (p >= 0 && buf[p] != '/') --p;
    w = p + 1;
  }
  return w;
}

}  // namespace

KyString KyNormalizedDirectory(const char* text, int size) {
  char local[512];
  std::unique_ptr<char[]> heap;
  char* buf = local;
  if (size + 1 > static_cast<int>(sizeof local)) {
    heap.reset(new char[static_cast<std::size_t>(size) + 1]);
    buf = heap.get();
  }
  return KyPathText(buf, NormalizeInto(text, size, buf));
}

KyPathName::KyPathName() = default;

KyPathName::KyPathName(const KyString& text) { setUnixValue(text, -1, 0); }

KyPathName::KyPathName(const char* text) {
  if (text == nullptr) return;
  // Single-byte text is parsed where it stands; multi-byte text goes through a string,
  // which stops at an invalid sequence.
  if (MB_CUR_MAX < 2) {
    const int size = static_cast<int>(std::char_traits<char>::length(text));
    setValBytes(text, size, 0, size, size - 1);
  } else {
    setUnixValue(KyString(text), -1, 0);
  }
}

KyPathName::KyPathName(const KyPathName& other) { copyParts(other); }

void KyPathName::copyParts(const KyPathName& other) {
  setDevice(other._device, -1, 0);
  const char* text;
  const int size = KyPathBytes(other._directory, text);
  // A directory that normalising would leave as it is is shared, not rebuilt.
  if (size == 0 || KyIsNormalDirectory(text, size))
    _directory = other._directory;
  else
    setUnixDirectory(other.getUnixDirectory(true), -1, 0);
  _fileName = other._fileName;
  _extension = other._extension;
  _dirty = true;
}

KyPathName::~KyPathName() { closeDir(); }

KyPathName& KyPathName::operator=(const KyPathName& other) {
  if (this == &other) return *this;
  copyParts(other);
  closeDir();
  return *this;
}

KyPathName& KyPathName::operator=(const KyString& text) {
  setValue(text, -1, kSystemPathType, 0);
  closeDir();
  return *this;
}

KyPathName& KyPathName::operator=(const char* text) { return *this = KyString(text); }

KyPathName::operator KyString() const { return getString(kSystemPathType); }

KyPathName::operator const char*() const {
  getString(kSystemPathType);
  return _value.getValue();
}

bool KyPathName::operator==(const KyPathName& other) const {
  return _device.caseCompare(other._device) == 0 && _directory.caseCompare(other._directory) == 0 &&
         _fileName.caseCompare(other._fileName) == 0 && _extension.caseCompare(other._extension) == 0;
}

KyString KyPathName::getBaseName() const {
  if (_extension.isEmpty()) return _fileName;
  KyString name(_fileName);
  name += ".";
  name += _extension;
  return name;
}

KyString KyPathName::getUnixDirectory(bool keepSeparator) const {
  if (_directory.isEmpty()) return keepSeparator ? "./" : ".";
  const char* text;
  const int size = KyPathBytes(_directory, text);
  if (keepSeparator || size < 2) return _directory;
  return KyPathText(text, size - 1);
}

KyString KyPathName::getDosDirectory(bool keepSeparator) const {
  KyString directory = getUnixDirectory(keepSeparator);
  const char* text;
  const int size = KyPathBytes(directory, text);
  std::string dos(text, static_cast<std::size_t>(size));
  for (char& c : dos)
    if (c == '/') c = '\\';
  return KyPathText(dos);
}

KyString KyPathName::getDirectory(bool keepSeparator, KyPathType type) const {
  return type == kDosPathType ? getDosDirectory(keepSeparator) : getUnixDirectory(keepSeparator);
}

KyString KyPathName::getDirName(bool keepSeparator, KyPathType type) const {
  if (type != kDosPathType) return getUnixDirectory(keepSeparator);
  KyString name(_device);
  if (_device.getLength() == 1) name += ":";
  name += getDosDirectory(keepSeparator);
  return name;
}

namespace {

struct Piece {
  const char* text;
  int size;
};

Piece PieceOf(const KyString& value) {
  Piece piece;
  piece.size = KyPathBytes(value, piece.text);
  return piece;
}

// The pieces one after the other, built on the stack when short.
KyString Joined(const Piece* pieces, int count) {
  int total = 0;
  for (int k = 0; k < count; ++k) total += pieces[k].size;
  char local[512];
  std::unique_ptr<char[]> heap;
  char* buf = local;
  if (total > static_cast<int>(sizeof local)) {
    heap.reset(new char[static_cast<std::size_t>(total)]);
    buf = heap.get();
  }
  int at = 0;
  for (int k = 0; k < count; ++k) {
    std::char_traits<char>::copy(buf + at, pieces[k].text, static_cast<std::size_t>(pieces[k].size));
    at += pieces[k].size;
  }
  return KyPathText(buf, total);
}

}  // namespace

KyString KyPathName::getUnixValue() const {
  const bool withDirectory = !_directory.isEmpty() || isDirectory();
  if (_extension.isEmpty() && (!withDirectory || _fileName.isEmpty())) {
    // One part alone is shared, not copied.
    _value = withDirectory ? getUnixDirectory(true) : _fileName;
  } else {
    const KyString directory = withDirectory ? getUnixDirectory(true) : KyString();
    Piece pieces[4] = {PieceOf(directory), PieceOf(_fileName), {".", _extension.isEmpty() ? 0 : 1},
                       PieceOf(_extension)};
    _value = Joined(pieces, 4);
  }
  _dirty = false;
  return _value;
}

KyString KyPathName::getDosValue() const {
  Piece pieces[7];  // device, ":", "\\", directory, file name, ".", extension
  int count = 0;
  KyString directory;
  if (!_device.isEmpty()) {
    pieces[count++] = PieceOf(_device);
    if (_device.getLength() == 1) pieces[count++] = {":", 1};
    if (_directory.isEmpty()) {
      pieces[count++] = {"\\", 1};
    } else {
      const char first = _directory.getValue()[0];
      if (first != '/' && first != '.') pieces[count++] = {"\\", 1};
      directory = getDosDirectory(true);
      pieces[count++] = PieceOf(directory);
    }
  } else if (!_directory.isEmpty() || isDirectory()) {
    directory = getDosDirectory(true);
    pieces[count++] = PieceOf(directory);
  }
  pieces[count++] = PieceOf(_fileName);
  if (!_extension.isEmpty()) {
    pieces[count++] = {".", 1};
    pieces[count++] = PieceOf(_extension);
  }
  _value = Joined(pieces, count);
  _dirty = true;
  return _value;
}

KyString KyPathName::getString(KyPathType type) const {
  if (!_dirty) return _value;
  return type == kDosPathType ? getDosValue() : getUnixValue();
}

bool KyPathName::isAbsolute() const { return !_directory.isEmpty() && _directory.getValue()[0] == '/'; }

void KyPathName::normalize() {
  const char* text;
  const int size = KyPathBytes(_directory, text);
  _directory = KyNormalizedDirectory(text, size);
}

void KyPathName::setDirBytes(const char* text, int begin, int end) {
  _dirty = true;
  if (end <= begin) {
    _directory = KyString();
    return;
  }
  const char* current;
  const int size = KyPathBytes(_directory, current);
  // An unchanged text is not normalised again.
  if (size == end - begin && std::char_traits<char>::compare(current, text + begin, static_cast<std::size_t>(size)) == 0)
    return;
  if (KyIsNormalDirectory(text + begin, end - begin)) {
    _directory = KyPathText(text + begin, end - begin);
    return;
  }
  _directory = KyNormalizedDirectory(text + begin, end - begin);
}

void KyPathName::setInternalDir(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty) {
    _dirty = true;
    _directory = KyString();
    return;
  }
  setDirBytes(span.text, span.begin, span.end);
}

void KyPathName::setBaseNameBytes(const char* text, int begin, int end, int probe) {
  _dirty = true;
  if (end <= begin) {
    _fileName = KyString();
    _extension = KyString();
    return;
  }
  // The last "." at or before the end: one standing just at the end (outside the
  // range) hides the earlier ones, and the whole range is the name.
  const int p = LastOf(text, '.', probe);
  if (p > begin && p < end - 1) {
    _extension = KyPathText(text + p + 1, end - p - 1);
    _fileName = KyPathText(text + begin, p - begin);
  } else {
    _extension = KyString();
    _fileName = KyPathText(text + begin, end - begin);
  }
}

void KyPathName::setBaseName(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty)
    setBaseNameBytes(span.text, 0, 0, -1);
  else
    setBaseNameBytes(span.text, span.begin, span.end, span.probe);
}

void KyPathName::setFileName(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  _fileName = span.empty ? KyString() : KyPathText(span.text + span.begin, span.end - span.begin);
  _dirty = true;
}

void KyPathName::setExtension(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  _extension = span.empty ? KyString() : KyPathText(span.text + span.begin, span.end - span.begin);
  _dirty = true;
}

void KyPathName::setValBytes(const char* text, int size, int begin, int end, int probe) {
  _dirty = true;
  if (end <= begin) {
    _directory = KyString();
    _fileName = KyString();
    _extension = KyString();
    return;
  }
  if (end - begin == 1 && text[begin] == '.') {
    _fileName = KyString();
    _extension = KyString();
    return;
  }
  const int p = LastOf(text, '/', end - 1 < size ? end - 1 : size - 1);
  if (p < begin) {
    setBaseNameBytes(text, begin, end, probe);
    _directory = KyString();
  } else if (p == end - 1) {
    _fileName = KyString();
    _extension = KyString();
    setDirBytes(text, begin, end);
  } else {
    setBaseNameBytes(text, p + 1, end, probe);
    // A lone leading "/" stays as the root.
    setDirBytes(text, begin, p == begin ? begin + 1 : p);
  }
}

void KyPathName::setInternalVal(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty)
    setValBytes(span.text, span.size, 0, 0, -1);
  else
    setValBytes(span.text, span.size, span.begin, span.end, span.probe);
}

void KyPathName::setDevice(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  _dirty = true;
  _device = span.empty ? KyString() : KyPathText(span.text + span.begin, span.end - span.begin);
  // A device is one letter or a UNC prefix.
  if (_device.getLength() > 1) {
    const int slash = _device.getIndexOf("\\");
    if (slash != 0 && slash != 1) _device = _device.getSubString(0, 1);
  }
  if (!_device.isEmpty() && _directory.isEmpty()) _directory = "/";
}

// The DOS parse of a whole value (setDosValue) or of device and directory only
// (setDosDirName), which differ in what an empty text clears, in a UNC name without
// a directory, and in the last step.
void KyPathName::dosParse(const KyString& value, int end, int start, bool dirName) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  _dirty = true;
  if (span.empty) {
    _device = KyString();
    _directory = KyString();
    if (!dirName) {
      _fileName = KyString();
      _extension = KyString();
    }
    return;
  }
  const char* sub = span.text + span.begin;
  const int length = span.end - span.begin;
  int pos = 0;
  if (length > 1 && sub[1] == ':' && sub[0] != ':' && IsDriveLetter(sub[0])) {
    setDevice(KyPathText(sub, 1));
    pos = 2;
  } else if (length >= 2 && sub[0] == '\\' && sub[1] == '\\') {
    int i = 2;
    while (i < length && sub[i] != '\\') ++i;
    int j = i + 1;
    while (j < length && sub[j] != '\\') ++j;
    if (i >= length) {
      _device = KyString();
    } else if (j < length) {
      setDevice(KyPathText(sub, j));
      pos = j;
    } else if (dirName) {
      _device = KyString();
    } else {
      setDevice(KyPathText(sub, length));
      pos = length;
    }
  } else {
    _device = KyString();
  }
  const std::string slashed = Slashed(sub, 0, length);
  if (dirName)
    setDirBytes(slashed.data(), pos, length);
  else
    setValBytes(slashed.data(), length, pos, length, length - 1);
}

void KyPathName::setDosValue(const KyString& value, int end, int start) { dosParse(value, end, start, false); }

void KyPathName::setDosDirName(const KyString& value, int end, int start) { dosParse(value, end, start, true); }

void KyPathName::setUnixValue(const KyString& value, int end, int start) {
  _device = KyString();
  setInternalVal(value, end, start);
}

void KyPathName::setValue(const KyString& value, int end, KyPathType type, int start) {
  if (type == kDosPathType)
    setDosValue(value, end, start);
  else
    setUnixValue(value, end, start);
}

void KyPathName::setUnixDirName(const KyString& value, int end, int start) {
  _device = KyString();
  setInternalDir(value, end, start);
}

void KyPathName::setDirName(const KyString& value, int end, KyPathType type, int start) {
  if (type == kDosPathType)
    setDosDirName(value, end, start);
  else
    setUnixDirName(value, end, start);
}

void KyPathName::setDosDirectory(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty) {
    setDirBytes(span.text, 0, 0);
    return;
  }
  const std::string slashed = Slashed(span.text, span.begin, span.end);
  setDirBytes(slashed.data(), 0, static_cast<int>(slashed.size()));
}

void KyPathName::setDirectory(const KyString& value, int end, KyPathType type, int start) {
  if (type == kDosPathType)
    setDosDirectory(value, end, start);
  else
    setInternalDir(value, end, start);
}

void KyPathName::addUnixDirectory(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty) return;
  if (span.text[span.begin] == '/') {
    setDirBytes(span.text, span.begin, span.end);
    return;
  }
  // On an empty directory this starts with "./", which normalising removes.
  const KyString base = getUnixDirectory(true);
  const char* text;
  const int size = KyPathBytes(base, text);
  std::string joined(text, static_cast<std::size_t>(size));
  joined.append(span.text + span.begin, static_cast<std::size_t>(span.end - span.begin));
  setDirBytes(joined.data(), 0, static_cast<int>(joined.size()));
}

void KyPathName::addDosDirectory(const KyString& value, int end, int start) {
  const KyPathSpan span = KyPathSpanOf(value, end, start);
  if (span.empty) return;
  addUnixDirectory(KyPathText(Slashed(span.text, span.begin, span.end)), -1, 0);
}

void KyPathName::addDirectory(const KyString& value, int end, KyPathType type, int start) {
  if (type == kDosPathType)
    addDosDirectory(value, end, start);
  else
    addUnixDirectory(value, end, start);
}

void KyPathName::clearDirAndDevice() {
  _device = KyString();
  _directory = KyString();
  _dirty = true;
}
