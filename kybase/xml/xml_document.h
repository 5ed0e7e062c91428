// KyXmlDocumentI: the receiver of a parse and the root of a written document. A
// document is not a node. The interface keeps nothing: a subclass that only gives
// addNode a body (deleting what it is handed) receives a call for every event of a
// read and keeps no node. KyXmlDocument keeps the top-level nodes, the version and the
// document type.
//
// read() is the only entry to the parser. It empties the document, decodes the whole
// stream (UTF-8, with or without a byte order mark, or UTF-16 with a mark in either
// order) and builds the tree through the create... and ...Added operations, which a
// subclass overrides to choose its own node classes or to listen. An element is
// attached to its parent only after its end tag, so children arrive before parents.
// Faults go to the process-wide KyXmlError record, which read() neither returns nor
// clears: a caller reading several documents calls KyXmlError::Reset() between them.
// After a fault the document is normally left empty; version and doctype stay.
//
// Ownership: KyXmlDocument owns its nodes and its three texts (arrays from new[]).
// storeVersion and storeDoctype keep the new arrays without freeing earlier ones, so a
// pointer taken from an earlier read stays valid and is the caller's to free. Copies
// share everything. Threads: one document per thread, and reads on several threads
// share the one error record.
#ifndef KYBASE_XML_XML_DOCUMENT_H
#define KYBASE_XML_XML_DOCUMENT_H

#include <iosfwd>

#include "kybase/containers/typed_lists.h"
#include "kybase/core/export.h"
#include "kybase/xml/xml_node.h"

class KyXmlNodeFactory;
class KyXmlNodeIteratorI;
class KyXmlParser;

class KY_EXPORT KyXmlDocumentI {
 public:
  KyXmlDocumentI() = default;
  KyXmlDocumentI(const KyXmlDocumentI&) = default;
  KyXmlDocumentI& operator=(const KyXmlDocumentI&) = default;
  virtual ~KyXmlDocumentI();

  virtual void addNode(KyXmlNodeI* node) = 0;
  virtual void startElement(KyXmlElementI* element);
  virtual void attributeAdded(KyXmlElementI* element, KyXmlAttributeI* attribute);
  virtual void endElement(KyXmlElementI* element);
  virtual void textAdded(KyXmlTextI* text);
  virtual void commentAdded(KyXmlCommentI* comment);
  virtual void charRefAdded(KyXmlCharRefI* reference);
  // Never called by read(): instructions arrive without an event.
  virtual void processingInstructionAdded(KyXmlPII* instruction);
  virtual void cDataAdded(KyXmlCDataI* data);
  // The element's own createAttribute first, then a KyXmlAttribute holding both arrays.
  virtual KyXmlAttributeI* createAttribute(KyXmlElementI* element, char* name, char* value) const;
  // A KyXmlElement that takes the tag array.
  virtual KyXmlElementI* createElement(char* tag) const;
  virtual KyXmlTextI* createText() const;
  virtual KyXmlCommentI* createComment() const;
  virtual KyXmlCharRefI* createCharRef() const;
  virtual KyXmlPII* createPI() const;
  virtual KyXmlCDataI* createCData() const;
  virtual KyXmlNodeFactory* getNodeFactory() const;
  virtual const char* getVersion() const;
  virtual const char* getDoctypeName() const;
  virtual const char* getDoctypeRest() const;
  virtual void empty();
  // The declaration line, the document type if any, then every node from column 0.
  virtual std::ostream& write(std::ostream& stream) const;
  virtual void writeNodes(std::ostream& stream) const;
  virtual KyXmlNodeIteratorI* createNodesIterator() const;

  void read(std::istream& stream);

 protected:
  virtual void storeVersion(char* version);
  virtual void storeDoctype(char* name, char* rest);

 private:
  friend class KyXmlParser;
};

class KY_EXPORT KyXmlDocument : public KyXmlDocumentI {
 public:
  KyXmlDocument() = default;
  KyXmlDocument(const KyXmlDocument&) = default;
  KyXmlDocument& operator=(const KyXmlDocument&) = default;
  // Frees version and doctype, then deletes every node.
  ~KyXmlDocument() override;

  void addNode(KyXmlNodeI* node) override;
  // "1.0" until a version is stored.
  const char* getVersion() const override;
  const char* getDoctypeName() const override { return doctypeName; }
  const char* getDoctypeRest() const override { return doctypeRest; }
  // Deletes every node; version and doctype stay.
  void empty() override;
  KyXmlNodeIteratorI* createNodesIterator() const override;

  KyKyXmlNodeIList& getNodes() { return nodes; }
  // The first top-level element, or null.
  KyXmlElement* getRootElement() const;

 protected:
  void storeVersion(char* newVersion) override;
  void storeDoctype(char* name, char* rest) override;

 private:
  KyKyXmlNodeIList nodes;
  char* version = nullptr;
  char* doctypeName = nullptr;
  char* doctypeRest = nullptr;
};

#endif  // KYBASE_XML_XML_DOCUMENT_H
