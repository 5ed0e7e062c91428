// Character arrays of the XML nodes: made with new[], freed with delete[], so that an
// array made by the parser or by set... can be handed to any store... operation.
#ifndef KYBASE_XML_XML_TEXT_INTERNAL_H
#define KYBASE_XML_XML_TEXT_INTERNAL_H

#include <cstring>

// A copy of `text`, or null for a null or empty text.
inline char* KyXmlCopyText(const char* text) {
  if (text == nullptr || *text == '\0') return nullptr;
  std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

#endif  // KYBASE_XML_XML_TEXT_INTERNAL_H
