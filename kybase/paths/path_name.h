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

/// A path as a value; see the family page for its model and its forms.
class KY_EXPORT KyPathName {
 public:
  /// 0 is the system form, the Unix one here; any value but kDosPathType is Unix.
  enum KyPathType { kSystemPathType = 0, kUnixPathType = 1, kDosPathType = 2 };

  /// The empty path: no device, directory or names.
  KyPathName();
  /// The path of a text, parsed in the system form.
  KyPathName(const KyString& text);  // NOLINT: paths convert from text
  /// The path of a text; a null text is the empty path.
  KyPathName(const char* text);      // NOLINT: a null text is the empty path
  /// A copy of the parts, without the other's scan.
  KyPathName(const KyPathName& other);
  /// Closes an open scan.
  ~KyPathName();

  /// Copies the parts and closes this object's scan.
  KyPathName& operator=(const KyPathName& other);
  /// Parses `text` in the system form.
  KyPathName& operator=(const KyString& text);
  /// Parses `text` in the system form; null is the empty path.
  KyPathName& operator=(const char* text);

  /// The system text.
  operator KyString() const;  // NOLINT
  /// The system text, kept in the object's cache: good until the next change.
  operator const char*() const;  // NOLINT

  /// Device, directory, file name and extension compared without regard to case.
  bool operator==(const KyPathName& other) const;
  /// The opposite of operator==.
  bool operator!=(const KyPathName& other) const { return !(*this == other); }

  /// The device: a drive letter without its colon, a UNC prefix, or empty.
  KyString getDevice() const { return _device; }
  /// The file name without its last extension.
  KyString getFileName() const { return _fileName; }
  /// The extension without its dot.
  KyString getExtension() const { return _extension; }
  /// File name and extension joined by a dot.
  KyString getBaseName() const;
  /// The directory in the spelling `type`, with or without its trailing separator.
  KyString getDirectory(bool keepSeparator, KyPathType type) const;
  /// Device and directory in the spelling `type`.
  KyString getDirName(bool keepSeparator, KyPathType type) const;
  /// The directory in DOS spelling.
  KyString getDosDirectory(bool keepSeparator) const;
  /// The directory in Unix spelling.
  KyString getUnixDirectory(bool keepSeparator) const;
  /// The DOS builder leaves the cache marked stale; the Unix (system) builder marks it
  /// good, so getString of either type gives the Unix text until the next change.
  KyString getDosValue() const;
  /// The whole path in Unix spelling.
  KyString getUnixValue() const;
  /// The whole path; the cached text when it is good, whatever the type.
  KyString getString(KyPathType type) const;

  /// True when the directory starts with "/".
  bool isAbsolute() const;
  /// True when the path names a directory: no file name and no extension.
  bool isDirectory() const { return _fileName.isEmpty() && _extension.isEmpty(); }
  /// True for a directory path with an empty directory: the current directory.
  bool isCurrentDirectory() const { return isDirectory() && _directory.isEmpty(); }
  /// True when the directory is empty.
  bool isInCurrentDirectory() const { return _directory.isEmpty(); }
  /// True when device, directory and names are all empty.
  bool isEmpty() const { return _device.isEmpty() && isCurrentDirectory(); }
  /// The same as isEmpty().
  bool operator!() const { return isEmpty(); }

  /// \name Copies
  /** @{ */
  /// Heap copies of the texts above, for the caller to delete[].
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

  /** @} */
  /// Sets the whole path from the range of `value`, parsed in the spelling `type`.
  void setValue(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  /// Sets the whole path from a DOS text: a drive letter or UNC prefix, "\" or "/".
  void setDosValue(const KyString& value, int end = -1, int start = 0);
  /// Sets the whole path from a Unix text; the device becomes empty.
  void setUnixValue(const KyString& value, int end = -1, int start = 0);
  /// Sets device and directory from the range, parsed in the spelling `type`.
  void setDirName(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  /// Sets device and directory from a DOS text.
  void setDosDirName(const KyString& value, int end = -1, int start = 0);
  /// Sets the directory from a Unix text; the device becomes empty.
  void setUnixDirName(const KyString& value, int end = -1, int start = 0);
  /// Sets the directory from the range in the spelling `type`.
  void setDirectory(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  /// Sets the directory from a DOS text, "\" read as "/"; no device is looked for.
  void setDosDirectory(const KyString& value, int end = -1, int start = 0);
  /// Sets the directory from a Unix text.
  void setUnixDirectory(const KyString& value, int end = -1, int start = 0) { setInternalDir(value, end, start); }
  /// Sets the device: one drive letter, or a UNC prefix. A device on an empty directory
  /// makes the directory "/".
  void setDevice(const KyString& value, int end = -1, int start = 0);
  /// Sets file name and extension, split at the last dot.
  void setBaseName(const KyString& value, int end = -1, int start = 0);
  /// Sets the file name, without extension.
  void setFileName(const KyString& value, int end = -1, int start = 0);
  /// Sets the extension, without its dot.
  void setExtension(const KyString& value, int end = -1, int start = 0);
  /// Appends the range to the directory in the spelling `type`; a range from the root
  /// replaces the directory.
  void addDirectory(const KyString& value, int end = -1, KyPathType type = kSystemPathType, int start = 0);
  /// Appends a DOS text to the directory.
  void addDosDirectory(const KyString& value, int end = -1, int start = 0);
  /// Appends a Unix text to the directory; a text from "/" replaces it.
  void addUnixDirectory(const KyString& value, int end = -1, int start = 0);

  // File system. The stat of a directory form uses the name without its trailing
  // separator.
  /// True when the file or directory exists.
  bool doesExist() const;
  /// True when the path, taken as a directory, is an existing directory.
  bool isSystemDirectory() const;
  /// True when the file or directory can be read.
  bool isReadable() const;
  /// True when the file or directory can be written, or made where it is missing.
  bool isWritable() const;
  /// True when the file is readable and either has the extension exe, bat or com, or may
  /// be executed.
  bool isExecutable() const;
  /// True when this file was modified at or after the other.
  bool isNewer(const KyPathName& other) const;
  /// True when names on the path's volume compare with regard to case; a path without a
  /// device is not.
  bool isSensitive() const;
  /// The last access time in seconds since 1970; false when there is no such file.
  bool queryAccessTime(long long& time) const;
  /// The last modification time in seconds since 1970; false when there is no such file.
  bool queryModificationTime(long long& time) const;
  /// The last status change time in seconds since 1970; false when there is no such file.
  bool queryChangedStatusTime(long long& time) const;
  /// The file's mode bits; false when there is no such file.
  bool queryMode(short& mode) const;
  /// Sets the file's mode bits.
  bool changeMode(short mode) const;
  /// Makes device and directory the process's current directory.
  bool changeCurrentDirectory() const;
  /// A mode of -1 sets none. Missing directories are made only when recursive.
  bool create(short mode, bool recursive) const;
  /// Links are removed, never followed; the root "/" is never removed.
  bool remove(bool recursive) const;
  /// Sets this path to the current directory (with a device, that device's root).
  void queryCurrentDirectory(KyString* device);
  /// The DOS text with each name cut to the 8.3 form.
  KyString get83DosValue() const;
  /// Moves the names into "locale/" and the directory of the messages locale, merged onto
  /// this path.
  void localize();

  /// doesExist() of the path of `text`.
  static bool doesExist(const KyString& text);
  /// isExecutable() of the path of `text`.
  static bool isExecutable(const KyString& text);
  /// isReadable() of the path of `text`.
  static bool isReadable(const KyString& text);
  /// isWritable() of the path of `text`.
  static bool isWritable(const KyString& text);
  /// The system text of the path of `text`, localized.
  static KyString Localize(const KyString& text);
  /// Writes the current directory into buffer, never at or past size; a buffer too
  /// small gets the empty text. With a non-empty device, the root of that device.
  static void QueryCurrentDirectory(char* const buffer, int size, KyString* device);

  /// Scanning: one scan per object, "." and ".." among the entries, in the system's
  /// order. Directories come back as relative directories, files as bare names.
  bool openDir() const;
  /// The next entry of the open scan into `entry`; false at the end or without a scan.
  bool readDir(KyPathName& entry) const;
  /// Starts the open scan again.
  void rewindDir() const;
  /// Ends the scan; false when none was open.
  bool closeDir() const;
  /// True when the directory holds no entry but "." and "..".
  bool isEmptyDirectory() const;
  /// "?" and "*" within device, directory and base name; the base name of the pattern
  /// may hold one group "(a|b|...)". Without a device the comparison ignores case.
  bool match(const KyPathName& pattern) const;

  // Algebra.
  /// Puts `other` on top of this path: an absolute other replaces it; otherwise the
  /// other's directory is appended and its names replace these. Returns this path.
  KyPathName& merge(const KyPathName& other);
  /// merge() with the path of a text.
  KyPathName& merge(const KyString& other);
  /// merge() with the path of a text.
  KyPathName& merge(const char* other);
  /// Puts `other` under this path: this path merged onto a copy of other.
  KyPathName& prepend(const KyPathName& other);
  /// prepend() with the path of a text.
  KyPathName& prepend(const KyString& other);
  /// prepend() with the path of a text.
  KyPathName& prepend(const char* other);
  /// The same as merge().
  KyPathName& operator+=(const KyPathName& other) { return merge(other); }
  /// The same as merge().
  KyPathName& operator+=(const KyString& other) { return merge(other); }
  /// The same as merge().
  KyPathName& operator+=(const char* other) { return merge(other); }
  /// A copy of this path, merged with `other`.
  KyPathName operator+(const KyPathName& other) const;
  /// A copy of this path, merged with the path of a text.
  KyPathName operator+(const KyString& other) const;
  /// A copy of this path, merged with the path of a text.
  KyPathName operator+(const char* other) const;
  /// Makes the directory start at the root.
  void forceAbsolute();
  /// Drops the leading "/" of the directory; the root stays "/".
  void forceRelative();
  /// Turns the names into the last directory: "a/b.c" becomes "a/b.c/".
  void forceDirectory();
  /// The number of directory levels: "a/b/" and "/a/b/" give 2, "/" gives 0.
  int computeLevelNumber() const;
  /// Keeps the device and the first directory; the names go.
  KyPathName& computeFirstSubDirectory();
  /// Keeps the last directory only.
  KyPathName& computeLastSubDirectory();
  /// Drops the device, the first directory and the names.
  KyPathName& computeAllButFirstSubDirectory();
  /// Drops the last directory and the names.
  KyPathName& computeAllButLastSubDirectory();
  /// Keeps the leading part this path shares with `other`, case-sensitively.
  KyPathName& computeSameLeading(const KyPathName& other);
  /// Keeps the trailing part this path shares with `other`.
  KyPathName& computeSameTrailing(const KyPathName& other);
  /// Drops the leading part this path shares with `other`.
  KyPathName& computeDifferLeading(const KyPathName& other);
  /// Drops the trailing part this path shares with `other`.
  KyPathName& computeDifferTrailing(const KyPathName& other);
  /// Makes this path relative to the directory of `other` ("/a/b/c.txt" against
  /// "/a/d/e/" gives "../../b/c.txt"); nothing changes across devices or kinds.
  KyPathName& computeRelativePath(const KyPathName& other);
  /// Counts the system separator "/".
  KyString getSubDirectory(long first, long count) const;
  /// The system text with the directories before the last `levels` shown as "...".
  KyString getTruncatedValue(int levels) const;
  /// True when neither path has names and the other's directory occurs anywhere in this
  /// one (on the same device, when both have one).
  bool isSubDirectory(const KyPathName& other) const;

 private:
  void setInternalVal(const KyString& value, int end, int start);
  void setInternalDir(const KyString& value, int end, int start);
  void normalize();
  /// The byte-level forms of the setters above, on [begin, end) of text.
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
