// KyXmlError: the process-wide record of the last XML fault, three integers that
// KyXmlDocumentI::read() sets and never clears. Set overwrites, so the last fault
// recorded wins; Reset clears. Get names the code, or gives null for a code without a
// name (0, 8, 25 and any unknown value), so a caller tests the name for null.
//
// Severity 1 is used by one code only (END_OF_DOCUMENT_EXPECTED) and has the same
// effect on the document as 2. Threads: the record is unguarded shared data.
#ifndef KYBASE_XML_XML_ERROR_H
#define KYBASE_XML_XML_ERROR_H

#include "kybase/core/export.h"

/// The process-wide record of the last XML fault; see the family page.
class KY_EXPORT KyXmlError {
 public:
  /// How bad the recorded fault is: none, a warning, an error.
  enum Severity { kNone = 0, kWarning = 1, kError = 2 };

  /// The codes, by the names Get gives them. 8 (a bad external literal of a document
  /// type) and 25 (no element could be made) have no name.
  enum Code {
    kInvalidDocument = 1,
    kEmptyDocument = 2,
    kEarlyEndOfDocument = 3,
    kEndOfDocumentExpected = 4,
    kEndOfDocumentUnexpected = 5,
    kInvalidVersionInfo = 6,
    kInvalidSdDeclaration = 7,
    kInvalidExternalLiteral = 8,
    kInvalidDeclarationEnd = 9,
    kInvalidCommentChars = 10,
    kReservedPiTargetName = 11,
    kInvalidCData = 12,
    kInvalidEncodingName = 13,
    kInvalidEncodingDeclaration = 14,
    kInvalidTagName = 15,
    kUnexpectedTagSymbol = 16,
    kEndTagExpected = 17,
    kEndTagNotMatched = 18,
    kInvalidTagEnd = 19,
    kEqualSignExpected = 20,
    kInvalidAttributeValue = 21,
    kInvalidReferenceDeclaration = 22,
    kInvalidCharRefDeclaration = 23,
    kInvalidDoctypeName = 24,
    kElementNotCreated = 25,
  };

  /// Records a fault, replacing the one recorded before.
  static void Set(Severity severity, int code, int line);
  /// Clears the record.
  static void Reset();
  /// True while a fault is recorded.
  static bool IsSet() { return _Severity != kNone; }
  /// Copies the record to the arguments and returns the code's name, or null.
  static const char* Get(Severity& severity, int& code, int& line);

 private:
  static Severity _Severity;
  static int _Code;
  static int _Line;
};

#endif  // KYBASE_XML_XML_ERROR_H
