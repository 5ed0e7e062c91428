#include "kybase/xml/xml_iterators.h"

KyXmlNodeIteratorI::~KyXmlNodeIteratorI() = default;

KyXmlNodeIterator::~KyXmlNodeIterator() { delete iterator; }

bool KyXmlNodeIterator::hasMoreNodes() const { return iterator != nullptr && iterator->hasMoreNodes(); }

KyXmlNodeI* KyXmlNodeIterator::getNextNode() { return iterator != nullptr ? iterator->getNextNode() : nullptr; }

bool KyXmlNodeListIterator::hasMoreNodes() const { return hasMoreElements(); }

KyXmlNodeI* KyXmlNodeListIterator::getNextNode() { return static_cast<KyXmlNodeI*>(nextElement()); }

bool KyXmlNodeArrayIterator::hasMoreNodes() const { return index < array->getLength(); }

KyXmlNodeI* KyXmlNodeArrayIterator::getNextNode() {
  if (index >= array->getLength()) return nullptr;
  return static_cast<KyXmlNodeI*>((*array)[index++]);
}

bool KyXmlNodePtrArrayIterator::hasMoreNodes() const { return index < count; }

KyXmlNodeI* KyXmlNodePtrArrayIterator::getNextNode() {
  if (index >= count) return nullptr;
  return const_cast<KyXmlNodeI*>(nodes[index++]);
}
