// Iterators over XML nodes: one interface, KyXmlNodeIteratorI, and four forms. The
// list form walks the cells of a Ky_List (the children, attributes or top-level nodes
// of the concrete classes), the two array forms walk a KyArray or a plain array of
// pointers, and KyXmlNodeIterator wraps another iterator, which it owns, and answers
// "no more" when it wraps none.
//
// An iterator borrows what it walks: the list or array must outlive it and must not
// lose the cell the iterator stands on. Every iterator returned by a create...Iterator
// operation is new and the caller deletes it. getNextNode() gives null at the end.
#ifndef KYBASE_XML_XML_ITERATORS_H
#define KYBASE_XML_XML_ITERATORS_H

#include "kybase/containers/array.h"
#include "kybase/containers/list.h"
#include "kybase/core/export.h"

class KyXmlNodeI;

class KY_EXPORT KyXmlNodeIteratorI {
 public:
  KyXmlNodeIteratorI() = default;
  KyXmlNodeIteratorI(const KyXmlNodeIteratorI&) = default;
  KyXmlNodeIteratorI& operator=(const KyXmlNodeIteratorI&) = default;
  virtual ~KyXmlNodeIteratorI();

  virtual bool hasMoreNodes() const = 0;
  virtual KyXmlNodeI* getNextNode() = 0;
};

class KY_EXPORT KyXmlNodeIterator : public KyXmlNodeIteratorI {
 public:
  // Takes ownership of `iterator`, which may be null.
  explicit KyXmlNodeIterator(KyXmlNodeIteratorI* iterator) : iterator(iterator) {}
  KyXmlNodeIterator(const KyXmlNodeIterator&) = default;
  KyXmlNodeIterator& operator=(const KyXmlNodeIterator&) = default;
  ~KyXmlNodeIterator() override;

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;

 private:
  KyXmlNodeIteratorI* iterator;
};

class KY_EXPORT KyXmlNodeListIterator : public KyXmlNodeIteratorI, public Ky_LIterator {
 public:
  explicit KyXmlNodeListIterator(const Ky_List& list) : Ky_LIterator(list) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;
};

class KY_EXPORT KyXmlNodeArrayIterator : public KyXmlNodeIteratorI {
 public:
  explicit KyXmlNodeArrayIterator(const KyArray& array) : array(&array) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;

 private:
  const KyArray* array;
  unsigned long index = 0;
};

class KY_EXPORT KyXmlNodePtrArrayIterator : public KyXmlNodeIteratorI {
 public:
  KyXmlNodePtrArrayIterator(unsigned long count, const KyXmlNodeI** nodes) : count(count), nodes(nodes) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;

 private:
  unsigned long count;
  const KyXmlNodeI** nodes;
  unsigned long index = 0;
};

#endif  // KYBASE_XML_XML_ITERATORS_H
