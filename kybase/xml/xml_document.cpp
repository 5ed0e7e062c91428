#include "kybase/xml/xml_document.h"

#include "kybase/xml/xml_factory.h"
#include "kybase/xml/xml_iterators.h"
#include "kybase/xml/xml_tree_internal.h"

KyXmlDocumentI::~KyXmlDocumentI() = default;

void KyXmlDocumentI::startElement(KyXmlElementI*) {}
void KyXmlDocumentI::attributeAdded(KyXmlElementI*, KyXmlAttributeI*) {}
void KyXmlDocumentI::endElement(KyXmlElementI*) {}
void KyXmlDocumentI::textAdded(KyXmlTextI*) {}
void KyXmlDocumentI::commentAdded(KyXmlCommentI*) {}
void KyXmlDocumentI::charRefAdded(KyXmlCharRefI*) {}
void KyXmlDocumentI::processingInstructionAdded(KyXmlPII*) {}
void KyXmlDocumentI::cDataAdded(KyXmlCDataI*) {}

// Each create... asks the factory first; the concrete node is the fallback.

KyXmlAttributeI* KyXmlDocumentI::createAttribute(KyXmlElementI* element, char* name, char* value) const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlAttributeI* made = factory->createAttribute(element, name, value)) return made;
  if (element != nullptr)
    if (KyXmlAttributeI* made = element->createAttribute(name, value)) return made;
  auto* attribute = new KyXmlAttribute;
  attribute->storeName(name);
  attribute->storeValue(value);
  return attribute;
}

KyXmlElementI* KyXmlDocumentI::createElement(char* tag) const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlElementI* made = factory->createElement(tag)) return made;
  auto* element = new KyXmlElement;
  element->storeTag(tag);
  return element;
}

KyXmlTextI* KyXmlDocumentI::createText() const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlTextI* made = factory->createText()) return made;
  return new KyXmlText;
}

KyXmlCommentI* KyXmlDocumentI::createComment() const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlCommentI* made = factory->createComment()) return made;
  return new KyXmlComment;
}

KyXmlCharRefI* KyXmlDocumentI::createCharRef() const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlCharRefI* made = factory->createCharRef()) return made;
  return new KyXmlCharRef;
}

KyXmlPII* KyXmlDocumentI::createPI() const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlPII* made = factory->createPI()) return made;
  return new KyXmlPI;
}

KyXmlCDataI* KyXmlDocumentI::createCData() const {
  if (KyXmlNodeFactory* factory = getNodeFactory())
    if (KyXmlCDataI* made = factory->createCData()) return made;
  return new KyXmlCData;
}

KyXmlNodeFactory* KyXmlDocumentI::getNodeFactory() const { return nullptr; }
const char* KyXmlDocumentI::getVersion() const { return "1.0"; }
const char* KyXmlDocumentI::getDoctypeName() const { return nullptr; }
const char* KyXmlDocumentI::getDoctypeRest() const { return nullptr; }
void KyXmlDocumentI::empty() {}
KyXmlNodeIteratorI* KyXmlDocumentI::createNodesIterator() const { return nullptr; }

void KyXmlDocumentI::storeVersion(char* version) { delete[] version; }

void KyXmlDocumentI::storeDoctype(char* name, char* rest) {
  delete[] name;
  delete[] rest;
}

KyXmlDocument::~KyXmlDocument() {
  delete[] version;
  delete[] doctypeName;
  delete[] doctypeRest;
  KyXmlDeleteNodes(nodes);
}

void KyXmlDocument::addNode(KyXmlNodeI* node) {
  if (node != nullptr) nodes.append(node);
}

const char* KyXmlDocument::getVersion() const { return version != nullptr ? version : "1.0"; }

void KyXmlDocument::empty() { KyXmlDeleteNodes(nodes); }

KyXmlNodeIteratorI* KyXmlDocument::createNodesIterator() const { return new KyXmlNodeListIterator(nodes); }

KyXmlElement* KyXmlDocument::getRootElement() const {
  for (Ky_List::Cell* cell = nodes.getFirst(); cell != nullptr; cell = cell->getNext()) {
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    if (node->getType() == KyXmlNodeI::Element) return dynamic_cast<KyXmlElement*>(node);
  }
  return nullptr;
}

void KyXmlDocument::storeVersion(char* newVersion) { version = newVersion; }

void KyXmlDocument::storeDoctype(char* name, char* rest) {
  doctypeName = name;
  doctypeRest = rest;
}
