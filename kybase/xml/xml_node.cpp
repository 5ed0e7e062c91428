#include "kybase/xml/xml_node.h"

#include <cstring>
#include <new>
#include <vector>

#include "kybase/core/memory_manager.h"

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_iterators.h"
#include "kybase/xml/xml_text_internal.h"
#include "kybase/xml/xml_tree_internal.h"

unsigned long KyXmlElementI::_indent = 0;
unsigned long KyXmlElementI::_indentation = 2;

namespace {

bool SameText(const char* a, const char* b) { return a != nullptr && b != nullptr && std::strcmp(a, b) == 0; }

}  // namespace

void KyXmlDeleteNodes(Ky_List& nodes) {
  // The elements whose children are being deleted, each with the place to go on from
  // in its parent's list once it is done.
  struct Level {
    KyXmlElement* parent;
    Ky_List::Cell* next;
  };
  std::vector<Level> levels;
  KyXmlElement* parent = nullptr;
  Ky_List::Cell* next = nodes.getFirst();
  for (;;) {
    if (next == nullptr) {
      if (levels.empty()) break;
      parent->getChildren().empty();
      delete parent;
      parent = levels.back().parent;
      next = levels.back().next;
      levels.pop_back();
      continue;
    }
    auto* node = static_cast<KyXmlNodeI*>(next->getValue());
    next = next->getNext();
    if (node == nullptr) continue;
    auto* element = node->getType() == KyXmlNodeI::Element ? dynamic_cast<KyXmlElement*>(node) : nullptr;
    if (element != nullptr && element->getChildren().getFirst() != nullptr) {
      levels.push_back({parent, next});
      parent = element;
      next = element->getChildren().getFirst();
      continue;
    }
    delete node;
  }
  nodes.empty();
}

KyXmlNodeI::~KyXmlNodeI() = default;

// Interface defaults of the leaves: the type, and set... as copy-then-store.

KyXmlNodeI::Type KyXmlAttributeI::getType() const { return Attribute; }
void KyXmlAttributeI::setName(const char* name) { storeName(KyXmlCopyText(name)); }
void KyXmlAttributeI::setValue(const char* value) { storeValue(KyXmlCopyText(value)); }

KyXmlNodeI::Type KyXmlCommentI::getType() const { return Comment; }
void KyXmlCommentI::setComment(const char* text) { storeComment(KyXmlCopyText(text)); }

KyXmlNodeI::Type KyXmlTextI::getType() const { return Text; }
void KyXmlTextI::setText(const char* text) { storeText(KyXmlCopyText(text)); }

KyXmlNodeI::Type KyXmlPII::getType() const { return PI; }
void KyXmlPII::setTarget(const char* target) { storeTarget(KyXmlCopyText(target)); }
void KyXmlPII::setData(const char* data) { storeData(KyXmlCopyText(data)); }

KyXmlNodeI::Type KyXmlCDataI::getType() const { return CData; }
void KyXmlCDataI::setData(const char* data) { storeData(KyXmlCopyText(data)); }

KyXmlNodeI::Type KyXmlCharRefI::getType() const { return CharRef; }
void KyXmlCharRefI::setRefName(const char* name) {
  setRefCode(-1);
  storeRefName(KyXmlCopyText(name));
}

// Element interface defaults: keep nothing, dispose of what is handed over.

KyXmlNodeI::Type KyXmlElementI::getType() const { return Element; }
void KyXmlElementI::setTag(const char* tag) { storeTag(KyXmlCopyText(tag)); }
void KyXmlElementI::storeTag(char* tag) { delete[] tag; }
void KyXmlElementI::addChild(KyXmlNodeI* node) { delete node; }

void KyXmlElementI::storeAttribute(KyXmlDocumentI* document, char* name, char* value) {
  KyXmlAttributeI* attribute = document->createAttribute(this, name, value);
  if (attribute == nullptr) return;
  document->attributeAdded(this, attribute);
  addAttribute(attribute);
}

KyXmlElementI* KyXmlElementI::createChildElement(char*) const { return nullptr; }
KyXmlAttributeI* KyXmlElementI::createAttribute(char*, char*) const { return nullptr; }
void KyXmlElementI::addAttribute(KyXmlAttributeI* attribute) { delete attribute; }

KyXmlAttributeI* KyXmlElementI::getAttribute(const char* name) const {
  KyXmlNodeIteratorI* iterator = createAttributesIterator();
  if (iterator == nullptr) return nullptr;
  KyXmlAttributeI* found = nullptr;
  while (found == nullptr && iterator->hasMoreNodes()) {
    auto* attribute = static_cast<KyXmlAttributeI*>(iterator->getNextNode());
    if (attribute != nullptr && SameText(attribute->getName(), name)) found = attribute;
  }
  delete iterator;
  return found;
}

bool KyXmlElementI::doesPreserveWhiteSpaces() const { return false; }
void KyXmlElementI::preserveWhiteSpaces(bool) {}
const char* KyXmlElementI::getText() const { return nullptr; }
KyXmlNodeIteratorI* KyXmlElementI::createChildrenIterator() const { return nullptr; }
KyXmlNodeIteratorI* KyXmlElementI::createAttributesIterator() const { return nullptr; }

const char* KyXmlElementI::getAttributeValue(const char* name) const {
  KyXmlAttributeI* attribute = getAttribute(name);
  return attribute != nullptr ? attribute->getValue() : nullptr;
}

// Concrete leaves. Their objects are small and made and dropped by the thousand in a
// read, so they come from the memory manager's cells.

namespace {

// The manager outlives its own destruction as an object that sends requests to the
// heap and ignores releases, so the reference stays good for late destructors.
KyMemoryManager& Manager() {
  static KyMemoryManager& manager = KyMemoryManager::GetInstance();
  return manager;
}

void* NodeAlloc(std::size_t size) {
  void* memory = Manager().alloc(static_cast<unsigned int>(size));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void NodeRelease(void* pointer, std::size_t size) { Manager().release(pointer, static_cast<unsigned int>(size)); }

}  // namespace

#define KY_XML_NODE_MEMORY(Node)                                                  \
  void* Node::operator new(std::size_t size) { return NodeAlloc(size); }          \
  void Node::operator delete(void* pointer, std::size_t size) { NodeRelease(pointer, size); }

KY_XML_NODE_MEMORY(KyXmlAttribute)
KY_XML_NODE_MEMORY(KyXmlComment)
KY_XML_NODE_MEMORY(KyXmlText)
KY_XML_NODE_MEMORY(KyXmlCData)
KY_XML_NODE_MEMORY(KyXmlPI)
KY_XML_NODE_MEMORY(KyXmlCharRef)

#undef KY_XML_NODE_MEMORY

KyXmlAttribute::KyXmlAttribute(const char* name, const char* value)
    : name(KyXmlCopyText(name)), value(KyXmlCopyText(value)) {}

KyXmlAttribute::~KyXmlAttribute() {
  delete[] name;
  delete[] value;
}

void KyXmlAttribute::storeName(char* newName) {
  delete[] name;
  name = newName;
}

void KyXmlAttribute::storeValue(char* newValue) {
  delete[] value;
  value = newValue;
}

KyXmlComment::~KyXmlComment() { delete[] text; }

void KyXmlComment::storeComment(char* newText) {
  delete[] text;
  text = newText;
}

KyXmlText::~KyXmlText() { delete[] text; }

void KyXmlText::storeText(char* newText) {
  delete[] text;
  text = newText;
}

void KyXmlText::appendText(const char* more) {
  if (text == nullptr) {
    setText(more);
    return;
  }
  if (more == nullptr) return;
  std::size_t oldSize = std::strlen(text);
  std::size_t moreSize = std::strlen(more);
  char* joined = new char[oldSize + moreSize + 1];
  std::memcpy(joined, text, oldSize);
  std::memcpy(joined + oldSize, more, moreSize + 1);
  delete[] text;
  text = joined;
}

KyXmlCData::~KyXmlCData() { delete[] data; }

void KyXmlCData::storeData(char* newData) {
  delete[] data;
  data = newData;
}

KyXmlPI::~KyXmlPI() { delete[] data; }

void KyXmlPI::storeTarget(char* newTarget) { target = newTarget; }

void KyXmlPI::storeData(char* newData) {
  delete[] data;
  data = newData;
}

KyXmlCharRef::~KyXmlCharRef() { delete[] name; }

void KyXmlCharRef::setRefCode(int newCode) {
  storeRefName(nullptr);
  code = newCode;
}

void KyXmlCharRef::storeRefName(char* newName) {
  delete[] name;
  name = newName;
  code = -1;
}

// Concrete element.

KyXmlElement::KyXmlElement(const char* tag) : tag(KyXmlCopyText(tag)) {}

KyXmlElement::~KyXmlElement() {
  delete[] tag;
  for (Ky_List::Cell* cell = attributes.getFirst(); cell != nullptr; cell = cell->getNext())
    delete static_cast<KyXmlAttributeI*>(cell->getValue());
  attributes.empty();
  KyXmlDeleteNodes(children);
}

void KyXmlElement::storeTag(char* newTag) {
  delete[] tag;
  tag = newTag;
}

void KyXmlElement::addChild(KyXmlNodeI* node) {
  if (node != nullptr) children.append(node);
}

void KyXmlElement::addAttribute(KyXmlAttributeI* attribute) {
  if (attribute != nullptr) attributes.append(attribute);
}

KyXmlAttributeI* KyXmlElement::getAttribute(const char* name) const {
  for (Ky_List::Cell* cell = attributes.getFirst(); cell != nullptr; cell = cell->getNext()) {
    auto* attribute = static_cast<KyXmlAttributeI*>(cell->getValue());
    if (SameText(attribute->getName(), name)) return attribute;
  }
  return nullptr;
}

const char* KyXmlElement::getText() const {
  for (Ky_List::Cell* cell = children.getFirst(); cell != nullptr; cell = cell->getNext()) {
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    if (node->getType() == Text) return static_cast<KyXmlTextI*>(node)->getText();
  }
  return nullptr;
}

KyXmlNodeIteratorI* KyXmlElement::createChildrenIterator() const { return new KyXmlNodeListIterator(children); }

KyXmlNodeIteratorI* KyXmlElement::createAttributesIterator() const { return new KyXmlNodeListIterator(attributes); }

KyXmlElement* KyXmlElement::getElement(const char* wanted, KyXmlNodeI* after) const {
  Ky_List::Cell* cell = children.getFirst();
  if (after != nullptr) {
    while (cell != nullptr && cell->getValue() != after) cell = cell->getNext();
    if (cell == nullptr) return nullptr;
    cell = cell->getNext();
  }
  for (; cell != nullptr; cell = cell->getNext()) {
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    if (node->getType() == Element && SameText(static_cast<KyXmlElementI*>(node)->getTag(), wanted))
      return dynamic_cast<KyXmlElement*>(node);
  }
  return nullptr;
}
