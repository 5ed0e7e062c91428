// Helpers shared by the sources of KyPathName: ranges of a KyString as narrow bytes,
// the directory normaliser, and the directory scan record.
//
// Paths are parsed on narrow bytes. The separators and marks that matter ("/", "\",
// ".", ":") are ASCII, and the multi-byte encodings of the system never use an ASCII
// byte inside a character, so byte positions give the same split as characters.
#ifndef KYBASE_PATHS_PATH_NAME_INTERNAL_H
#define KYBASE_PATHS_PATH_NAME_INTERNAL_H

#include <dirent.h>

#include <string>

#include "kybase/text/kystring.h"

// A range of a text given as (end, start) in characters, turned into byte offsets of
// the narrow text. probe is the last byte a search "at or before end" looks at.
struct KyPathSpan {
  const char* text;
  int size;    // bytes of the whole narrow text
  int begin;   // first byte of the range
  int end;     // byte after the range
  int probe;
  bool empty;
};

KyPathSpan KyPathSpanOf(const KyString& value, int end, int start);

// The narrow bytes of a string and their count.
inline int KyPathBytes(const KyString& value, const char*& text) {
  text = value.getValue() != nullptr ? value.getValue() : "";
  KyInternalString* body = value.getInternalString();
  if (body->isMultiByte() == 0) return body->getLength();
  return static_cast<int>(std::char_traits<char>::length(text));
}

// A string of count bytes of text (which need not end there).
KyString KyPathText(const char* text, int count);
inline KyString KyPathText(const std::string& text) {
  return KyPathText(text.data(), static_cast<int>(text.size()));
}

// The directory steps of the model, in one pass each: a final "/", "/./" replaced in
// one pass of the string's substitution (whose overlap rule makes "a/././b/" "a/b/"),
// runs of "/" made one, a leading "./" dropped, and "name/../" pairs resolved after
// the leading group of "../".
KyString KyNormalizedDirectory(const char* text, int size);

// Whether normalising would give text back unchanged: it ends with "/" and holds no
// "//", no "/./", no leading "./" and no "/../" after its leading "../" group (one at
// the very start stops the resolution). Such texts are stored as they are.
bool KyIsNormalDirectory(const char* text, int size);

// The scan behind KyPathName::_scan.
struct KyDirScan {
  DIR* handle;
  bool finished;
  unsigned long nextIndex;
  std::string name;
  std::string entry;  // the name of the entry read last
};

#endif  // KYBASE_PATHS_PATH_NAME_INTERNAL_H
