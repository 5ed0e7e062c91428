// Tear-down of node lists shared by elements and documents.
#ifndef KYBASE_XML_XML_TREE_INTERNAL_H
#define KYBASE_XML_XML_TREE_INTERNAL_H

#include "kybase/containers/list.h"

// Deletes every node of `nodes` in list order and empties the list. The children of a
// KyXmlElement are deleted by the same loop just before it (its list is empty when its
// destructor runs), so the depth of a tree never becomes the depth of the call stack.
void KyXmlDeleteNodes(Ky_List& nodes);

#endif  // KYBASE_XML_XML_TREE_INTERNAL_H
