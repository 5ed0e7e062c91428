#include "kybase/xml/xml_error.h"

KyXmlError::Severity KyXmlError::_Severity = KyXmlError::kNone;
int KyXmlError::_Code = 0;
int KyXmlError::_Line = 0;

namespace {

// Names by code; the empty places (0, 8) have none.
const char* const kNames[] = {
    nullptr,
    "INVALID_DOCUMENT",
    "EMPTY_DOCUMENT",
    "EARLY_END_OF_DOCUMENT",
    "END_OF_DOCUMENT_EXPECTED",
    "END_OF_DOCUMENT_UNEXPECTED",
    "INVALID_VERSION_INFO",
    "INVALID_SD_DECLARATION",
    nullptr,
    "INVALID_DECLARATION_END",
    "INVALID_COMMENT_CHARS",
    "RESERVED_PI_TARGET_NAME",
    "INVALID_CDATA",
    "INVALID_ENCODING_NAME",
    "INVALID_ENCODING_DECLARATION",
    "INVALID_TAG_NAME",
    "UNEXPECTED_TAG_SYMBOL",
    "END_TAG_EXPECTED",
    "END_TAG_NOT_MATCHED",
    "INVALID_TAG_END",
    "EQUAL_SIGN_EXPECTED",
    "INVALID_ATTRIBUTE_VALUE",
    "INVALID_REFERENCE_DECLARATION",
    "INVALID_CHARREF_DECLARATION",
    "INVALID_DOCTYPE_NAME",
};

}  // namespace

void KyXmlError::Set(Severity severity, int code, int line) {
  _Severity = severity;
  _Code = code;
  _Line = line;
}

void KyXmlError::Reset() { Set(kNone, 0, 0); }

const char* KyXmlError::Get(Severity& severity, int& code, int& line) {
  severity = _Severity;
  code = _Code;
  line = _Line;
  if (code < 0 || code >= static_cast<int>(sizeof(kNames) / sizeof(kNames[0]))) return nullptr;
  return kNames[code];
}
