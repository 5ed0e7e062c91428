// The writer: one write per node kind, so a subclass can change the form of one kind.
// It pretty-prints structure (line ends and indentation around elements) and leaves
// instructions and character references out.
#include <cstring>
#include <initializer_list>
#include <ostream>
#include <typeinfo>
#include <vector>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_iterators.h"
#include "kybase/xml/xml_node.h"

namespace {

// Bytes go straight to the stream's buffer; as with the stream's own output, nothing
// is written once the stream has failed, and a short write marks it bad.
void Put(std::ostream& stream, const char* bytes, std::size_t size) {
  if (size == 0 || !stream.good()) return;
  auto wanted = static_cast<std::streamsize>(size);
  if (stream.rdbuf()->sputn(bytes, wanted) != wanted) stream.setstate(std::ios::badbit);
}

void Put(std::ostream& stream, char byte) { Put(stream, &byte, 1); }

template <std::size_t N>
void Put(std::ostream& stream, const char (&literal)[N]) {
  Put(stream, literal, N - 1);
}

// A line end flushes, so a reader of a pipe sees each line as it is made.
void LineEnd(std::ostream& stream) {
  Put(stream, '\n');
  stream.flush();
}

void Blanks(std::ostream& stream, unsigned long count) {
  static const char kBlanks[] = "                                                                ";
  constexpr unsigned long kChunk = sizeof(kBlanks) - 1;
  for (; count > kChunk; count -= kChunk) Put(stream, kBlanks, kChunk);
  Put(stream, kBlanks, count);
}

void Raw(std::ostream& stream, const char* text) {
  if (text != nullptr) Put(stream, text, std::strlen(text));
}

bool IsPlainElement(const KyXmlNodeI& node) {
  return node.getType() == KyXmlNodeI::Element && typeid(node) == typeid(KyXmlElement);
}

// The bytes that the escaping writer replaces, and the end of a text.
struct EscapeTable {
  bool stops[256] = {};
  EscapeTable() {
    for (unsigned char c : {'\0', '&', '<', '>'}) stops[c] = true;
  }
};

const EscapeTable kEscapes;

}  // namespace

std::ostream& operator<<(std::ostream& stream, const KyXmlString& string) {
  const char* at = string.text;
  if (at == nullptr) return stream;
  for (;;) {
    const char* run = at;
    while (!kEscapes.stops[static_cast<unsigned char>(*at)]) ++at;
    Put(stream, run, static_cast<std::size_t>(at - run));
    switch (*at++) {
      case '&':
        Put(stream, "&amp;");
        break;
      case '<':
        Put(stream, "&lt;");
        break;
      case '>':
        Put(stream, "&gt;");
        break;
      default:
        return stream;
    }
  }
}

std::ostream& KyXmlDocumentI::write(std::ostream& stream) const {
  Put(stream, "<?xml version=\"");
  Raw(stream, getVersion());
  Put(stream, "\"?>");
  LineEnd(stream);
  if (const char* name = getDoctypeName()) {
    Put(stream, "<!DOCTYPE ");
    Raw(stream, name);
    if (const char* rest = getDoctypeRest()) {
      Put(stream, ' ');
      Raw(stream, rest);
    }
    Put(stream, '>');
    LineEnd(stream);
  }
  KyXmlElementI::ResetIndent();
  writeNodes(stream);
  return stream;
}

void KyXmlDocumentI::writeNodes(std::ostream& stream) const {
  KyXmlNodeIteratorI* iterator = createNodesIterator();
  if (iterator == nullptr) return;
  while (iterator->hasMoreNodes())
    if (KyXmlNodeI* node = iterator->getNextNode()) node->write(stream);
  delete iterator;
}

namespace {

void OpenTag(const KyXmlElementI& element, std::ostream& stream) {
  Blanks(stream, KyXmlElementI::GetIndent());
  Put(stream, '<');
  Raw(stream, element.getTag());
  element.writeAttributes(stream);
}

void CloseTag(const KyXmlElementI& element, bool hadChildren, std::ostream& stream) {
  if (hadChildren) {
    Blanks(stream, KyXmlElementI::GetIndent());
    Put(stream, "</");
    Raw(stream, element.getTag());
    Put(stream, '>');
  } else {
    Put(stream, "/>");
  }
  LineEnd(stream);
}

// A plain KyXmlElement writes its children as writeChildren does, so a subtree of
// plain elements is walked with a stack of open elements instead of by recursion;
// any other node is written through its own write.
struct OpenElement {
  const KyXmlElement* element;
  Ky_List::Cell* next;
  bool hadChildren;
};

Ky_List::Cell* FirstChild(const KyXmlElement* element) {
  return const_cast<KyXmlElement*>(element)->getChildren().getFirst();
}

}  // namespace

std::ostream& KyXmlElementI::write(std::ostream& stream) const {
  OpenTag(*this, stream);
  IndentMore();
  if (!IsPlainElement(*this)) {
    bool hadChildren = writeChildren(stream);
    IndentLess();
    CloseTag(*this, hadChildren, stream);
    return stream;
  }
  auto* self = static_cast<const KyXmlElement*>(this);
  std::vector<OpenElement> open{{self, FirstChild(self), false}};
  while (!open.empty()) {
    OpenElement& top = open.back();
    if (top.next == nullptr) {
      const KyXmlElement* done = top.element;
      bool hadChildren = top.hadChildren;
      open.pop_back();
      IndentLess();
      CloseTag(*done, hadChildren, stream);
      continue;
    }
    auto* child = static_cast<KyXmlNodeI*>(top.next->getValue());
    top.next = top.next->getNext();
    if (!top.hadChildren) {
      Put(stream, '>');
      LineEnd(stream);
      top.hadChildren = true;
    }
    if (child == nullptr) continue;
    if (IsPlainElement(*child)) {
      auto* element = static_cast<const KyXmlElement*>(child);
      OpenTag(*element, stream);
      IndentMore();
      open.push_back({element, FirstChild(element), false});
    } else {
      child->write(stream);
    }
  }
  return stream;
}

void KyXmlElementI::writeAttributes(std::ostream& stream) const {
  KyXmlNodeIteratorI* iterator = createAttributesIterator();
  if (iterator == nullptr) return;
  while (iterator->hasMoreNodes()) {
    KyXmlNodeI* attribute = iterator->getNextNode();
    Put(stream, ' ');
    if (attribute != nullptr) attribute->write(stream);
  }
  delete iterator;
}

bool KyXmlElementI::writeChildren(std::ostream& stream) const {
  KyXmlNodeIteratorI* iterator = createChildrenIterator();
  if (iterator == nullptr) return false;
  bool wrote = false;
  while (iterator->hasMoreNodes()) {
    KyXmlNodeI* child = iterator->getNextNode();
    if (!wrote) {
      Put(stream, '>');
      LineEnd(stream);
      wrote = true;
    }
    if (child != nullptr) child->write(stream);
  }
  delete iterator;
  return wrote;
}

std::ostream& KyXmlAttributeI::write(std::ostream& stream) const {
  Write(stream, getName(), getValue());
  return stream;
}

void KyXmlAttributeI::Write(std::ostream& stream, const char* name, const char* value) {
  Raw(stream, name);
  Put(stream, "=\"");
  stream << KyXmlString(value);
  Put(stream, '"');
}

void KyXmlAttributeI::Write(std::ostream& stream, const char* name, long value) {
  Raw(stream, name);
  stream << "=\"" << value << '"';
}

void KyXmlAttributeI::Write(std::ostream& stream, const char* name, double value) {
  Raw(stream, name);
  stream << "=\"" << value << '"';
}

std::ostream& KyXmlTextI::write(std::ostream& stream) const { return stream << KyXmlString(getText()); }

std::ostream& KyXmlCommentI::write(std::ostream& stream) const {
  Put(stream, "<!--");
  Raw(stream, getComment());
  Put(stream, "-->");
  LineEnd(stream);
  return stream;
}

std::ostream& KyXmlCDataI::write(std::ostream& stream) const {
  Put(stream, "<![CDATA[");
  Raw(stream, getData());
  Put(stream, "]]>");
  LineEnd(stream);
  return stream;
}

std::ostream& KyXmlPII::write(std::ostream& stream) const { return stream; }

std::ostream& KyXmlCharRefI::write(std::ostream& stream) const { return stream; }
