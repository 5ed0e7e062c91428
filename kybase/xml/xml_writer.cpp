// The writer: one write per node kind, so a subclass can change the form of one kind.
// It pretty-prints structure (line ends and indentation around elements) and leaves
// instructions and character references out.
#include <cstring>
#include <initializer_list>
#include <memory>
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

// The walk gathers the bytes of a line and hands them to the stream in one piece at
// the line end, which also flushes as every line end does. Before a node of another
// class writes through its own write, the bytes gathered so far go first.
class LineBuffer {
 public:
  explicit LineBuffer(std::ostream& stream) : stream_(stream), bytes_(new char[256]), capacity_(256) {}
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;

  void add(char byte) {
    if (size_ == capacity_) grow(1);
    bytes_[size_++] = byte;
  }
  void add(const char* text, std::size_t count) {
    if (capacity_ - size_ < count) grow(count);
    std::memcpy(bytes_.get() + size_, text, count);
    size_ += count;
  }
  void add(const char* text) {
    if (text != nullptr) add(text, std::strlen(text));
  }
  void blanks(unsigned long count) {
    if (capacity_ - size_ < count) grow(count);
    std::memset(bytes_.get() + size_, ' ', count);
    size_ += count;
  }
  // As operator<< of KyXmlString.
  void escaped(const char* at) {
    if (at == nullptr) return;
    for (;;) {
      const char* run = at;
      while (!kEscapes.stops[static_cast<unsigned char>(*at)]) ++at;
      add(run, static_cast<std::size_t>(at - run));
      switch (*at++) {
        case '&':
          add("&amp;", 5);
          break;
        case '<':
          add("&lt;", 4);
          break;
        case '>':
          add("&gt;", 4);
          break;
        default:
          return;
      }
    }
  }
  void hand() {
    Put(stream_, bytes_.get(), size_);
    size_ = 0;
  }
  void lineEnd() {
    add('\n');
    hand();
    stream_.flush();
  }
  std::ostream& stream() { return stream_; }

 private:
  void grow(std::size_t more) {
    std::size_t capacity = capacity_ * 2;
    while (capacity - size_ < more) capacity *= 2;
    std::unique_ptr<char[]> bytes(new char[capacity]);
    std::memcpy(bytes.get(), bytes_.get(), size_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
  }

  std::ostream& stream_;
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_;
};

void OpenPlainTag(const KyXmlElement& element, LineBuffer& line) {
  line.blanks(KyXmlElementI::GetIndent());
  line.add('<');
  line.add(element.getTag());
  for (Ky_List::Cell* cell = const_cast<KyXmlElement&>(element).getAttributes().getFirst(); cell != nullptr;
       cell = cell->getNext()) {
    auto* attribute = static_cast<KyXmlAttributeI*>(cell->getValue());
    line.add(' ');
    if (attribute == nullptr) continue;
    if (typeid(*attribute) == typeid(KyXmlAttribute)) {
      line.add(attribute->getName());
      line.add('=');
      line.add('"');
      line.escaped(attribute->getValue());
      line.add('"');
    } else {
      line.hand();
      attribute->write(line.stream());
    }
  }
}

void ClosePlainTag(const KyXmlElement& element, bool hadChildren, LineBuffer& line) {
  if (hadChildren) {
    line.blanks(KyXmlElementI::GetIndent());
    line.add('<');
    line.add('/');
    line.add(element.getTag());
    line.add('>');
  } else {
    line.add('/');
    line.add('>');
  }
  line.lineEnd();
}

}  // namespace

std::ostream& KyXmlElementI::write(std::ostream& stream) const {
  if (!IsPlainElement(*this)) {
    OpenTag(*this, stream);
    IndentMore();
    bool hadChildren = writeChildren(stream);
    IndentLess();
    CloseTag(*this, hadChildren, stream);
    return stream;
  }
  auto* self = static_cast<const KyXmlElement*>(this);
  LineBuffer line(stream);
  OpenPlainTag(*self, line);
  IndentMore();
  std::vector<OpenElement> open{{self, FirstChild(self), false}};
  while (!open.empty()) {
    OpenElement& top = open.back();
    if (top.next == nullptr) {
      const KyXmlElement* done = top.element;
      bool hadChildren = top.hadChildren;
      open.pop_back();
      IndentLess();
      ClosePlainTag(*done, hadChildren, line);
      continue;
    }
    auto* child = static_cast<KyXmlNodeI*>(top.next->getValue());
    top.next = top.next->getNext();
    if (!top.hadChildren) {
      line.add('>');
      line.lineEnd();
      top.hadChildren = true;
    }
    if (child == nullptr) continue;
    // The exact class decides: a KyXmlText or a KyXmlElement writes as its interface does.
    const std::type_info& type = typeid(*child);
    if (type == typeid(KyXmlText)) {
      line.escaped(static_cast<const KyXmlText*>(child)->getText());
    } else if (type == typeid(KyXmlElement)) {
      auto* element = static_cast<const KyXmlElement*>(child);
      OpenPlainTag(*element, line);
      IndentMore();
      open.push_back({element, FirstChild(element), false});
    } else {
      line.hand();
      child->write(stream);
    }
  }
  line.hand();
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
