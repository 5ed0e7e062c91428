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

/// The receiver of a read and the root of a written document; see the family page.
class KY_EXPORT KyXmlDocumentI {
 public:
  /// A document of no nodes.
  KyXmlDocumentI() = default;
  /// Member-wise.
  KyXmlDocumentI(const KyXmlDocumentI&) = default;
  /// Member-wise.
  KyXmlDocumentI& operator=(const KyXmlDocumentI&) = default;
  /// Frees what the document keeps.
  virtual ~KyXmlDocumentI();

  /// Takes ownership of a top-level node (comment, instruction or the root element).
  virtual void addNode(KyXmlNodeI* node) = 0;
  /// Told when a start tag was read; the element has its tag only. Does nothing here.
  virtual void startElement(KyXmlElementI* element);
  /// Told after an attribute was added to `element`. Does nothing here.
  virtual void attributeAdded(KyXmlElementI* element, KyXmlAttributeI* attribute);
  /// Told when the element is complete, before it goes to its parent. Does nothing here.
  virtual void endElement(KyXmlElementI* element);
  /// Told after character data was read. Does nothing here.
  virtual void textAdded(KyXmlTextI* text);
  /// Told after a comment was read. Does nothing here.
  virtual void commentAdded(KyXmlCommentI* comment);
  /// Told after a reference was read. Does nothing here.
  virtual void charRefAdded(KyXmlCharRefI* reference);
  /// Never called by read(): instructions arrive without an event.
  virtual void processingInstructionAdded(KyXmlPII* instruction);
  /// Told after a CDATA section was read. Does nothing here.
  virtual void cDataAdded(KyXmlCDataI* data);
  /// The element's own createAttribute first, then a KyXmlAttribute holding both arrays.
  virtual KyXmlAttributeI* createAttribute(KyXmlElementI* element, char* name, char* value) const;
  /// A KyXmlElement that takes the tag array.
  virtual KyXmlElementI* createElement(char* tag) const;
  /// A new text node: the factory's, else a KyXmlText.
  virtual KyXmlTextI* createText() const;
  /// A new comment node: the factory's, else a KyXmlComment.
  virtual KyXmlCommentI* createComment() const;
  /// A new reference node: the factory's, else a KyXmlCharRef.
  virtual KyXmlCharRefI* createCharRef() const;
  /// A new instruction node: the factory's, else a KyXmlPI.
  virtual KyXmlPII* createPI() const;
  /// A new CDATA node: the factory's, else a KyXmlCData.
  virtual KyXmlCDataI* createCData() const;
  /// The factory asked first by every create...; null here.
  virtual KyXmlNodeFactory* getNodeFactory() const;
  /// The version of the declaration; "1.0" here.
  virtual const char* getVersion() const;
  /// The name of the document type; null here.
  virtual const char* getDoctypeName() const;
  /// The rest of the document type after its name; null here.
  virtual const char* getDoctypeRest() const;
  /// Drops the nodes; nothing to drop here.
  virtual void empty();
  /// The declaration line, the document type if any, then every node from column 0.
  virtual std::ostream& write(std::ostream& stream) const;
  /// Writes every node that createNodesIterator() gives, in order.
  virtual void writeNodes(std::ostream& stream) const;
  /// A new iterator over the top-level nodes (the caller deletes it); null here.
  virtual KyXmlNodeIteratorI* createNodesIterator() const;

  /// Empties the document and reads a whole document from `stream` into it; faults go to
  /// KyXmlError.
  void read(std::istream& stream);

 protected:
  /// Takes the array of the declared version; freed here.
  virtual void storeVersion(char* version);
  /// Takes the two arrays of the document type; freed here.
  virtual void storeDoctype(char* name, char* rest);

 private:
  friend class KyXmlParser;
};

/// A document that keeps its top-level nodes, version and document type.
class KY_EXPORT KyXmlDocument : public KyXmlDocumentI {
 public:
  /// An empty document.
  KyXmlDocument() = default;
  /// Shares nodes and texts with the source.
  KyXmlDocument(const KyXmlDocument&) = default;
  /// Shares nodes and texts with the source.
  KyXmlDocument& operator=(const KyXmlDocument&) = default;
  /// Frees version and doctype, then deletes every node.
  ~KyXmlDocument() override;

  /// Appends a top-level node; null is ignored.
  void addNode(KyXmlNodeI* node) override;
  /// "1.0" until a version is stored.
  const char* getVersion() const override;
  /// The name of the document type read or stored, or null.
  const char* getDoctypeName() const override { return doctypeName; }
  /// The rest of the document type, or null.
  const char* getDoctypeRest() const override { return doctypeRest; }
  /// Deletes every node; version and doctype stay.
  void empty() override;
  /// A new iterator over the top-level nodes; the caller deletes it.
  KyXmlNodeIteratorI* createNodesIterator() const override;

  /// The top-level nodes, in document order.
  KyKyXmlNodeIList& getNodes() { return nodes; }
  /// The first top-level element, or null.
  KyXmlElement* getRootElement() const;

 protected:
  /// Keeps the array as the version.
  void storeVersion(char* newVersion) override;
  /// Keeps the two arrays as the document type.
  void storeDoctype(char* name, char* rest) override;

 private:
  KyKyXmlNodeIList nodes;
  char* version = nullptr;
  char* doctypeName = nullptr;
  char* doctypeRest = nullptr;
};

#endif  // KYBASE_XML_XML_DOCUMENT_H
