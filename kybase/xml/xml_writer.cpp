// The writer: one write per node kind, so a subclass can change the form of one kind.
// It pretty-prints structure (line ends and indentation around elements) and leaves
// instructions and character references out.
#include <cstring>
#include <ostream>
#include <typeinfo>
#include <vector>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_iterators.h"
#include "kybase/xml/xml_node.h"

namespace {

// A line end flushes, so a reader of a pipe sees each line as it is made.
void LineEnd(std::ostream& stream) {
  stream.put('\n');
  stream.flush();
}

void Blanks(std::ostream& stream, unsigned long count) {
  static const char kBlanks[] = "                                                                ";
  constexpr unsigned long kChunk = sizeof(kBlanks) - 1;
  for (; count > kChunk; count -= kChunk) stream.write(kBlanks, kChunk);
  stream.write(kBlanks, static_cast<std::streamsize>(count));
}

void Raw(std::ostream& stream, const char* text) {
  if (text != nullptr) stream.write(text, static_cast<std::streamsize>(std::strlen(text)));
}

bool IsPlainElement(const KyXmlNodeI& node) { return typeid(node) == typeid(KyXmlElement); }

}  // namespace

std::ostream& operator<<(std::ostream& stream, const KyXmlString& string) {
  const char* text = string.text;
  if (text == nullptr) return stream;
  const char* run = text;
  const char* at = text;
  for (; *at != '\0'; ++at) {
    const char* escape;
    switch (*at) {
      case '&':
        escape = "&amp;";
        break;
      case '<':
        escape = "&lt;";
        break;
      case '>':
        escape = "&gt;";
        break;
      default:
        continue;
    }
    stream.write(run, at - run);
    Raw(stream, escape);
    run = at + 1;
  }
  stream.write(run, at - run);
  return stream;
}

std::ostream& KyXmlDocumentI::write(std::ostream& stream) const {
  stream << "<?xml version=\"";
  Raw(stream, getVersion());
  stream << "\"?>";
  LineEnd(stream);
  if (const char* name = getDoctypeName()) {
    stream << "<!DOCTYPE ";
    Raw(stream, name);
    if (const char* rest = getDoctypeRest()) {
      stream.put(' ');
      Raw(stream, rest);
    }
    stream.put('>');
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
  stream.put('<');
  Raw(stream, element.getTag());
  element.writeAttributes(stream);
}

void CloseTag(const KyXmlElementI& element, bool hadChildren, std::ostream& stream) {
  if (hadChildren) {
    Blanks(stream, KyXmlElementI::GetIndent());
    stream << "</";
    Raw(stream, element.getTag());
    stream.put('>');
  } else {
    stream << "/>";
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
      stream.put('>');
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
    stream.put(' ');
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
      stream.put('>');
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
  stream << "=\"" << KyXmlString(value) << '"';
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
  stream << "<!--";
  Raw(stream, getComment());
  stream << "-->";
  LineEnd(stream);
  return stream;
}

std::ostream& KyXmlCDataI::write(std::ostream& stream) const {
  stream << "<![CDATA[";
  Raw(stream, getData());
  stream << "]]>";
  LineEnd(stream);
  return stream;
}

std::ostream& KyXmlPII::write(std::ostream& stream) const { return stream; }

std::ostream& KyXmlCharRefI::write(std::ostream& stream) const { return stream; }
