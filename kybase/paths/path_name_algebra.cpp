// KyPathName: merging, forcing, cutting and comparing paths. Nothing here touches the
// file system.
#include <string>

#include "kybase/paths/path_name.h"
#include "kybase/paths/path_name_internal.h"

namespace {

std::string Bytes(const KyString& value) {
  const char* text;
  const int size = KyPathBytes(value, text);
  return std::string(text, static_cast<std::size_t>(size));
}

bool Same(const KyString& a, const KyString& b) { return Bytes(a) == Bytes(b); }

long NextSlash(const std::string& text, long from) {
  if (from < 0) from = 0;
  const std::size_t at = text.find('/', static_cast<std::size_t>(from));
  return at == std::string::npos ? -1 : static_cast<long>(at);
}

long PreviousSlash(const std::string& text, long before) {
  if (before <= 0) return -1;
  const std::size_t at = text.rfind('/', static_cast<std::size_t>(before - 1));
  return at == std::string::npos ? -1 : static_cast<long>(at);
}

// Whether a[from, to) equals b[otherFrom, otherTo); a reversed range equals nothing.
bool RangeEquals(const std::string& a, long from, long to, const std::string& b, long otherFrom, long otherTo) {
  if (from > to || otherFrom > otherTo || to - from != otherTo - otherFrom) return false;
  return a.compare(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from), b,
                   static_cast<std::size_t>(otherFrom), static_cast<std::size_t>(otherTo - otherFrom)) == 0;
}

// The last "/" of the common leading part of two directories, -1 if none. The first
// component counts as common on its length alone.
long CommonLeading(const std::string& a, const std::string& b) {
  long last = -1;
  long i = NextSlash(a, 0);
  long j = NextSlash(b, 0);
  while (i >= 0 && j >= 0 && i == j && (last < 0 || i == 0 || RangeEquals(a, last + 1, i, b, last + 1, i))) {
    last = i;
    i = NextSlash(a, last + 1);
    j = NextSlash(b, last + 1);
  }
  return last;
}

// The common trailing separator of two directories. After a match the positions move
// forward again, so the search stops at the next step; only directories of equal
// length up to that point share a tail.
long CommonTrailing(const std::string& a, const std::string& b) {
  long p = PreviousSlash(a, static_cast<long>(a.size()));
  long q = PreviousSlash(b, static_cast<long>(b.size()));
  long i = PreviousSlash(a, p);
  long j = PreviousSlash(b, q);
  while (i >= 0 && j >= 0 && i == j && (p - 1 < 0 || i == 0 || RangeEquals(a, i, p, b, j, q))) {
    p = i;
    q = j;
    i = NextSlash(a, i + 1);
    j = NextSlash(b, j + 1);
  }
  return p;
}

}  // namespace

KyPathName& KyPathName::merge(const KyPathName& other) {
  if (other.isAbsolute()) return *this = other;
  const KyString fileName = other._fileName;
  const KyString extension = other._extension;
  // "./" added to a directory in normal form gives it back unchanged.
  const char* text;
  const int size = KyPathBytes(_directory, text);
  if (!other._directory.isEmpty() || (size != 0 && !KyIsNormalDirectory(text, size)))
    addUnixDirectory(other.getUnixDirectory(true), -1, 0);
  _fileName = fileName;
  _extension = extension;
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::merge(const KyString& other) { return merge(KyPathName(other)); }

KyPathName& KyPathName::merge(const char* other) { return merge(KyPathName(other)); }

KyPathName& KyPathName::prepend(const KyPathName& other) {
  KyPathName result(other);
  result.merge(*this);
  if (!(result == *this)) *this = result;
  return *this;
}

KyPathName& KyPathName::prepend(const KyString& other) { return prepend(KyPathName(other)); }

KyPathName& KyPathName::prepend(const char* other) { return prepend(KyPathName(other)); }

KyPathName KyPathName::operator+(const KyPathName& other) const {
  KyPathName result(*this);
  result.merge(other);
  return result;
}

KyPathName KyPathName::operator+(const KyString& other) const { return *this + KyPathName(other); }

KyPathName KyPathName::operator+(const char* other) const { return *this + KyPathName(other); }

void KyPathName::forceAbsolute() {
  if (isAbsolute()) return;
  const std::string directory = "/" + Bytes(getUnixDirectory(true));
  setDirBytes(directory.data(), 0, static_cast<int>(directory.size()));
}

void KyPathName::forceRelative() {
  if (!isAbsolute()) return;
  // The root loses its "/" and gets it back from normalising: it stays the root.
  const std::string directory = Bytes(_directory);
  _directory = KyNormalizedDirectory(directory.data() + 1, static_cast<int>(directory.size()) - 1);
  _dirty = true;
}

void KyPathName::forceDirectory() {
  if (isDirectory()) return;
  std::string base = Bytes(getBaseName());
  for (char& c : base)
    if (c == '\\') c = '/';
  addUnixDirectory(KyPathText(base), -1, 0);
  _fileName = KyString();
  _extension = KyString();
  _dirty = true;
}

int KyPathName::computeLevelNumber() const {
  const std::string directory = Bytes(_directory);
  int count = 0;
  for (std::size_t i = 1; i < directory.size(); ++i)
    if (directory[i] == '/') ++count;
  return count;
}

KyPathName& KyPathName::computeFirstSubDirectory() {
  _fileName = KyString();
  _extension = KyString();
  const std::string directory = Bytes(_directory);
  const long i = NextSlash(directory, isAbsolute() ? 1 : 0);
  if (i > 0) _directory = KyPathText(directory.data(), static_cast<int>(i) + 1);
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeAllButFirstSubDirectory() {
  _fileName = KyString();
  _extension = KyString();
  _device = KyString();
  const std::string directory = Bytes(_directory);
  const long i = NextSlash(directory, isAbsolute() ? 1 : 0);
  if (i > 0)
    _directory = KyPathText(directory.substr(static_cast<std::size_t>(i) + 1));
  else
    clearDirAndDevice();
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeLastSubDirectory() {
  _fileName = KyString();
  _extension = KyString();
  _device = KyString();
  const std::string directory = Bytes(_directory);
  const long length = static_cast<long>(directory.size());
  if (length > 2) {
    const long i = PreviousSlash(directory, length - 1);
    _directory = KyPathText(directory.substr(static_cast<std::size_t>(i + 1)));
  }
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeAllButLastSubDirectory() {
  _fileName = KyString();
  _extension = KyString();
  const std::string directory = Bytes(_directory);
  const long length = static_cast<long>(directory.size());
  // A search from -1 runs from the end, so the root keeps its "/".
  const long i = length - 2 == -1 ? PreviousSlash(directory, length) : PreviousSlash(directory, length - 1);
  _directory = KyPathText(directory.data(), static_cast<int>(i + 1));
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeSameLeading(const KyPathName& other) {
  if (!Same(_device, other._device)) {
    setDosValue(KyString(), -1, 0);
  } else if (!Same(_directory, other._directory)) {
    _fileName = KyString();
    _extension = KyString();
    const std::string directory = Bytes(_directory);
    const long last = CommonLeading(directory, Bytes(other._directory));
    _directory = KyPathText(directory.data(), static_cast<int>(last + 1));
  } else if (!Same(_fileName, other._fileName)) {
    _fileName = KyString();
    _extension = KyString();
  } else if (!Same(_extension, other._extension)) {
    _extension = KyString();
  }
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeSameTrailing(const KyPathName& other) {
  if (!Same(_extension, other._extension)) {
    setDosValue(KyString(), -1, 0);
  } else if (!Same(_fileName, other._fileName)) {
    _fileName = KyString();
    clearDirAndDevice();
  } else if (!Same(_directory, other._directory)) {
    _device = KyString();
    const std::string directory = Bytes(_directory);
    const long p = CommonTrailing(directory, Bytes(other._directory));
    _directory = KyPathText(directory.substr(static_cast<std::size_t>(p + 1)));
  } else if (!Same(_device, other._device)) {
    _device = KyString();
  }
  _dirty = true;
  return *this;
}

KyPathName& KyPathName::computeDifferLeading(const KyPathName& other) {
  if (!Same(_device, other._device)) return *this;
  _device = KyString();
  _dirty = true;
  if (Same(_directory, other._directory)) {
    _directory = KyString();
    return *this;
  }
  const std::string directory = Bytes(_directory);
  const long last = CommonLeading(directory, Bytes(other._directory));
  _directory = KyPathText(directory.substr(static_cast<std::size_t>(last + 1)));
  if (_directory.isEmpty() && Same(_fileName, other._fileName)) {
    const bool sameExtension = Same(_extension, other._extension);
    _fileName = KyString();
    if (sameExtension) _extension = KyString();
  }
  return *this;
}

KyPathName& KyPathName::computeDifferTrailing(const KyPathName& other) {
  if (!Same(_extension, other._extension)) return *this;
  _extension = KyString();
  _dirty = true;
  if (!Same(_fileName, other._fileName)) return *this;
  _fileName = KyString();
  if (!Same(_directory, other._directory)) {
    const std::string directory = Bytes(_directory);
    const long p = CommonTrailing(directory, Bytes(other._directory));
    _directory = KyPathText(directory.data(), static_cast<int>(p + 1));
  } else {
    _directory = KyString();
    if (Same(_device, other._device)) _device = KyString();
  }
  return *this;
}

KyPathName& KyPathName::computeRelativePath(const KyPathName& other) {
  if (!Same(_device, other._device)) return *this;
  if (Same(_directory, other._directory)) {
    clearDirAndDevice();
    return *this;
  }
  if (isAbsolute() != other.isAbsolute()) return *this;
  KyPathName base(other);
  base._fileName = KyString();
  base._extension = KyString();
  KyPathName same(base);
  same.computeSameLeading(*this);
  if (same.isEmpty()) return *this;
  const int up = base.computeLevelNumber() - same.computeLevelNumber();
  KyPathName result;
  for (int n = 0; n < up; ++n) result.addUnixDirectory("..", -1, 0);
  computeDifferLeading(base);
  result.merge(*this);
  return *this = result;
}

KyString KyPathName::getSubDirectory(long first, long count) const {
  if (count == 0) return KyString();
  const std::string text = Bytes(getDirectory(true, kSystemPathType));
  const long length = static_cast<long>(text.size());
  if (first == 0) first = 1;
  long start = 0;
  if (first > 0) {
    for (long k = 0; k < first; ++k) {
      const long at = NextSlash(text, start);
      if (at < 0) return KyPathText(text);
      start = at + 1;
    }
  } else {
    long at = PreviousSlash(text, length);
    for (long k = first; k < 0 && at >= 0; ++k) at = PreviousSlash(text, at);
    if (at < 0) return KyPathText(text);
    start = at + 1;
  }
  long end = start;
  if (count < 0) {
    end = length;
  } else {
    for (long k = 0; k < count; ++k) {
      const long at = NextSlash(text, end);
      if (at < 0) break;
      end = at + 1;
    }
  }
  return KyPathText(text.data() + start, static_cast<int>(end - start));
}

KyString KyPathName::getTruncatedValue(int levels) const {
  const KyString value = getString(kSystemPathType);
  if (computeLevelNumber() <= levels) return value;
  const std::string text = Bytes(value);
  // The system text shows no device, so only a leading "/" stays before the dots.
  const long n = !text.empty() && text[0] == '/' ? 1 : 0;
  long i = PreviousSlash(text, static_cast<long>(text.size()));
  for (int k = 0; k < levels && i >= 0; ++k) i = PreviousSlash(text, i);
  if (i < n) return value;
  return KyPathText(text.substr(0, static_cast<std::size_t>(n)) + "..." + text.substr(static_cast<std::size_t>(i)));
}

bool KyPathName::isSubDirectory(const KyPathName& other) const {
  if (!isDirectory() || !other.isDirectory()) return false;
  if (!_device.isEmpty() && !other._device.isEmpty() && !Same(_device, other._device)) return false;
  return Bytes(_directory).find(Bytes(other.getUnixDirectory(true))) != std::string::npos;
}
