// Drives KyPathName's parsers, printers and algebra with arbitrary text. Input layout:
// one byte choosing the setter, two range bytes (end, start; 255 means -1), then two
// texts separated by a zero byte: the path and a second path for merging and relative
// paths. Checks: the directory is empty or ends with one "/" and holds no "//";
// printing and parsing settle after the first round (see CheckRoundTrips), in either
// form; nothing reaches outside its text.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "kybase/paths/path_name.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

std::string Text(const KyString& s) { return s.getValue() != nullptr ? s.getValue() : ""; }

void CheckDirectory(const KyPathName& path) {
  const std::string directory = Text(path.getUnixDirectory(true));
  Require(!directory.empty() && directory.back() == '/');
  Require(directory.find("//") == std::string::npos);
}

// The first round may change the text, and so may the next one when the first gave a
// file named "." with no directory (it prints ".", which reads back as "./"); after
// that, nothing changes.
void CheckRoundTrips(const KyPathName& path) {
  KyPathName unix1(path.getUnixValue());
  KyPathName unix2(unix1.getUnixValue());
  KyPathName unix3(unix2.getUnixValue());
  Require(Text(unix1.getUnixValue()) == Text(unix2.getUnixValue()) || Text(unix1.getUnixValue()) == ".");
  Require(Text(unix2.getUnixValue()) == Text(unix3.getUnixValue()));
  KyPathName dos1;
  dos1.setDosValue(path.getDosValue());
  KyPathName dos2;
  dos2.setDosValue(dos1.getDosValue());
  KyPathName dos3;
  dos3.setDosValue(dos2.getDosValue());
  Require(Text(dos1.getDosValue()) == Text(dos2.getDosValue()) || Text(dos1.getFileName()) == ".");
  Require(Text(dos2.getDosValue()) == Text(dos3.getDosValue()));
}

void Set(KyPathName& path, int which, const KyString& text, int end, int start) {
  switch (which % 12) {
    case 0: path.setDosValue(text, end, start); break;
    case 1: path.setUnixValue(text, end, start); break;
    case 2: path.setDosDirName(text, end, start); break;
    case 3: path.setUnixDirName(text, end, start); break;
    case 4: path.setDosDirectory(text, end, start); break;
    case 5: path.setUnixDirectory(text, end, start); break;
    case 6: path.addDosDirectory(text, end, start); break;
    case 7: path.addUnixDirectory(text, end, start); break;
    case 8: path.setBaseName(text, end, start); break;
    case 9: path.setDevice(text, end, start); break;
    case 10: path.setFileName(text, end, start); break;
    default: path.setExtension(text, end, start); break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const int which = data[0];
  const int end = data[1] == 255 ? -1 : data[1];
  const int start = data[2] == 255 ? -1 : data[2];
  const std::string rest(reinterpret_cast<const char*>(data) + 3, size - 3);
  const std::size_t zero = rest.find('\0');
  const std::string first = rest.substr(0, zero);
  const std::string second = zero == std::string::npos ? std::string() : rest.substr(zero + 1);
  KyPathName path;
  path.setUnixValue("base/dir/name.ext");
  Set(path, which, KyString(first.c_str()), end, start);
  Set(path, which / 12, KyString(first.c_str()), start, end);
  CheckDirectory(path);
  CheckRoundTrips(path);
  for (int type = 0; type < 3; ++type) {
    const auto kind = static_cast<KyPathName::KyPathType>(type);
    path.getDirName(type == 1, kind);
    path.getDirectory(type == 2, kind);
    path.getString(kind);
  }
  path.getBaseName();
  path.get83DosValue();
  path.computeLevelNumber();
  path.getTruncatedValue(which % 4 - 1);
  path.getSubDirectory(static_cast<signed char>(data[1]), static_cast<signed char>(data[2]));
  KyPathName other;
  other.setDosValue(KyString(second.c_str()));
  const KyPathName keep(path);
  path.isSubDirectory(other);
  path.match(other);
  KyPathName(keep).merge(other);
  KyPathName(keep).prepend(other);
  for (int op = 0; op < 13; ++op) {
    KyPathName work(keep);
    switch (op) {
      case 0: work.computeFirstSubDirectory(); break;
      case 1: work.computeLastSubDirectory(); break;
      case 2: work.computeAllButFirstSubDirectory(); break;
      case 3: work.computeAllButLastSubDirectory(); break;
      case 4: work.computeSameLeading(other); break;
      case 5: work.computeSameTrailing(other); break;
      case 6: work.computeDifferLeading(other); break;
      case 7: work.computeDifferTrailing(other); break;
      case 8: work.computeRelativePath(other); break;
      case 9: work.forceAbsolute(); break;
      case 10: work.forceRelative(); break;
      case 11: work.forceDirectory(); break;
      default: work.merge(other); break;
    }
    work.getDosValue();
    work.getUnixValue();
  }
  return 0;
}
