#include "kybase/xml/xml_factory.h"

KyXmlNodeFactory::~KyXmlNodeFactory() = default;

KyXmlElementI* KyXmlNodeFactory::createElement(char*) const { return nullptr; }
KyXmlAttributeI* KyXmlNodeFactory::createAttribute(KyXmlElementI*, char*, char*) const { return nullptr; }
KyXmlTextI* KyXmlNodeFactory::createText() const { return nullptr; }
KyXmlCommentI* KyXmlNodeFactory::createComment() const { return nullptr; }
KyXmlCharRefI* KyXmlNodeFactory::createCharRef() const { return nullptr; }
KyXmlPII* KyXmlNodeFactory::createPI() const { return nullptr; }
KyXmlCDataI* KyXmlNodeFactory::createCData() const { return nullptr; }
