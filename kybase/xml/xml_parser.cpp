#include <strings.h>

#include <cstring>
#include <string>
#include <istream>
#include <typeinfo>

#include "kybase/core/memory_pool.h"
#include "kybase/xml/xml_char_classes_internal.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "kybase/xml/xml_node.h"
#include "kybase/xml/xml_parser_internal.h"
#include "kybase/xml/xml_text_internal.h"

namespace {

// The stream is read in steps of this many bytes.
constexpr unsigned long kReadStep = 2048;
// The least document that is accepted: "<a/>" and some blanks.
constexpr unsigned long kLeastDocument = 8;
// resolveCharRef's answer for a reference it does not know.
constexpr int kUnknownReference = 0xFFFF;

// Trailing byte count and offset of a UTF-8 lead byte, by table.
const std::uint8_t kTrailing[256] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5,
};
const std::uint32_t kOffsets[6] = {0x00000000u, 0x00003080u, 0x000E2080u, 0x03C82080u, 0xFA082080u, 0x82082080u};

bool IsQuote(KyXmlUnit unit) { return unit == '\'' || unit == '"'; }

char Lower(unsigned unit) { return static_cast<char>(unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit); }

// The end of the run of ASCII units that starts at `at`, looked at eight at a time.
const KyXmlUnit* AsciiRunEnd(const KyXmlUnit* at, const KyXmlUnit* end) {
  while (end - at >= 8) {
    unsigned any = 0;
    for (int i = 0; i < 8; ++i) any |= at[i];
    if (any >= 0x80) break;
    at += 8;
  }
  while (at < end && *at < 0x80) ++at;
  return at;
}

// Appends the UTF-8 form of the units [at, end) to `out`, which has room for it;
// returns the new end of `out`. A high surrogate followed by a low one inside the
// range is one scalar; a lone surrogate is encoded by itself.
char* EncodeUtf8(const KyXmlUnit* at, const KyXmlUnit* end, char* out) {
  while (at < end) {
    for (const KyXmlUnit* ascii = AsciiRunEnd(at, end); at < ascii; ++at) *out++ = static_cast<char>(*at);
    if (at == end) break;
    std::uint32_t scalar = *at++;
    if (scalar >= 0xD800 && scalar <= 0xDBFF && at < end && *at >= 0xDC00 && *at <= 0xDFFF)
      scalar = ((scalar - 0xD800) << 10) + (*at++ - 0xDC00) + 0x10000;
    if (scalar < 0x800) {
      *out++ = static_cast<char>(0xC0 | (scalar >> 6));
    } else if (scalar < 0x10000) {
      *out++ = static_cast<char>(0xE0 | (scalar >> 12));
      *out++ = static_cast<char>(0x80 | ((scalar >> 6) & 0x3F));
    } else {
      *out++ = static_cast<char>(0xF0 | (scalar >> 18));
      *out++ = static_cast<char>(0x80 | ((scalar >> 12) & 0x3F));
      *out++ = static_cast<char>(0x80 | ((scalar >> 6) & 0x3F));
    }
    *out++ = static_cast<char>(0x80 | (scalar & 0x3F));
  }
  return out;
}

// Appends the UTF-8 form of the units [at, end) to `out`.
void AppendUtf8(std::string& out, const KyXmlUnit* at, const KyXmlUnit* end) {
  std::size_t size = out.size();
  out.resize(size + 3 * static_cast<std::size_t>(end - at));
  out.resize(static_cast<std::size_t>(EncodeUtf8(at, end, &out[0] + size) - out.data()));
}

}  // namespace

// Conversions.

char* KyXmlMark::toUtf8(const KyXmlUnit* end, unsigned long skip, std::size_t* size, char* local,
                        std::size_t room) const {
  if (end < start) return nullptr;
  auto count = static_cast<unsigned long>(end - start);
  if (skip > count) return nullptr;
  end -= skip;
  // Three bytes per unit cover every form: a pair of units makes four.
  const KyXmlUnit* at = AsciiRunEnd(start, end);
  auto bytes = static_cast<std::size_t>(at - start);
  const bool ascii = at == end;
  for (; at < end; ++at) bytes += *at < 0x80 ? 1 : *at < 0x800 ? 2 : 3;
  char* text = bytes < room ? local : new char[bytes + 1];
  char* last = text + bytes;
  if (ascii)
    for (std::size_t i = 0; i < bytes; ++i) text[i] = static_cast<char>(start[i]);
  else
    last = EncodeUtf8(start, end, text);
  *last = '\0';
  if (size != nullptr) *size = static_cast<std::size_t>(last - text);
  return text;
}

std::size_t KyXmlParser::toUtf16(const unsigned char* bytes, std::size_t count, KyXmlUnit* units) {
  const unsigned char* at = bytes;
  const unsigned char* stop = bytes + count;
  KyXmlUnit* out = units;
  while (at < stop) {
    // Runs of ASCII, the common case, eight bytes at a time.
    while (stop - at >= 8) {
      std::uint64_t eight;
      std::memcpy(&eight, at, 8);
      if (eight & 0x8080808080808080u) break;
      for (int i = 0; i < 8; ++i) out[i] = at[i];
      at += 8;
      out += 8;
    }
    if (at == stop) break;
    unsigned lead = *at;
    if (lead < 0x80) {
      *out++ = static_cast<KyXmlUnit>(lead);
      ++at;
      continue;
    }
    unsigned trailing = kTrailing[lead];
    if (static_cast<std::size_t>(stop - at) <= trailing) {
      *out++ = 0xFFFD;
      break;
    }
    std::uint32_t scalar = 0;
    switch (trailing) {
      case 5:
        scalar += *at++;
        scalar <<= 6;
        [[fallthrough]];
      case 4:
        scalar += *at++;
        scalar <<= 6;
        [[fallthrough]];
      case 3:
        scalar += *at++;
        scalar <<= 6;
        [[fallthrough]];
      case 2:
        scalar += *at++;
        scalar <<= 6;
        [[fallthrough]];
      case 1:
        scalar += *at++;
        scalar <<= 6;
        [[fallthrough]];
      default:
        scalar += *at++;
    }
    scalar -= kOffsets[trailing];
    *out++ = static_cast<KyXmlUnit>(scalar < 0x10000 ? scalar : 0xFFFD);
  }
  return static_cast<std::size_t>(out - units);
}

// The parse, from the constructor.

KyXmlParser::KyXmlParser(std::istream& stream, KyXmlDocumentI* document)
    : document(document), plainDocument(&typeid(*document) == &typeid(KyXmlDocument)), classes(KyXmlCharClasses()) {
  if (!readFile(stream)) {
    KyXmlError::Set(KyXmlError::kError, KyXmlError::kInvalidDocument, 1);
    document->empty();
    return;
  }
  parseProlog();
  if (KyXmlError::IsSet()) {
    document->empty();
    return;
  }
  if (!parseElement()) {
    if (KyXmlError::IsSet())
      document->empty();
    else
      fail(KyXmlError::kEmptyDocument);
    return;
  }
  for (;;) {
    if (KyXmlError::IsSet()) {
      document->empty();
      return;
    }
    if (!parseComment() && !parsePI() && !skipSpace()) break;
  }
  if (truncated) {
    document->empty();
    return;
  }
  if (nextChar() != 0) {
    KyXmlError::Set(KyXmlError::kWarning, KyXmlError::kEndOfDocumentExpected, lineOf(cursor));
    document->empty();
  }
}

KyXmlParser::~KyXmlParser() {
  releaseBlock();
  for (KyXmlElementI* orphan : orphans) delete orphan;
}

void KyXmlDocumentI::read(std::istream& stream) {
  empty();
  KyXmlParser parser(stream, this);
}

// Reading and decoding.

bool KyXmlParser::readFile(std::istream& stream) {
  char* data = KyCharPool::AllocBlock(block, kReadStep);
  if (data == nullptr) return false;
  unsigned long total = 0;
  for (;;) {
    stream.read(data + total, static_cast<std::streamsize>(kReadStep));
    auto got = static_cast<unsigned long>(stream.gcount());
    total += got;
    if (got != kReadStep) break;
    data = KyCharPool::ReAllocBlock(block, total + kReadStep);
    if (data == nullptr) {
      releaseBlock();
      return false;
    }
  }
  auto* bytes = reinterpret_cast<unsigned char*>(data);
  // A failed read gives its block back to the pool: nothing of it is kept.
  if (total < kLeastDocument) {
    releaseBlock();
    return false;
  }
  auto* units = reinterpret_cast<KyXmlUnit*>(data);
  unsigned first = bytes[0] | bytes[1] << 8;
  // The offset-1 tests look one byte on, not one unit: they never hold, so UTF-16
  // without a mark is not recognised. Kept so, as callers see it.
  unsigned atByteOne = bytes[1] | bytes[2] << 8;
  if (first == 0xFEFF || (first == 0x003C && atByteOne == 0x003F) || first == 0xFFFE ||
      (first == 0x3C00 && atByteOne == 0x3F00)) {
    length = static_cast<std::uint32_t>(total / 2);
    if (first == 0xFFFE || first == 0x3C00)
      for (std::uint32_t i = first == 0xFFFE ? 1 : 0; i < length; ++i)
        units[i] = static_cast<KyXmlUnit>(units[i] << 8 | units[i] >> 8);
    buffer = units;
    cursor = first == 0xFEFF || first == 0xFFFE ? buffer + 1 : buffer;
  } else {
    unsigned long skip;
    if (bytes[0] == '<')
      skip = 0;
    else if (bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
      skip = 3;
    else {
      releaseBlock();
      return false;
    }
    KyMemoryPoolBlock* converted = nullptr;
    char* target = KyCharPool::AllocBlock(converted, 2 * (total - skip) + 2);
    if (target == nullptr) {
      releaseBlock();
      return false;
    }
    auto* decoded = reinterpret_cast<KyXmlUnit*>(target);
    length = static_cast<std::uint32_t>(toUtf16(bytes + skip, total - skip, decoded));
    releaseBlock();
    block = converted;
    buffer = decoded;
    cursor = buffer;
  }
  end = buffer + length;
  linePlace = buffer;
  return true;
}

void KyXmlParser::releaseBlock() {
  if (block != nullptr) KyCharPool::ReleaseBlock(block);
  block = nullptr;
}

// Cursor primitives.

bool KyXmlParser::skipSpace() {
  bool consumed = false;
  for (;;) {
    KyXmlUnit unit = nextChar();
    if (classes[unit] & kKyXmlSpace) {
      consumed = true;
      continue;
    }
    if (unit != 0) stepBack();
    return consumed;
  }
}

bool KyXmlParser::matchLiteral(const char* text) {
  const KyXmlUnit* start = cursor;
  for (; *text != '\0'; ++text) {
    KyXmlUnit unit = nextChar();
    if (unit == 0 || unit != static_cast<unsigned char>(*text)) {
      cursor = start;
      return false;
    }
  }
  return true;
}

bool KyXmlParser::matchNoCase(const char* text) {
  const KyXmlUnit* start = cursor;
  for (; *text != '\0'; ++text) {
    KyXmlUnit unit = nextChar();
    if (unit == 0 || unit > 0x7F || Lower(unit) != Lower(static_cast<unsigned char>(*text))) {
      cursor = start;
      return false;
    }
  }
  return true;
}

bool KyXmlParser::expectChar(KyXmlUnit unit) {
  if (nextChar() == unit) return true;
  stepBack();
  return false;
}

int KyXmlParser::lineOf(const KyXmlUnit* to) {
  if (to >= linePlace) {
    for (const KyXmlUnit* at = linePlace; at < to; ++at) lineNumber += *at == '\n';
  } else {
    for (const KyXmlUnit* at = to; at < linePlace; ++at) lineNumber -= *at == '\n';
  }
  linePlace = to;
  return lineNumber;
}

void KyXmlParser::fail(int code) { KyXmlError::Set(KyXmlError::kError, code, lineOf(cursor)); }

void KyXmlParser::attach(KyXmlNodeI* node) {
  if (element != nullptr)
    element->addChild(node);
  else
    document->addNode(node);
}

// Prolog.

void KyXmlParser::parseProlog() {
  parseXmlDecl();
  if (parseMisc()) return;
  if (!parseDoctype()) return;
  parseMisc();
}

// Comments, instructions and blanks; true when one of them left an error behind.
bool KyXmlParser::parseMisc() {
  while (parseComment() || parsePI() || skipSpace())
    if (KyXmlError::IsSet()) return true;
  return false;
}

bool KyXmlParser::parseXmlDecl() {
  if (!matchNoCase("<?xml")) return false;
  if (!parseVersionInfo()) {
    fail(KyXmlError::kInvalidVersionInfo);
    return false;
  }
  parseEncodingDecl();
  if (KyXmlError::IsSet()) return false;
  parseSDDecl();
  if (KyXmlError::IsSet()) return false;
  skipSpace();
  if (!matchLiteral("?>")) {
    fail(KyXmlError::kInvalidDeclarationEnd);
    return false;
  }
  return true;
}

// The head of a pseudo-attribute of the declaration: blanks, `name`, "=" with optional
// blanks around it. On a mismatch the cursor goes back to where it stood.
bool KyXmlParser::parseDeclHead(const char* name) {
  const KyXmlUnit* start = cursor;
  if (!skipSpace() || !matchLiteral(name)) {
    cursor = start;
    return false;
  }
  skipSpace();
  if (!expectChar('=')) {
    cursor = start;
    return false;
  }
  skipSpace();
  return true;
}

bool KyXmlParser::parseVersionInfo() {
  if (!parseDeclHead("version")) return false;
  if (KyXmlError::IsSet()) return false;
  KyXmlUnit quote = nextChar();
  if (!IsQuote(quote) || !parseVersionNum() || nextChar() != quote) {
    fail(KyXmlError::kInvalidVersionInfo);
    return false;
  }
  return true;
}

bool KyXmlParser::parseVersionNum() {
  KyXmlMark mark{cursor};
  if (!(classes[nextChar()] & kKyXmlVersionChar)) {
    stepBack();
    return false;
  }
  while (classes[nextChar()] & kKyXmlVersionChar) {
  }
  stepBack();
  document->storeVersion(mark.toUtf8(cursor, 0));
  return true;
}

bool KyXmlParser::parseEncodingDecl() {
  if (!parseDeclHead("encoding")) return false;
  KyXmlUnit quote = nextChar();
  if (!IsQuote(quote)) {
    fail(KyXmlError::kInvalidEncodingDeclaration);
    return false;
  }
  // The name is checked for form only: decoding never depends on it.
  const KyXmlUnit* afterQuote = cursor;
  KyXmlUnit unit = nextChar();
  if (classes[unit] & kKyXmlEncodingFirst) {
    do unit = nextChar();
    while (classes[unit] & kKyXmlEncodingChar);
    if (unit == quote) return true;
  }
  cursor = afterQuote;
  fail(KyXmlError::kInvalidEncodingName);
  return false;
}

bool KyXmlParser::parseSDDecl() {
  if (!parseDeclHead("standalone")) return false;
  KyXmlUnit quote = nextChar();
  if (IsQuote(quote) && (matchLiteral("yes") || matchLiteral("no")) && nextChar() == quote) return true;
  fail(KyXmlError::kInvalidSdDeclaration);
  return false;
}

// Document type, kept as opaque text.

bool KyXmlParser::parseDoctype() {
  if (!matchLiteral("<!DOCTYPE")) return false;
  skipSpace();
  char* name;
  if (!parseName(name)) {
    fail(KyXmlError::kInvalidDoctypeName);
    return false;
  }
  KyXmlMark mark{cursor};
  parseExternalId();
  if (KyXmlError::IsSet()) {
    delete[] name;
    return false;
  }
  skipSpace();
  if (nextChar() == '[') {
    if (!skipTo(']')) {
      delete[] name;
      return false;
    }
  } else {
    stepBack();
  }
  if (!skipTo('>')) {
    delete[] name;
    return false;
  }
  document->storeDoctype(name, mark.toUtf8(cursor, 1));
  return true;
}

// Reads up to and including `wanted`, with no regard for quotes or nesting. A zero
// unit, or the end of the text, is an early end.
bool KyXmlParser::skipTo(KyXmlUnit wanted) {
  for (;;) {
    KyXmlUnit unit = nextChar();
    if (unit == 0) {
      fail(KyXmlError::kEarlyEndOfDocument);
      return false;
    }
    if (unit == wanted) return true;
  }
}

void KyXmlParser::parseExternalId() {
  if (!skipSpace()) return;
  const KyXmlUnit* start = cursor;
  if (matchLiteral("SYSTEM") && skipSpace()) {
    parseSystemLiteral();
    return;
  }
  cursor = start;
  if (!matchLiteral("PUBLIC") || !skipSpace()) return;
  KyXmlUnit quote = nextChar();
  if (IsQuote(quote)) {
    for (;;) {
      KyXmlUnit unit = nextChar();
      if (unit == 0) {
        fail(KyXmlError::kEarlyEndOfDocument);
        return;
      }
      if (unit == quote) break;
      if (!(classes[unit] & kKyXmlPubidChar)) {
        fail(KyXmlError::kInvalidExternalLiteral);
        return;
      }
    }
  }
  if (!skipSpace()) {
    fail(KyXmlError::kInvalidExternalLiteral);
    return;
  }
  parseSystemLiteral();
}

void KyXmlParser::parseSystemLiteral() {
  KyXmlUnit quote = nextChar();
  if (!IsQuote(quote)) {
    fail(KyXmlError::kInvalidExternalLiteral);
    return;
  }
  for (;;) {
    KyXmlUnit unit = nextChar();
    if (unit == 0) {
      fail(KyXmlError::kEarlyEndOfDocument);
      return;
    }
    if (unit == quote) return;
  }
}

// Elements. The descent into content is a loop over a stack of open elements; each
// step below names the place of the recursive form it stands for.

bool KyXmlParser::parseElement() {
  KyXmlElementI* made = nullptr;
  bool emptyTag = false;
  if (!parseStartTag(made, emptyTag)) return false;
  if (emptyTag) {
    finishElement(made);
    return true;
  }
  open.push_back({made, element});
  element = made;
  KyXmlMark mark{cursor};
  for (;;) {
    ContentEnd ending = parseContent(mark);
    if (ending == kChildFollows) {
      // A child's parseElement: its start tag here, its content on the next turn.
      if (parseStartTag(made, emptyTag)) {
        if (emptyTag) {
          finishElement(made);
          mark.start = cursor;
        } else {
          open.push_back({made, element});
          element = made;
          mark.start = cursor;
        }
        continue;
      }
      mark.start = cursor;
      if (afterChild(false, mark)) continue;
    }
    // The content of the innermost open element has ended: its end tag decides, and
    // the parent's content goes on or fails in turn.
    for (;;) {
      OpenElement closing = open.back();
      open.pop_back();
      bool closed = parseEndTag(closing.element);
      if (closed) {
        element = closing.saved;
        finishElement(closing.element);
      } else {
        if (!KyXmlError::IsSet()) fail(KyXmlError::kEndTagExpected);
        // The field stays on the element that failed, as the parent's content sees it.
        orphans.push_back(closing.element);
      }
      if (open.empty()) return closed;
      mark.start = cursor;
      if (afterChild(closed, mark)) break;
    }
  }
}

// What the content does after a child element: go on after a good one; after a failed
// one, take a CDATA section, instruction or comment that stands at the cursor (which
// clears the error that brought it here) or stop if an error stands.
bool KyXmlParser::afterChild(bool attached, KyXmlMark& mark) {
  if (attached) return true;
  if (parseCData() || parsePI() || parseComment()) {
    mark.start = cursor;
    KyXmlError::Reset();
    return true;
  }
  return !KyXmlError::IsSet();
}

void KyXmlParser::finishElement(KyXmlElementI* finished) {
  document->endElement(finished);
  attach(finished);
}

bool KyXmlParser::parseStartTag(KyXmlElementI*& made, bool& emptyTag) {
  made = nullptr;
  emptyTag = false;
  if (nextChar() != '<') {
    stepBack();
    return false;
  }
  if (nextChar() == '/') {
    stepBack();
    stepBack();
    return false;
  }
  stepBack();
  KyXmlMark tagMark{cursor};
  if (!scanName()) {
    fail(KyXmlError::kInvalidTagName);
    stepBack();
    return false;
  }
  KyXmlElementI* created;
  bool plain = isPlain(element);
  spaceNamed = false;
  if (plain) {
    auto* own = new KyXmlElement;
    own->storeTag(tagMark.toUtf8(cursor, 0, nullptr, own->local, sizeof own->local));
    created = own;
  } else {
    char* tag = tagMark.toUtf8(cursor, 0);
    created = element != nullptr ? element->createChildElement(tag) : nullptr;
    if (created == nullptr) created = document->createElement(tag);
  }
  if (created == nullptr) {
    fail(KyXmlError::kElementNotCreated);
    return false;
  }
  document->startElement(created);
  while (skipSpace()) {
    // Blanks that run to the end of the text: a name would step back onto them and
    // this loop would read them again for ever.
    if (cursor == end) {
      delete created;
      fail(KyXmlError::kEarlyEndOfDocument);
      return false;
    }
    parseAttribute(created);
    if (KyXmlError::IsSet()) {
      delete created;
      return false;
    }
  }
  // A plain element answers the question from the attributes read here: without one of
  // that name the answer is known.
  KyXmlAttributeI* space = !plain || spaceNamed ? created->getAttribute("xml:space") : nullptr;
  if (space != nullptr && space->getValue() != nullptr && std::strcmp(space->getValue(), "preserve") == 0)
    created->preserveWhiteSpaces(true);
  skipSpace();
  KyXmlUnit unit = nextChar();
  if (unit == '/') {
    emptyTag = true;
    unit = nextChar();
  }
  if (unit != '>') {
    delete created;
    fail(KyXmlError::kInvalidTagEnd);
    return false;
  }
  made = created;
  return true;
}

bool KyXmlParser::parseAttribute(KyXmlElementI* owner) {
  KyXmlMark nameMark{cursor};
  if (!scanName()) return false;
  const KyXmlUnit* nameEnd = cursor;
  skipSpace();
  if (nextChar() != '=') {
    stepBack();
    fail(KyXmlError::kEqualSignExpected);
    return false;
  }
  skipSpace();
  KyXmlMark valueMark{nullptr};
  bool resolved = false;
  if (!parseAttValue(valueMark.start, resolved)) {
    if (!KyXmlError::IsSet()) fail(KyXmlError::kInvalidAttributeValue);
    return false;
  }
  if (!isPlain(owner)) {
    char* value = resolved ? KyXmlPlaceText(valueText.data(), valueText.size(), nullptr, 0)
                           : valueMark.toUtf8(cursor, 1);
    owner->storeAttribute(document, nameMark.toUtf8(nameEnd, 0), value);
    return true;
  }
  // What storeAttribute does for these classes, with the texts in the attribute's own
  // buffer: the name first, the value behind it.
  auto* attribute = new KyXmlAttribute;
  std::size_t used = 0;
  attribute->name = nameMark.toUtf8(nameEnd, 0, &used, attribute->local, sizeof attribute->local);
  std::size_t taken = attribute->name == attribute->local ? used + 1 : 0;
  char* rest = attribute->local + taken;
  std::size_t room = sizeof attribute->local - taken;
  attribute->value = resolved ? KyXmlPlaceText(valueText.data(), valueText.size(), rest, room)
                              : valueMark.toUtf8(cursor, 1, nullptr, rest, room);
  spaceNamed = spaceNamed || (attribute->name[0] == 'x' && std::strcmp(attribute->name, "xml:space") == 0);
  document->attributeAdded(owner, attribute);
  owner->addAttribute(attribute);
  return true;
}

// Reads a quoted value. Without a known reference in it, its text is the run from `run`
// to the closing quote; with one, the decoded text is left in valueText.
bool KyXmlParser::parseAttValue(const KyXmlUnit*& run, bool& resolved) {
  resolved = false;
  KyXmlUnit quote = nextChar();
  if (!IsQuote(quote)) {
    stepBack();
    return false;
  }
  run = cursor;
  // Text of the runs before resolved references, with one byte per reference.
  valueText.clear();
  for (;;) {
    KyXmlUnit unit = nextChar();
    if (unit == quote) break;
    if (unit == 0) {
      fail(KyXmlError::kEarlyEndOfDocument);
      return false;
    }
    if (unit == '<') {
      fail(KyXmlError::kUnexpectedTagSymbol);
      return false;
    }
    if (unit != '&') continue;
    stepBack();
    const KyXmlUnit* at = cursor;
    KyXmlCharRefI* reference;
    if (!parseReference(reference)) {
      // An "&" that ends the text is taken back by the failed reference: step over it,
      // as the value is read on to its end all the same.
      if (cursor <= at) cursor = at + 1;
      continue;
    }
    int code = reference != nullptr ? resolveCharRef(reference) : kUnknownReference;
    dropReference(reference);
    // An unknown reference stays in the value as the text it was.
    if (code == kUnknownReference) continue;
    AppendUtf8(valueText, run, at);
    valueText.push_back(static_cast<char>(code & 0xFF));
    resolved = true;
    run = cursor;
  }
  if (resolved) AppendUtf8(valueText, run, cursor - 1);
  return true;
}

KyXmlParser::ContentEnd KyXmlParser::parseContent(KyXmlMark& mark) {
  for (;;) {
    // Every unit that stops the scan lies at or below "<": letters run on here.
    while (cursor < end && *cursor > '<') ++cursor;
    KyXmlUnit unit = nextChar();
    switch (unit) {
      case 0:
        fail(KyXmlError::kEndOfDocumentUnexpected);
        return kContentFailed;
      case '&':
      case '%':
        stepBack();
        flushText(mark);
        if (!contentReference()) {
          fail(KyXmlError::kInvalidReferenceDeclaration);
          return kContentFailed;
        }
        mark.start = cursor;
        break;
      case '<':
        // A "<" that ends the text can start nothing: the element is unfinished.
        if (cursor == end) {
          fail(KyXmlError::kEndOfDocumentUnexpected);
          return kContentFailed;
        }
        if (nextChar() == '/') {
          stepBack();
          stepBack();
          flushText(mark);
          return kEndTagFollows;
        }
        stepBack();
        stepBack();
        flushText(mark);
        return kChildFollows;
      default:
        // "]" and every other unit are character data.
        break;
    }
  }
}

void KyXmlParser::flushText(const KyXmlMark& mark) {
  // A run that starts with a zero unit makes an empty text, and no node.
  if (mark.start == cursor || *mark.start == 0) return;
  KyXmlTextI* node = document->createText();
  if (node == nullptr) return;
  // For the library's own text node, setText would only copy the text and store the
  // copy: the text is written straight into the node.
  if (&typeid(*node) == &typeid(KyXmlText)) {
    auto* own = static_cast<KyXmlText*>(node);
    own->storeText(mark.toUtf8(cursor, 0, nullptr, own->local, sizeof own->local));
  } else {
    char* text = mark.toUtf8(cursor, 0);
    node->setText(text);
    delete[] text;
  }
  document->textAdded(node);
  attach(node);
}

bool KyXmlParser::contentReference() {
  KyXmlCharRefI* reference;
  if (!parseReference(reference)) return false;
  if (reference == nullptr) return true;
  int code = resolveCharRef(reference);
  if (code == kUnknownReference) {
    reference = keepReference(reference);
    document->charRefAdded(reference);
    attach(reference);
    return true;
  }
  // A known reference becomes one byte of text, its low 8 bits: values above 0xFF
  // lose their upper bits and values from 0x80 stay raw bytes, as callers expect.
  if ((code & 0xFF) != 0) {
    const char byte[2] = {static_cast<char>(code & 0xFF), '\0'};
    if (KyXmlTextI* text = document->createText()) {
      if (&typeid(*text) == &typeid(KyXmlText)) {
        auto* own = static_cast<KyXmlText*>(text);
        own->storeText(KyXmlPlaceText(byte, 1, own->local, sizeof own->local));
      } else {
        text->setText(byte);
      }
      document->textAdded(text);
      attach(text);
    }
  }
  dropReference(reference);
  return true;
}

KyXmlCharRefI* KyXmlParser::makeReference() const {
  if (!plainDocument) return document->createCharRef();
  // The document would make a KyXmlCharRef that the reader deletes at once unless the
  // reference is unknown: the parser's own one serves until then.
  return &scratchReference;
}

KyXmlCharRefI* KyXmlParser::keepReference(KyXmlCharRefI* reference) {
  if (reference != &scratchReference) return reference;
  auto* kept = new KyXmlCharRef;
  if (const char* name = scratchReference.getRefName())
    kept->storeRefName(KyXmlPlaceText(name, std::strlen(name), kept->local, sizeof kept->local));
  else
    kept->setRefCode(scratchReference.getRefCode());
  return kept;
}

void KyXmlParser::dropReference(KyXmlCharRefI* reference) {
  if (reference != &scratchReference) delete reference;
}

bool KyXmlParser::parseReference(KyXmlCharRefI*& reference) {
  reference = nullptr;
  if (nextChar() != '&') return false;
  KyXmlUnit unit = nextChar();
  if (unit == '#') {
    unit = nextChar();
    std::uint32_t base = 10;
    if (unit == 'x') {
      base = 16;
      unit = nextChar();
    }
    // No overflow check and no least number of digits; letters count from their own
    // first letter ("a" is 0, "f" is 5), which callers of old rely on.
    std::uint32_t value = 0;
    for (;; unit = nextChar()) {
      if (unit >= '0' && unit <= '9')
        value = value * base + (unit - '0');
      else if (base == 16 && unit >= 'a' && unit <= 'f')
        value = value * 16 + (unit - 'a');
      else if (base == 16 && unit >= 'A' && unit <= 'F')
        value = value * 16 + (unit - 'A');
      else
        break;
    }
    if (unit != ';') {
      fail(KyXmlError::kInvalidCharRefDeclaration);
      return false;
    }
    reference = makeReference();
    if (reference != nullptr) reference->setRefCode(static_cast<int>(value));
    return true;
  }
  stepBack();
  KyXmlMark nameMark{cursor};
  if (!scanName()) {
    fail(KyXmlError::kInvalidCharRefDeclaration);
    return false;
  }
  reference = makeReference();
  if (reference != nullptr && &typeid(*reference) == &typeid(KyXmlCharRef)) {
    auto* own = static_cast<KyXmlCharRef*>(reference);
    own->storeRefName(nameMark.toUtf8(cursor, 0, nullptr, own->local, sizeof own->local));
  } else if (reference != nullptr) {
    reference->storeRefName(nameMark.toUtf8(cursor, 0));
  }
  if (!expectChar(';')) {
    dropReference(reference);
    reference = nullptr;
    fail(KyXmlError::kInvalidCharRefDeclaration);
    return false;
  }
  return true;
}

int KyXmlParser::resolveCharRef(KyXmlCharRefI* reference) const {
  const char* name = reference->getRefName();
  if (name == nullptr) return reference->getRefCode() & 0xFFFF;
  // Four names, compared without regard to ASCII case. "quote" is the apostrophe;
  // "quot" and "apos" are not known. Kept as it was.
  char folded[6];
  std::size_t size = 0;
  for (; name[size] != '\0'; ++size) {
    if (size == 5) return kUnknownReference;
    folded[size] = Lower(static_cast<unsigned char>(name[size]));
  }
  if (size == 2 && folded[1] == 't' && folded[0] == 'g') return '>';
  if (size == 2 && folded[1] == 't' && folded[0] == 'l') return '<';
  if (size == 3 && std::memcmp(folded, "amp", 3) == 0) return '&';
  if (size == 5 && std::memcmp(folded, "quote", 5) == 0) return '\'';
  return kUnknownReference;
}

bool KyXmlParser::parseEndTag(KyXmlElementI* closing) {
  if (!matchLiteral("</")) return false;
  KyXmlMark mark{cursor};
  if (!scanName()) {
    fail(KyXmlError::kInvalidTagName);
    return false;
  }
  const char* tag = closing->getTag();
  if (tag == nullptr || !spells(mark.start, cursor, tag)) {
    fail(KyXmlError::kEndTagNotMatched);
    return false;
  }
  skipSpace();
  return expectChar('>');
}

// Comments, CDATA sections, instructions.

bool KyXmlParser::parseComment() {
  if (!matchLiteral("<!--")) return false;
  KyXmlMark mark{cursor};
  for (;;) {
    if (end - cursor >= 2 && cursor[0] == '-' && cursor[1] == '-') {
      cursor += 2;
      break;
    }
    if (nextChar() == 0) {
      fail(KyXmlError::kEarlyEndOfDocument);
      return false;
    }
  }
  if (!expectChar('>')) {
    fail(KyXmlError::kInvalidCommentChars);
    return false;
  }
  char* text = mark.toUtf8(cursor, 3);
  KyXmlCommentI* comment = document->createComment();
  if (comment == nullptr) {
    delete[] text;
    return true;
  }
  comment->storeComment(text);
  document->commentAdded(comment);
  attach(comment);
  return true;
}

bool KyXmlParser::parseCData() {
  if (!matchLiteral("<![CDATA[")) return false;
  KyXmlMark mark{cursor};
  while (!matchLiteral("]]>")) {
    KyXmlUnit unit = nextChar();
    if (unit < 0x20 && !(classes[unit] & kKyXmlSpace)) {
      fail(unit == 0 ? KyXmlError::kEarlyEndOfDocument : KyXmlError::kInvalidCData);
      return false;
    }
  }
  char* data = mark.toUtf8(cursor, 3);
  KyXmlCDataI* section = document->createCData();
  if (section == nullptr) {
    delete[] data;
    return true;
  }
  section->storeData(data);
  document->cDataAdded(section);
  attach(section);
  return true;
}

bool KyXmlParser::parsePI() {
  if (!matchLiteral("<?")) return false;
  char* target;
  if (!parseName(target)) return false;
  if (strcasecmp(target, "xml-stylesheet") != 0 && strncasecmp(target, "xml", 3) == 0) {
    // The instruction is still read, with no target.
    delete[] target;
    target = nullptr;
    fail(KyXmlError::kReservedPiTargetName);
  }
  skipSpace();
  KyXmlMark mark{cursor};
  while (!matchLiteral("?>")) {
    if (cursor == end) {
      fail(KyXmlError::kEarlyEndOfDocument);
      truncated = true;
      delete[] target;
      return false;
    }
    // A zero unit is recorded, and the scan goes on to the closing "?>".
    if (nextChar() == 0) fail(KyXmlError::kEarlyEndOfDocument);
  }
  KyXmlPII* instruction = document->createPI();
  if (instruction == nullptr) {
    delete[] target;
    return true;
  }
  // No processingInstructionAdded: instructions arrive silently.
  instruction->storeTarget(target);
  instruction->storeData(mark.toUtf8(cursor, 2));
  attach(instruction);
  return true;
}

bool KyXmlParser::scanName() {
  if (!(classes[nextChar()] & kKyXmlNameStart)) {
    stepBack();
    return false;
  }
  while (classes[nextChar()] & kKyXmlNameChar) {
  }
  stepBack();
  return true;
}

bool KyXmlParser::spells(const KyXmlUnit* at, const KyXmlUnit* to, const char* text) {
  // ASCII units compare with the bytes one for one; the name is not kept, so any other
  // is brought to UTF-8 in a scratch buffer.
  const KyXmlUnit* from = at;
  const char* byte = text;
  for (; at < to && *at < 0x80; ++at, ++byte)
    if (static_cast<unsigned char>(*byte) != *at) return false;
  if (at == to) return *byte == '\0';
  scratch.clear();
  AppendUtf8(scratch, from, to);
  return std::strcmp(text, scratch.c_str()) == 0;
}

bool KyXmlParser::isPlain(const KyXmlElementI* parent) const {
  return plainDocument && (parent == nullptr || &typeid(*parent) == &typeid(KyXmlElement));
}

bool KyXmlParser::parseName(char*& name) {
  KyXmlMark mark{cursor};
  name = scanName() ? mark.toUtf8(cursor, 0) : nullptr;
  return name != nullptr;
}
