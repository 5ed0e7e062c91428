// KyPathName: the model, the parsers, normalisation and the text forms.
#include "kybase/paths/path_name.h"

#include <cstdlib>
#include <cwchar>
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

void KyNormalizeDirectory(const char* text, int size, std::string& out) {
  std::string a(text, static_cast<std::size_t>(size));
  if (a.empty() || a.back() != '/') a += '/';
  // "/./" by "/" in one substitution pass: occurrences are found on the unchanged text,
  // and where two overlap the output is cut back by the overlap.
  std::string b;
  b.reserve(a.size());
  const std::size_t n = a.size();
  std::size_t copied = 0;
  std::size_t previous = std::string::npos;
  for (std::size_t p = a.find("/./"); p != std::string::npos; p = a.find("/./", p + 1)) {
    if (previous == std::string::npos || p >= previous + 3) {
      b.append(a, copied, p - copied);
    } else {
      b.resize(b.size() - (previous + 3 - p));
    }
    b += '/';
    copied = p + 3;
    previous = p;
  }
  b.append(a, copied, n - copied);
  // Runs of "/" become one; then a leading "./" goes.
  std::string c;
  c.reserve(b.size());
  for (char ch : b)
    if (ch != '/' || c.empty() || c.back() != '/') c += ch;
  const char* t = c.data();
  long length = static_cast<long>(c.size());
  if (length >= 2 && t[0] == '.' && t[1] == '/') {
    t += 2;
    length -= 2;
  }
  // s ends the leading group of "../"; "x/../" pairs after it are taken out from the
  // left, a pair that meets the group extends it, and a "/../" at the very start ends
  // the work. The text is read once: a pair is seen when its last "/" arrives.
  long s = 0;
  if (length >= 3 && t[0] == '.' && t[1] == '.' && t[2] == '/') {
    while (s + 3 <= length && t[s] == '.' && t[s + 1] == '.' && t[s + 2] == '/') s += 3;
    s -= 1;
  }
  out.clear();
  out.reserve(static_cast<std::size_t>(length));
  for (long k = 0; k < length; ++k) {
    out += t[k];
    const long i = static_cast<long>(out.size()) - 4;
    if (i < s || t[k] != '/' || out[i] != '/' || out[i + 1] != '.' || out[i + 2] != '.') continue;
    if (i == 0) {
      out.append(t + k + 1, static_cast<std::size_t>(length - k - 1));
      return;
    }
    if (i == s) {
      s += 3;
      continue;
    }
    const std::size_t p = out.rfind('/', static_cast<std::size_t>(i - 1));
    out.resize(p == std::string::npos ? 0 : p + 1);
  }
}

KyPathName::KyPathName() = default;

KyPathName::KyPathName(const KyString& text) { setUnixValue(text, -1, 0); }

KyPathName::KyPathName(const char* text) {
  if (text != nullptr) setUnixValue(KyString(text), -1, 0);
}

KyPathName::KyPathName(const KyPathName& other) {
  setDevice(other._device, -1, 0);
  setUnixDirectory(other.getUnixDirectory(true), -1, 0);
  _fileName = other._fileName;
  _extension = other._extension;
}

KyPathName::~KyPathName() { closeDir(); }

KyPathName& KyPathName::operator=(const KyPathName& other) {
  if (this == &other) return *this;
  setDevice(other._device, -1, 0);
  setUnixDirectory(other.getUnixDirectory(true), -1, 0);
  _fileName = other._fileName;
  _extension = other._extension;
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

KyString KyPathName::getUnixValue() const {
  std::string text;
  const char* part;
  if (!_directory.isEmpty() || isDirectory()) {
    const KyString directory = getUnixDirectory(true);
    text.append(part, static_cast<std::size_t>(KyPathBytes(directory, part)));
  }
  text.append(part, static_cast<std::size_t>(KyPathBytes(_fileName, part)));
  if (!_extension.isEmpty()) {
    text += '.';
    text.append(part, static_cast<std::size_t>(KyPathBytes(_extension, part)));
  }
  _value = KyPathText(text);
  _dirty = false;
  return _value;
}

KyString KyPathName::getDosValue() const {
  std::string text;
  const char* part;
  if (!_device.isEmpty()) {
    text.append(part, static_cast<std::size_t>(KyPathBytes(_device, part)));
    if (_device.getLength() == 1) text += ':';
    if (_directory.isEmpty()) {
      text += '\\';
    } else {
      const char first = _directory.getValue()[0];
      if (first != '/' && first != '.') text += '\\';
      const KyString directory = getDosDirectory(true);
      text.append(part, static_cast<std::size_t>(KyPathBytes(directory, part)));
    }
  } else if (!_directory.isEmpty() || isDirectory()) {
    const KyString directory = getDosDirectory(true);
    text.append(part, static_cast<std::size_t>(KyPathBytes(directory, part)));
  }
  text.append(part, static_cast<std::size_t>(KyPathBytes(_fileName, part)));
  if (!_extension.isEmpty()) {
    text += '.';
    text.append(part, static_cast<std::size_t>(KyPathBytes(_extension, part)));
  }
  _value = KyPathText(text);
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
  std::string out;
  KyNormalizeDirectory(text, size, out);
  _directory = KyPathText(out);
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
  std::string out;
  KyNormalizeDirectory(text + begin, end - begin, out);
  _directory = KyPathText(out);
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
  std::string joined(text, static_cast<std::size_t>(KyPathBytes(base, text)));
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
