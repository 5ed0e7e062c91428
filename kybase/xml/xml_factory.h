// KyXmlNodeFactory: the hook a document may return from getNodeFactory(). The
// document asks the factory first for every node it creates and builds its own
// concrete node whenever the factory gives none. The factory of this library gives
// none: every operation returns null (createElement and createAttribute then leave
// their arrays with the caller). Stateless; any thread.
#ifndef KYBASE_XML_XML_FACTORY_H
#define KYBASE_XML_XML_FACTORY_H

#include "kybase/core/export.h"

class KyXmlAttributeI;
class KyXmlCDataI;
class KyXmlCharRefI;
class KyXmlCommentI;
class KyXmlElementI;
class KyXmlPII;
class KyXmlTextI;

/// The node factory a document may offer; this one makes no node.
class KY_EXPORT KyXmlNodeFactory {
 public:
  /// A factory.
  KyXmlNodeFactory() = default;
  /// A factory; there is no state to copy.
  KyXmlNodeFactory(const KyXmlNodeFactory&) = default;
  /// There is no state to assign.
  KyXmlNodeFactory& operator=(const KyXmlNodeFactory&) = default;
  /// Nothing to free.
  virtual ~KyXmlNodeFactory();

  /// An element for `tag`; null here, and the array stays the caller's.
  KyXmlElementI* createElement(char* tag) const;
  /// An attribute of `element`; null here, and the arrays stay the caller's.
  KyXmlAttributeI* createAttribute(KyXmlElementI* element, char* name, char* value) const;
  /// A text node; null here.
  KyXmlTextI* createText() const;
  /// A comment node; null here.
  KyXmlCommentI* createComment() const;
  /// A reference node; null here.
  KyXmlCharRefI* createCharRef() const;
  /// An instruction node; null here.
  KyXmlPII* createPI() const;
  /// A CDATA node; null here.
  KyXmlCDataI* createCData() const;
};

#endif  // KYBASE_XML_XML_FACTORY_H
