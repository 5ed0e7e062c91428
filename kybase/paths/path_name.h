// KyPathName: a path as a value. A text in the DOS form (drive letter or UNC prefix,
// "\" or "/") or in the Unix form is split into device, directory, file name and
// extension; the directory is kept in one normalised form with "/" and a trailing "/",
// and the path is written back in either form. The system form on this platform is the
// Unix one: constructors and assignments from text, the conversions, and every text
// handed to the file system use it.
//
// Setters take a text and a range of it as (value, end, start): end is exclusive, -1
// is the end of the text, and it comes before start. Positions count characters as
// KyString does.
//
// Beyond the model the class answers questions about the file system (existence,
// access, times, modes), creates and removes files and directory trees, scans a
// directory (one scan per object, closed by assignment and destruction), matches
// against a pattern with wildcards and one group of alternatives, and combines paths
// (merge, relative paths, common parts).
//
// Failure: nothing throws but operator new; file system operations answer false and
// keep no reason. Threads: the text cache changes in const operations, and the current
// directory is process-wide; one object belongs to one thread at a time.
#ifndef KYBASE_PATHS_PATH_NAME_H
#define KYBASE_PATHS_PATH_NAME_H

#include "kybase/core/export.h"
#include "kybase/text/kystring.h"

struct KyDirScan;

class KY_EXPORT KyPathName {
 public:
  // 0 is the system form, the Unix one here; any value but kDosPathType is Unix.
  enum KyPathType { kSystemPathType = 0, kUnixPathType = 1, kDosPathType = 2 };

  KyPathName();
  KyPathName(const KyString& text);  // NOLINT: paths convert from text
  KyPathName(const char* text);      // NOLINT: a null text is the empty path
  KyPathName(const KyPathName& other);
  ~KyPathName();

  KyPathName& operator=(const KyPathName& other);
  KyPathName& operator=(const KyString& text);
  KyPathName& operator=(const char* text);

  operator KyString() const;  // NOLINT
  // The system text, kept in the object's cache: good until the next change.
  operator const char*() const;  // NOLINT

  // Device, directory, file name and extension compared without regard to case.
  bool operator==(const KyPathName& other) const;
  bool operator!=(const KyPathName& other) const { return !(*this == other); }

  KyString getDevice() const { return _device; }
  KyString getFileName() const { return _fileName; }
  KyString getExtension() const { return _extension; }
  KyString getBaseName() const;
  KyString getDirectory(bool keepSeparator, KyPathType type) const;
  KyString getDirName(bool keepSeparator, KyPathType type) const;
  KyString getDosDirectory(bool keepSeparator) const;
  KyString getUnixDirectory(bool keepSeparator) const;
  // The DOS builder leaves the cache marked stale; the Unix (system) builder marks it
  // good, so getString of either type gives the Unix text until the next change.
  KyString getDosValue() const;
  KyString getUnixValue() const;
  KyString getString(KyPathType type) const;

  bool isAbsolute() const;
  bool isDirectory() const { return _fileName.isEmpty() && _extension.isEmpty(); }
  bool isCurrentDirectory() const { return isDirectory() && _directory.isEmpty(); }
  bool isInCurrentDirectory() const { return _directory.isEmpty(); }
  bool isEmpty() const { return _device.isEmpty() && isCurrentDirectory(); }
  bool operator!() const { return isEmpty(); }

  // Heap copies of the texts above, for the caller to delete[].
  char* copyBaseName() const { return getBaseName().copyValue(); }
  char* copyDevice() const { return _device.copyValue(); }
  char* copyDirName(bool keepSeparator, KyPathType type) const {
    return getDirName(keepSeparator, type).copyValue();
  }
  char* copyDirectory(bool keepSeparator, KyPathType type) const {
    return getDirectory(keepSeparator, type).copyValue();
  }
  char* copyDosDirectory(bool keepSeparator) const { return getDosDirectory(keepSeparator).copyValue(); }
  char* copyDosValue() const { return getDosValue().copyValue(); }
  char* copyExtension() const { return _extension.copyValue(); }
  char* copyFileName() const { return _fileName.copyValue(); }
  char* copyUnixDirectory(bool keepSeparator) const { return getUnixDirectory(keepSeparator).copyValue(); }
  char* copyUnixValue() const { return getUnixValue().copyValue(); }
  char* copyValue(KyPathType type) const { return getString(type).copyValue(); }
  char* copy83DosValue() const { return get83DosValue().copyValue(); }

  void setValue(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  void setDosValue(const KyString& value, int end = -1, int start = 0);
  void setUnixValue(const KyString& value, int end = -1, int start = 0);
  void setDirName(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  void setDosDirName(const KyString& value, int end = -1, int start = 0);
  void setUnixDirName(const KyString& value, int end = -1, int start = 0);
  void setDirectory(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  void setDosDirectory(const KyString& value, int end = -1, int start = 0);
  void setUnixDirectory(const KyString& value, int end = -1, int start = 0) { setInternalDir(value, end, start); }
  void setDevice(const KyString& value, int end = -1, int start = 0);
  void setBaseName(const KyString& value, int end = -1, int start = 0);
  void setFileName(const KyString& value, int end = -1, int start = 0);
  void setExtension(const KyString& value, int end = -1, int start = 0);
  void addDirectory(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  void addDosDirectory(const KyString& value, int end = -1, int start = 0);
  void addUnixDirectory(const KyString& value, int end = -1, int start = 0);

  // File system. The stat of a directory form uses the name without its trailing
  // separator.
  bool doesExist() const;
  bool isSystemDirectory() const;
  bool isReadable() const;
  bool isWritable() const;
  bool isExecutable() const;
  bool isNewer(const KyPathName& other) const;
  bool isSensitive() const;
  bool queryAccessTime(long long& time) const;
  bool queryModificationTime(long long& time) const;
  bool queryChangedStatusTime(long long& time) const;
  bool queryMode(short& mode) const;
  bool changeMode(short mode) const;
  bool changeCurrentDirectory() const;
  // A mode of -1 sets none. Missing directories are made only when recursive.
  bool create(short mode, bool recursive) const;
  // Links are removed, never followed; the root "/" is never removed.
  bool remove(bool recursive) const;
  void queryCurrentDirectory(KyString* device);
  KyString get83DosValue() const;
  void localize();

  static bool doesExist(const KyString& text);
  static bool isExecutable(const KyString& text);
  static bool isReadable(const KyString& text);
  static bool isWritable(const KyString& text);
  static KyString Localize(const KyString& text);
  // Writes the current directory into buffer, never at or past size; a buffer too
  // small gets the empty text. With a non-empty device, the root of that device.
  static void QueryCurrentDirectory(char* const buffer, int size, KyString* device);

  // Scanning: one scan per object, "." and ".." among the entries, in the system's
  // order. Directories come back as relative directories, files as bare names.
  bool openDir() const;
  bool readDir(KyPathName& entry) const;
  void rewindDir() const;
  bool closeDir() const;
  bool isEmptyDirectory() const;
  // "?" and "*" within device, directory and base name; the base name of the pattern
  // may hold one group "(a|b|...)". Without a device the comparison ignores case.
  bool match(const KyPathName& pattern) const;

  // Algebra.
  KyPathName& merge(const KyPathName& other);
  KyPathName& merge(const KyString& other);
  KyPathName& merge(const char* other);
  KyPathName& prepend(const KyPathName& other);
  KyPathName& prepend(const KyString& other);
  KyPathName& prepend(const char* other);
  KyPathName& operator+=(const KyPathName& other) { return merge(other); }
  KyPathName& operator+=(const KyString& other) { return merge(other); }
  KyPathName& operator+=(const char* other) { return merge(other); }
  KyPathName operator+(const KyPathName& other) const;
  KyPathName operator+(const KyString& other) const;
  KyPathName operator+(const char* other) const;
  void forceAbsolute();
  void forceRelative();
  void forceDirectory();
  int computeLevelNumber() const;
  KyPathName& computeFirstSubDirectory();
  KyPathName& computeLastSubDirectory();
  KyPathName& computeAllButFirstSubDirectory();
  KyPathName& computeAllButLastSubDirectory();
  KyPathName& computeSameLeading(const KyPathName& other);
  KyPathName& computeSameTrailing(const KyPathName& other);
  KyPathName& computeDifferLeading(const KyPathName& other);
  KyPathName& computeDifferTrailing(const KyPathName& other);
  KyPathName& computeRelativePath(const KyPathName& other);
  // Counts the system separator "/".
  KyString getSubDirectory(long first, long count) const;
  KyString getTruncatedValue(int levels) const;
  bool isSubDirectory(const KyPathName& other) const;

 private:
  void setInternalVal(const KyString& value, int end, int start);
  void setInternalDir(const KyString& value, int end, int start);
  void normalize();
  // The byte-level forms of the setters above, on [begin, end) of text.
  void setDirBytes(const char* text, int begin, int end);
  void setBaseNameBytes(const char* text, int begin, int end, int probe);
  void setValBytes(const char* text, int size, int begin, int end, int probe);
  void dosParse(const KyString& value, int end, int start, bool dirName);
  void clearDirAndDevice();
  void copyParts(const KyPathName& other);

  KyString _device;
  KyString _directory;
  KyString _fileName;
  KyString _extension;
  mutable KyString _value;
  mutable bool _dirty = true;
  mutable KyDirScan* _scan = nullptr;
};

#endif  // KYBASE_PATHS_PATH_NAME_H
