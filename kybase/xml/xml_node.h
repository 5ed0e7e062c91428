// The XML node model: an interface layer (KyXmlNodeI and its families, each ending in
// I, with working defaults) and a concrete layer that keeps every text in a plain
// character array and every child in a list.
//
// Texts are zero-terminated UTF-8 arrays made with new[] and released with delete[].
// A store... operation takes ownership of the array it is given; a set... operation
// copies its argument (a null or empty text becomes null) and hands the copy to the
// matching store..., so a subclass that overrides only store... sees every change.
// An element owns its attributes and children, and deletes them when it dies; a tree
// of plain KyXmlElement nodes of any depth is torn down and written without deep
// recursion (a child element's own children are deleted just before it, so its
// destructor finds its list of children empty).
// KyXmlPI never frees its target: whoever stores a target keeps the duty to free it.
// The concrete leaves (attribute, text, comment, CDATA, instruction, reference) take
// their memory from KyMemoryManager; operator new fails with std::bad_alloc.
//
// Copying a node copies its fields member by member: texts and lists are shared, so
// at most one of the copies may be destroyed.
//
// Failure: lookups give null; nothing else is reported. Threads: a tree belongs to one
// thread at a time; the indentation statics of KyXmlElementI are process-wide.
#ifndef KYBASE_XML_XML_NODE_H
#define KYBASE_XML_XML_NODE_H

#include <cstddef>
#include <iosfwd>

#include "kybase/containers/typed_lists.h"
#include "kybase/core/export.h"

class KyXmlDocumentI;
class KyXmlNodeIteratorI;

class KY_EXPORT KyXmlNodeI {
 public:
  enum Type { Attribute = 0, Element = 1, Text = 2, Comment = 3, CData = 4, PI = 5, CharRef = 6 };

  KyXmlNodeI() = default;
  KyXmlNodeI(const KyXmlNodeI&) = default;
  KyXmlNodeI& operator=(const KyXmlNodeI&) = default;
  virtual ~KyXmlNodeI();

  virtual Type getType() const = 0;
  virtual std::ostream& write(std::ostream& stream) const = 0;
};

class KY_EXPORT KyXmlAttributeI : public KyXmlNodeI {
 public:
  Type getType() const override;
  // name="value", the value escaped; no blank before it and no line end after it.
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getName() const = 0;
  virtual void setName(const char* name);
  virtual void storeName(char* name) = 0;
  virtual const char* getValue() const = 0;
  virtual void setValue(const char* value);
  virtual void storeValue(char* value) = 0;

  // For subclasses that write attributes of their own: name="value". The text form
  // escapes the value; the number forms use the stream's own number output.
  static void Write(std::ostream& stream, const char* name, const char* value);
  static void Write(std::ostream& stream, const char* name, long value);
  static void Write(std::ostream& stream, const char* name, double value);
};

class KY_EXPORT KyXmlCommentI : public KyXmlNodeI {
 public:
  Type getType() const override;
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getComment() const = 0;
  virtual void setComment(const char* text);
  virtual void storeComment(char* text) = 0;
};

class KY_EXPORT KyXmlTextI : public KyXmlNodeI {
 public:
  Type getType() const override;
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getText() const = 0;
  virtual void setText(const char* text);
  virtual void storeText(char* text) = 0;
  virtual void appendText(const char* text) = 0;
};

class KY_EXPORT KyXmlPII : public KyXmlNodeI {
 public:
  Type getType() const override;
  // Writes nothing: instructions are not part of the output.
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getTarget() const = 0;
  virtual void setTarget(const char* target);
  virtual void storeTarget(char* target) = 0;
  virtual const char* getData() const = 0;
  virtual void setData(const char* data);
  virtual void storeData(char* data) = 0;
};

class KY_EXPORT KyXmlCDataI : public KyXmlNodeI {
 public:
  Type getType() const override;
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getData() const = 0;
  virtual void setData(const char* data);
  virtual void storeData(char* data) = 0;
};

class KY_EXPORT KyXmlCharRefI : public KyXmlNodeI {
 public:
  Type getType() const override;
  // Writes nothing: references are not part of the output.
  std::ostream& write(std::ostream& stream) const override;
  virtual int getRefCode() const = 0;
  virtual void setRefCode(int code) = 0;
  virtual const char* getRefName() const = 0;
  // Sets the code to -1 first, then stores a copy of the name.
  virtual void setRefName(const char* name);
  virtual void storeRefName(char* name) = 0;
};

// An element. The defaults keep nothing: storeTag, addChild and addAttribute dispose
// of what they are given, because the parser passes ownership to them.
class KY_EXPORT KyXmlElementI : public KyXmlNodeI {
 public:
  Type getType() const override;
  // The start tag, attributes and children, indented by the current column; a plain
  // KyXmlElement subtree is written with a loop, other elements through their own
  // write and writeChildren.
  std::ostream& write(std::ostream& stream) const override;
  virtual const char* getTag() const = 0;
  virtual void setTag(const char* tag);
  virtual void storeTag(char* tag);
  virtual void addChild(KyXmlNodeI* node);
  // Asks the document for the attribute node, tells it, and adds the node here.
  virtual void storeAttribute(KyXmlDocumentI* document, char* name, char* value);
  virtual KyXmlElementI* createChildElement(char* tag) const;
  virtual KyXmlAttributeI* createAttribute(char* name, char* value) const;
  virtual void addAttribute(KyXmlAttributeI* attribute);
  // The first attribute whose name equals `name` byte for byte, or null.
  virtual KyXmlAttributeI* getAttribute(const char* name) const;
  virtual bool doesPreserveWhiteSpaces() const;
  virtual void preserveWhiteSpaces(bool preserve);
  virtual void writeAttributes(std::ostream& stream) const;
  // Closes the start tag before the first child; false when no child was written.
  virtual bool writeChildren(std::ostream& stream) const;
  virtual const char* getText() const;
  virtual KyXmlNodeIteratorI* createChildrenIterator() const;
  virtual KyXmlNodeIteratorI* createAttributesIterator() const;

  const char* getAttributeValue(const char* name) const;

  static unsigned long GetIndent() { return _indent; }
  static unsigned long GetIndentation() { return _indentation; }
  static void SetIndentation(unsigned long step) { _indentation = step; }
  static void IndentMore() { _indent += _indentation; }
  static void IndentLess() { _indent -= _indentation; }
  static void ResetIndent() { _indent = 0; }

 protected:
  // The writer's column and its step (2 at start).
  static unsigned long _indent;
  static unsigned long _indentation;
};

class KY_EXPORT KyXmlAttribute : public KyXmlAttributeI {
 public:
  explicit KyXmlAttribute(const char* name = nullptr, const char* value = nullptr);
  KyXmlAttribute(const KyXmlAttribute&) = default;
  KyXmlAttribute& operator=(const KyXmlAttribute&) = default;
  ~KyXmlAttribute() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  const char* getName() const override { return name; }
  void storeName(char* newName) override;
  const char* getValue() const override { return value; }
  void storeValue(char* newValue) override;

 private:
  char* name;
  char* value;
};

class KY_EXPORT KyXmlComment : public KyXmlCommentI {
 public:
  KyXmlComment() = default;
  KyXmlComment(const KyXmlComment&) = default;
  KyXmlComment& operator=(const KyXmlComment&) = default;
  ~KyXmlComment() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  const char* getComment() const override { return text; }
  void storeComment(char* newText) override;

 private:
  char* text = nullptr;
};

class KY_EXPORT KyXmlText : public KyXmlTextI {
 public:
  KyXmlText() = default;
  KyXmlText(const KyXmlText&) = default;
  KyXmlText& operator=(const KyXmlText&) = default;
  ~KyXmlText() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  const char* getText() const override { return text; }
  void storeText(char* newText) override;
  // Without a text yet, the same as setText; otherwise one new array of both texts.
  void appendText(const char* more) override;

 private:
  char* text = nullptr;
};

class KY_EXPORT KyXmlCData : public KyXmlCDataI {
 public:
  KyXmlCData() = default;
  KyXmlCData(const KyXmlCData&) = default;
  KyXmlCData& operator=(const KyXmlCData&) = default;
  ~KyXmlCData() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  const char* getData() const override { return data; }
  void storeData(char* newData) override;

 private:
  char* data = nullptr;
};

// An instruction. Only the data is freed by the node: the target array stays with
// whoever stored it, also when a new target replaces it.
class KY_EXPORT KyXmlPI : public KyXmlPII {
 public:
  KyXmlPI() = default;
  KyXmlPI(const KyXmlPI&) = default;
  KyXmlPI& operator=(const KyXmlPI&) = default;
  ~KyXmlPI() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  const char* getTarget() const override { return target; }
  void storeTarget(char* newTarget) override;
  const char* getData() const override { return data; }
  void storeData(char* newData) override;

 private:
  char* target = nullptr;
  char* data = nullptr;
};

// A reference holds a number or a name, never both: a name sets the code to -1, a
// code clears the name. A new reference has code 0 and no name.
class KY_EXPORT KyXmlCharRef : public KyXmlCharRefI {
 public:
  KyXmlCharRef() = default;
  KyXmlCharRef(const KyXmlCharRef&) = default;
  KyXmlCharRef& operator=(const KyXmlCharRef&) = default;
  ~KyXmlCharRef() override;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);

  int getRefCode() const override { return code; }
  void setRefCode(int newCode) override;
  const char* getRefName() const override { return name; }
  void storeRefName(char* newName) override;

 private:
  int code = 0;
  char* name = nullptr;
};

class KY_EXPORT KyXmlElement : public KyXmlElementI {
 public:
  explicit KyXmlElement(const char* tag = nullptr);
  KyXmlElement(const KyXmlElement&) = default;
  KyXmlElement& operator=(const KyXmlElement&) = default;
  // Frees the tag, deletes the attributes, then the children, in list order.
  ~KyXmlElement() override;

  const char* getTag() const override { return tag; }
  void storeTag(char* newTag) override;
  void addChild(KyXmlNodeI* node) override;
  void addAttribute(KyXmlAttributeI* attribute) override;
  KyXmlAttributeI* getAttribute(const char* name) const override;
  bool doesPreserveWhiteSpaces() const override { return preserve; }
  void preserveWhiteSpaces(bool value) override { preserve = value; }
  // The text of the first text child, or null.
  const char* getText() const override;
  KyXmlNodeIteratorI* createChildrenIterator() const override;
  KyXmlNodeIteratorI* createAttributesIterator() const override;

  KyKyXmlNodeIList& getChildren() { return children; }
  KyKyXmlAttributeIList& getAttributes() { return attributes; }
  unsigned long getChildrenCardinal() const { return children.getLength(); }
  unsigned long getAttributesCardinal() const { return attributes.getLength(); }
  // The first child element named `tag` after the child `after` (from the start when
  // `after` is null); null at the end, also when `after` is not a child.
  KyXmlElement* getElement(const char* tag, KyXmlNodeI* after) const;

 private:
  char* tag;
  KyKyXmlNodeIList children;
  KyKyXmlAttributeIList attributes;
  bool preserve = false;
};

// Wraps a borrowed text for the stream operator below, which escapes &, < and >.
class KY_EXPORT KyXmlString {
 public:
  KyXmlString(const char* text) : text(text) {}
  KyXmlString& operator=(const KyXmlString&) = default;

 private:
  friend KY_EXPORT std::ostream& operator<<(std::ostream& stream, const KyXmlString& string);
  const char* text;
};

// Writes the text with "&amp;", "&lt;" and "&gt;" for the three characters; quotes
// pass as they are. A null or empty text writes nothing.
KY_EXPORT std::ostream& operator<<(std::ostream& stream, const KyXmlString& string);

// A count of blanks. Kept for callers that hold one; the library reads none.
class KY_EXPORT KyXmlSpaces {
 public:
  KyXmlSpaces(int count) : count(count) {}
  KyXmlSpaces& operator=(const KyXmlSpaces&) = default;

 private:
  [[maybe_unused]] int count;
};

#endif  // KYBASE_XML_XML_NODE_H
