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

class KY_EXPORT KyXmlNodeFactory {
 public:
  KyXmlNodeFactory() = default;
  KyXmlNodeFactory(const KyXmlNodeFactory&) = default;
  KyXmlNodeFactory& operator=(const KyXmlNodeFactory&) = default;
  virtual ~KyXmlNodeFactory();

  KyXmlElementI* createElement(char* tag) const;
  KyXmlAttributeI* createAttribute(KyXmlElementI* element, char* name, char* value) const;
  KyXmlTextI* createText() const;
  KyXmlCommentI* createComment() const;
  KyXmlCharRefI* createCharRef() const;
  KyXmlPII* createPI() const;
  KyXmlCDataI* createCData() const;
};

#endif  // KYBASE_XML_XML_FACTORY_H
