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

/// An iterator over XML nodes.
class KY_EXPORT KyXmlNodeIteratorI {
 public:
  /// An iterator.
  KyXmlNodeIteratorI() = default;
  /// Member-wise.
  KyXmlNodeIteratorI(const KyXmlNodeIteratorI&) = default;
  /// Member-wise.
  KyXmlNodeIteratorI& operator=(const KyXmlNodeIteratorI&) = default;
  /// Frees what the iterator owns, never the nodes.
  virtual ~KyXmlNodeIteratorI();

  /// True while a node is left.
  virtual bool hasMoreNodes() const = 0;
  /// The next node, then advances; null at the end.
  virtual KyXmlNodeI* getNextNode() = 0;
};

/// An iterator that wraps and owns another one.
class KY_EXPORT KyXmlNodeIterator : public KyXmlNodeIteratorI {
 public:
  /// Takes ownership of `iterator`, which may be null.
  explicit KyXmlNodeIterator(KyXmlNodeIteratorI* iterator) : iterator(iterator) {}
  /// Shares the wrapped iterator: only one of the two may be destroyed.
  KyXmlNodeIterator(const KyXmlNodeIterator&) = default;
  /// Shares the wrapped iterator.
  KyXmlNodeIterator& operator=(const KyXmlNodeIterator&) = default;
  /// Deletes the wrapped iterator.
  ~KyXmlNodeIterator() override;

  /// The wrapped iterator's answer; false without one.
  bool hasMoreNodes() const override;
  /// The wrapped iterator's next node; null without one.
  KyXmlNodeI* getNextNode() override;

 private:
  KyXmlNodeIteratorI* iterator;
};

/// An iterator over the values of a Ky_List of nodes.
class KY_EXPORT KyXmlNodeListIterator : public KyXmlNodeIteratorI, public Ky_LIterator {
 public:
  /// Stands on the first cell of `list`.
  explicit KyXmlNodeListIterator(const Ky_List& list) : Ky_LIterator(list) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;
};

/// An iterator over a KyArray of nodes.
class KY_EXPORT KyXmlNodeArrayIterator : public KyXmlNodeIteratorI {
 public:
  /// Stands on the first element of `array`.
  explicit KyXmlNodeArrayIterator(const KyArray& array) : array(&array) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;

 private:
  const KyArray* array;
  unsigned long index = 0;
};

/// An iterator over a plain array of node pointers.
class KY_EXPORT KyXmlNodePtrArrayIterator : public KyXmlNodeIteratorI {
 public:
  /// Stands on the first of the `count` pointers at `nodes`.
  KyXmlNodePtrArrayIterator(unsigned long count, const KyXmlNodeI** nodes) : count(count), nodes(nodes) {}

  bool hasMoreNodes() const override;
  KyXmlNodeI* getNextNode() override;

 private:
  unsigned long count;
  const KyXmlNodeI** nodes;
  unsigned long index = 0;
};

#endif  // KYBASE_XML_XML_ITERATORS_H
