// Character arrays of the XML nodes: made with new[], freed with delete[], so that an
// array made by the parser or by set... can be handed to any store... operation. The
// library's own nodes may also keep a short text in a buffer of their own (`local`);
// these helpers tell the two apart.
#ifndef KYBASE_XML_XML_TEXT_INTERNAL_H
#define KYBASE_XML_XML_TEXT_INTERNAL_H

#include <cstdint>
#include <cstring>

// A copy of `text`, or null for a null or empty text.
inline char* KyXmlCopyText(const char* text) {
  if (text == nullptr || *text == '\0') return nullptr;
  std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

// True when `text` points into the `room` bytes of `local`.
inline bool KyXmlIsLocalText(const char* text, const char* local, std::size_t room) {
  return reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(local) < room;
}

// Frees `text` unless it lives in `local`.
inline void KyXmlFreeText(char* text, const char* local, std::size_t room) {
  if (!KyXmlIsLocalText(text, local, room)) delete[] text;
}

// The text of a node copy: a text in the source's buffer `from` moves to the same place
// in the copy's buffer `to` (whose bytes the caller copies); an array is shared.
inline char* KyXmlCopiedText(char* text, const char* from, char* to, std::size_t room) {
  return KyXmlIsLocalText(text, from, room) ? to + (text - from) : text;
}

// `size` bytes of `bytes` and a terminator, placed in `local` when `room` holds them,
// else in a new array.
inline char* KyXmlPlaceText(const char* bytes, std::size_t size, char* local, std::size_t room) {
  char* text = size < room ? local : new char[size + 1];
  std::memcpy(text, bytes, size);
  text[size] = '\0';
  return text;
}

#endif  // KYBASE_XML_XML_TEXT_INTERNAL_H
