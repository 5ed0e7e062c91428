// The typed list faces of the XML model: KyKyXmlNodeIList and KyKyXmlAttributeIList
// with their plain and safe iterators. They are KyList with an element type, made by
// the same generator, so they run KyList's code.
#ifndef KYBASE_CONTAINERS_TYPED_LISTS_H
#define KYBASE_CONTAINERS_TYPED_LISTS_H

#include "kybase/containers/list.h"

class KyXmlNodeI;
class KyXmlAttributeI;

KY_TYPED_LIST(KyKyXmlNodeIList, KyKyXmlNodeILIter, KyKyXmlNodeISLIter, KyXmlNodeI*)
KY_TYPED_LIST(KyKyXmlAttributeIList, KyKyXmlAttributeILIter, KyKyXmlAttributeISLIter, KyXmlAttributeI*)

#endif  // KYBASE_CONTAINERS_TYPED_LISTS_H
