#include "kybase/xml/xml_node.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <typeinfo>
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

namespace {

// True when `node` is one of the library's own concrete nodes, whose destructors do
// nothing a caller could see but release memory. Type information is compared by
// address: the objects of these classes live in this library, and a miss only costs
// the faster order.
bool IsOwnNode(const KyXmlNodeI* node) {
  if (node == nullptr) return true;
  const std::type_info* type = &typeid(*node);
  return type == &typeid(KyXmlText) || type == &typeid(KyXmlElement) || type == &typeid(KyXmlAttribute) ||
         type == &typeid(KyXmlCharRef) || type == &typeid(KyXmlComment) || type == &typeid(KyXmlCData) ||
         type == &typeid(KyXmlPI);
}

// Releases one cell taken from the chain of `list`: the list's first cell through the
// list itself, which also resets the list and sends its safe iterators to the end.
void ReleaseCell(Ky_List& list, Ky_List::Cell* cell) {
  cell->setNext(nullptr);
  if (cell == list.getFirst())
    list.empty();
  else
    delete cell;
}

// Memory is given back best in the reverse order of its taking: the manager's free
// lists and the heap's bins then hand it out again in the order of the first build,
// which keeps the next read as sequential in memory as the first. A teardown therefore
// takes the cells of a list in runs of up to kRun, and deletes each run from its end;
// a run that holds a node of another class keeps list order, as that node's destructor
// may be watched. A long list is touched once per run, while the run is in the cache.
constexpr int kRun = 256;

// The cells of the run that starts at `cell`, pushed so that popping from the back of
// `pending` gives them in deletion order; returns the cell after the run.
Ky_List::Cell* PushRun(Ky_List::Cell* cell, std::vector<Ky_List::Cell*>& pending) {
  std::size_t base = pending.size();
  // The nodes are fetched while the chain is walked, and looked at after it.
  for (int taken = 0; cell != nullptr && taken < kRun; ++taken, cell = cell->getNext()) {
    pending.push_back(cell);
    __builtin_prefetch(cell->getValue());
  }
  auto first = pending.begin() + static_cast<std::ptrdiff_t>(base);
  bool own = std::all_of(first, pending.end(),
                         [](Ky_List::Cell* taken) { return IsOwnNode(static_cast<KyXmlNodeI*>(taken->getValue())); });
  if (!own) std::reverse(first, pending.end());
  return cell;
}

void DeleteAttributes(KyXmlElement* element, std::vector<Ky_List::Cell*>& pending) {
  Ky_List& list = element->getAttributes();
  std::size_t base = pending.size();
  for (Ky_List::Cell* rest = list.getFirst(); rest != nullptr || pending.size() > base;) {
    if (pending.size() == base) rest = PushRun(rest, pending);
    Ky_List::Cell* cell = pending.back();
    pending.pop_back();
    auto* attribute = static_cast<KyXmlAttributeI*>(cell->getValue());
    ReleaseCell(list, cell);
    delete attribute;
  }
}

}  // namespace

void KyXmlDeleteNodes(Ky_List& nodes) {
  // The elements whose children are being deleted, each with its parent's list, the
  // start of that list's pending cells and the cells after its current run.
  struct Level {
    KyXmlElement* element;
    Ky_List* list;
    std::size_t base;
    Ky_List::Cell* rest;
  };
  std::vector<Level> levels;
  std::vector<Ky_List::Cell*> pending;
  Level level{nullptr, &nodes, 0, nodes.getFirst()};
  for (;;) {
    if (pending.size() == level.base) {
      if (level.rest != nullptr) {
        level.rest = PushRun(level.rest, pending);
        continue;
      }
      if (levels.empty()) break;
      // Attributes of a derived element stay for its own destructor, which may use them.
      if (&typeid(*level.element) == &typeid(KyXmlElement)) DeleteAttributes(level.element, pending);
      delete level.element;
      level = levels.back();
      levels.pop_back();
      continue;
    }
    Ky_List::Cell* cell = pending.back();
    pending.pop_back();
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    ReleaseCell(*level.list, cell);
    KyXmlElement* child = nullptr;
    if (node != nullptr && node->getType() == KyXmlNodeI::Element)
      child = &typeid(*node) == &typeid(KyXmlElement) ? static_cast<KyXmlElement*>(node) : dynamic_cast<KyXmlElement*>(node);
    if (child != nullptr) {
      levels.push_back(level);
      level = Level{child, &child->getChildren(), pending.size(), child->getChildren().getFirst()};
      continue;
    }
    delete node;
  }
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

// Copies take the node's buffer along, so the copy constructors assign.
KyXmlAttribute::KyXmlAttribute(const KyXmlAttribute& other) : KyXmlAttributeI(other) { *this = other; }

KyXmlAttribute& KyXmlAttribute::operator=(const KyXmlAttribute& other) {
  if (this == &other) return *this;
  KyXmlAttributeI::operator=(other);
  std::memcpy(local, other.local, sizeof local);
  name = KyXmlCopiedText(other.name, other.local, local, sizeof local);
  value = KyXmlCopiedText(other.value, other.local, local, sizeof local);
  return *this;
}

KyXmlAttribute::~KyXmlAttribute() {
  KyXmlFreeText(value, local, sizeof local);
  KyXmlFreeText(name, local, sizeof local);
}

void KyXmlAttribute::storeName(char* newName) {
  KyXmlFreeText(name, local, sizeof local);
  name = newName;
}

void KyXmlAttribute::storeValue(char* newValue) {
  KyXmlFreeText(value, local, sizeof local);
  value = newValue;
}

KyXmlComment::~KyXmlComment() { delete[] text; }

void KyXmlComment::storeComment(char* newText) {
  delete[] text;
  text = newText;
}

KyXmlText::KyXmlText(const KyXmlText& other) : KyXmlTextI(other) { *this = other; }

KyXmlText& KyXmlText::operator=(const KyXmlText& other) {
  if (this == &other) return *this;
  KyXmlTextI::operator=(other);
  std::memcpy(local, other.local, sizeof local);
  text = KyXmlCopiedText(other.text, other.local, local, sizeof local);
  return *this;
}

KyXmlText::~KyXmlText() { KyXmlFreeText(text, local, sizeof local); }

void KyXmlText::storeText(char* newText) {
  KyXmlFreeText(text, local, sizeof local);
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
  KyXmlFreeText(text, local, sizeof local);
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

KyXmlCharRef::KyXmlCharRef(const KyXmlCharRef& other) : KyXmlCharRefI(other) { *this = other; }

KyXmlCharRef& KyXmlCharRef::operator=(const KyXmlCharRef& other) {
  if (this == &other) return *this;
  KyXmlCharRefI::operator=(other);
  code = other.code;
  std::memcpy(local, other.local, sizeof local);
  name = KyXmlCopiedText(other.name, other.local, local, sizeof local);
  return *this;
}

KyXmlCharRef::~KyXmlCharRef() { KyXmlFreeText(name, local, sizeof local); }

void KyXmlCharRef::setRefCode(int newCode) {
  storeRefName(nullptr);
  code = newCode;
}

void KyXmlCharRef::storeRefName(char* newName) {
  KyXmlFreeText(name, local, sizeof local);
  name = newName;
  code = -1;
}

// Concrete element.

KyXmlElement::KyXmlElement(const char* tag) : tag(KyXmlCopyText(tag)) {}

KyXmlElement::KyXmlElement(const KyXmlElement& other) : KyXmlElementI(other) { *this = other; }

KyXmlElement& KyXmlElement::operator=(const KyXmlElement& other) {
  if (this == &other) return *this;
  KyXmlElementI::operator=(other);
  children = other.children;
  attributes = other.attributes;
  preserve = other.preserve;
  std::memcpy(local, other.local, sizeof local);
  tag = KyXmlCopiedText(other.tag, other.local, local, sizeof local);
  return *this;
}

KyXmlElement::~KyXmlElement() {
  KyXmlFreeText(tag, local, sizeof local);
  for (Ky_List::Cell* cell = attributes.getFirst(); cell != nullptr; cell = cell->getNext())
    delete static_cast<KyXmlAttributeI*>(cell->getValue());
  attributes.empty();
  KyXmlDeleteNodes(children);
}

void KyXmlElement::storeTag(char* newTag) {
  KyXmlFreeText(tag, local, sizeof local);
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
