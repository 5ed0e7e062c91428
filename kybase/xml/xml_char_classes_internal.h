// Character classes of the XML parser, one byte of flags per 16-bit unit.
#ifndef KYBASE_XML_XML_CHAR_CLASSES_INTERNAL_H
#define KYBASE_XML_XML_CHAR_CLASSES_INTERNAL_H

#include <cstdint>

enum : std::uint8_t {
  kKyXmlNameStart = 1,
  kKyXmlNameChar = 2,
  kKyXmlDigit = 4,
  kKyXmlSpace = 8,
  kKyXmlVersionChar = 16,
  kKyXmlEncodingFirst = 32,
  kKyXmlEncodingChar = 64,
  kKyXmlPubidChar = 128,
};

// The table of 65,536 entries, made at the first call.
const std::uint8_t* KyXmlCharClasses();

#endif  // KYBASE_XML_XML_CHAR_CLASSES_INTERNAL_H
