// KyXmlParser: the reader behind KyXmlDocumentI::read. It lives on the stack of one
// read: its constructor reads the whole stream into a character pool block, brings it
// to 16-bit units in the machine's order, and parses it by hand-written descent,
// talking to the tree only through the virtual operations of the document, the
// elements and the leaves. Faults go to KyXmlError.
//
// The descent backtracks freely over the buffer. Element nesting is kept on a stack
// of open elements in the heap, not on the call stack, so the depth of a document is
// bounded by memory only.
#ifndef KYBASE_XML_XML_PARSER_INTERNAL_H
#define KYBASE_XML_XML_PARSER_INTERNAL_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "kybase/core/memory_pool.h"
#include "kybase/xml/xml_node.h"

class KyXmlDocumentI;

// One code unit of the buffer. The buffer is a character pool block read as bytes,
// hence the aliasing permission.
typedef std::uint16_t __attribute__((may_alias)) KyXmlUnit;

// The start of a run of units; toUtf8 turns the run up to `end`, less its last `skip`
// units, into a new UTF-8 array from new[]: null when `skip` exceeds the run (or the
// run is reversed), an empty string when nothing remains. The byte count goes to
// `size` when given. A text that fits `room` bytes with its terminator is written in
// `local` instead: a node's own buffer.
struct KyXmlMark {
  const KyXmlUnit* start;
  char* toUtf8(const KyXmlUnit* end, unsigned long skip, std::size_t* size = nullptr, char* local = nullptr,
               std::size_t room = 0) const;
};

class KyXmlParser {
 public:
  KyXmlParser(std::istream& stream, KyXmlDocumentI* document);
  ~KyXmlParser();
  KyXmlParser(const KyXmlParser&) = delete;
  KyXmlParser& operator=(const KyXmlParser&) = delete;

 private:
  // The element whose content is being read, and the field to restore after its end
  // tag.
  struct OpenElement {
    KyXmlElementI* element;
    KyXmlElementI* saved;
  };
  enum ContentEnd { kEndTagFollows, kChildFollows, kContentFailed };

  bool readFile(std::istream& stream);
  // Decodes UTF-8 bytes by table into `units` (room for `count` units) and returns the
  // number of units written. Never reads past the input: a sequence cut off by the
  // end gives one U+FFFD.
  static std::size_t toUtf16(const unsigned char* bytes, std::size_t count, KyXmlUnit* units);
  void releaseBlock();

  KyXmlUnit nextChar() { return cursor == end ? 0 : *cursor++; }
  void stepBack() {
    if (cursor > buffer) --cursor;
  }
  bool skipSpace();
  bool matchLiteral(const char* text);
  bool matchNoCase(const char* text);
  bool expectChar(KyXmlUnit unit);
  int lineOf(const KyXmlUnit* to);
  void fail(int code);
  void attach(KyXmlNodeI* node);

  void parseProlog();
  bool parseMisc();
  bool parseXmlDecl();
  bool parseDeclHead(const char* name);
  bool parseVersionInfo();
  bool parseVersionNum();
  bool parseEncodingDecl();
  bool parseSDDecl();
  bool parseDoctype();
  bool skipTo(KyXmlUnit wanted);
  void parseExternalId();
  void parseSystemLiteral();
  bool parseElement();
  bool parseStartTag(KyXmlElementI*& element, bool& emptyTag);
  bool parseAttribute(KyXmlElementI* element);
  bool parseAttValue(const KyXmlUnit*& run, bool& resolved);
  ContentEnd parseContent(KyXmlMark& mark);
  bool afterChild(bool attached, KyXmlMark& mark);
  bool parseEndTag(KyXmlElementI* element);
  void finishElement(KyXmlElementI* element);
  void flushText(const KyXmlMark& mark);
  bool contentReference();
  bool parseReference(KyXmlCharRefI*& reference);
  // A reference node to fill: the document's, or for a plain document the parser's
  // own, which keepReference turns into a node of the tree and dropReference leaves.
  KyXmlCharRefI* makeReference() const;
  KyXmlCharRefI* keepReference(KyXmlCharRefI* reference);
  void dropReference(KyXmlCharRefI* reference);
  int resolveCharRef(KyXmlCharRefI* reference) const;
  bool parseComment();
  bool parseCData();
  bool parsePI();
  bool scanName();
  bool parseName(char*& name);
  // True when the element would be a plain KyXmlElement built by the document's own
  // create... operations: the reader then fills it, and its attributes, in place.
  bool isPlain(const KyXmlElementI* parent) const;
  // True when the units [at, to) are `text` in UTF-8.
  bool spells(const KyXmlUnit* at, const KyXmlUnit* to, const char* text);

  KyXmlDocumentI* document;
  // The document is a KyXmlDocument itself: its create... operations make the
  // library's own nodes, without a factory.
  bool plainDocument;
  KyMemoryPoolBlock* block = nullptr;
  KyXmlUnit* buffer = nullptr;
  std::uint32_t length = 0;
  const KyXmlUnit* cursor = nullptr;
  const KyXmlUnit* end = nullptr;
  KyXmlElementI* element = nullptr;

  // Character classes of every 16-bit unit.
  const std::uint8_t* classes;
  // Last place whose line was counted, so that counting stays linear.
  const KyXmlUnit* linePlace = nullptr;
  int lineNumber = 1;
  // Set when an instruction runs to the true end of the text: the read then ends with
  // an empty document, after the root as well.
  bool truncated = false;
  // Set when the plain element being read got an attribute named "xml:space".
  bool spaceNamed = false;
  std::vector<OpenElement> open;
  // Elements whose end tag never came: attached nowhere, deleted with the parser.
  std::vector<KyXmlElementI*> orphans;
  mutable KyXmlCharRef scratchReference;
  std::string valueText;
  std::string scratch;
};

#endif  // KYBASE_XML_XML_PARSER_INTERNAL_H
