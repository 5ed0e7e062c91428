// The XML node model: an interface layer (KyXmlNodeI and its families, each ending in
// I, with working defaults) and a concrete layer that keeps every text in a plain
// character array and every child in a list.
//
// Texts are zero-terminated UTF-8 arrays made with new[] and released with delete[].
// A store... operation takes ownership of the array it is given; a set... operation
// copies its argument (a null or empty text becomes null) and hands the copy to the
// matching store..., so a subclass that overrides only store... sees every change.
// The reader keeps a short tag, name, value or text of its own concrete nodes in a
// buffer inside the node instead of an array: such a text is never handed to
// delete[], and storing another text over it simply leaves the buffer unused.
// An element owns its attributes and children, and deletes them when it dies; a tree
// of plain KyXmlElement nodes of any depth is torn down and written without deep
// recursion (a child element's own children are deleted just before it, so its
// destructor finds its list of children empty). Destructors run in list order, except
// in runs of the library's own node classes, which are deleted from the end of the run:
// memory goes back in the reverse order of its taking, so the next tree is built in
// the same order through memory as this one.
// KyXmlPI never frees its target: whoever stores a target keeps the duty to free it.
// The concrete leaves (attribute, text, comment, CDATA, instruction, reference) take
// their memory from KyMemoryManager; operator new fails with std::bad_alloc.
//
// Copying a node copies its fields member by member, except that a text kept inside
// the node is copied into the copy: texts held in arrays and lists are shared, so at
// most one of the copies may be destroyed.
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

/// A node of the XML tree: its type and its written form.
class KY_EXPORT KyXmlNodeI {
 public:
  /// The kinds of node, as getType() gives them.
  enum Type { Attribute = 0, Element = 1, Text = 2, Comment = 3, CData = 4, PI = 5, CharRef = 6 };

  /// A node of no content.
  KyXmlNodeI() = default;
  /// Member-wise (see the family page).
  KyXmlNodeI(const KyXmlNodeI&) = default;
  /// Member-wise.
  KyXmlNodeI& operator=(const KyXmlNodeI&) = default;
  /// Frees what the node owns.
  virtual ~KyXmlNodeI();

  /// The kind of the node.
  virtual Type getType() const = 0;
  /// Writes the node as XML text and returns the stream.
  virtual std::ostream& write(std::ostream& stream) const = 0;
};

/// An attribute: a name and a value.
class KY_EXPORT KyXmlAttributeI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// name="value", the value escaped; no blank before it and no line end after it.
  std::ostream& write(std::ostream& stream) const override;
  /// The name, or null.
  virtual const char* getName() const = 0;
  /// Stores a copy of `name` through storeName().
  virtual void setName(const char* name);
  /// Takes ownership of the array `name`.
  virtual void storeName(char* name) = 0;
  /// The value, unescaped, or null.
  virtual const char* getValue() const = 0;
  /// Stores a copy of `value` through storeValue().
  virtual void setValue(const char* value);
  /// Takes ownership of the array `value`.
  virtual void storeValue(char* value) = 0;

  /// For subclasses that write attributes of their own: name="value". The text form
  /// escapes the value; the number forms use the stream's own number output.
  static void Write(std::ostream& stream, const char* name, const char* value);
  /// name="value" with a whole number.
  static void Write(std::ostream& stream, const char* name, long value);
  /// name="value" with a floating-point number.
  static void Write(std::ostream& stream, const char* name, double value);
};

/// A comment.
class KY_EXPORT KyXmlCommentI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// Writes "<!--", the text and "-->" at the current indentation.
  std::ostream& write(std::ostream& stream) const override;
  /// The text between the markers, or null.
  virtual const char* getComment() const = 0;
  /// Stores a copy of `text` through storeComment().
  virtual void setComment(const char* text);
  /// Takes ownership of the array `text`.
  virtual void storeComment(char* text) = 0;
};

/// Character data, kept unescaped.
class KY_EXPORT KyXmlTextI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// Writes the text with &, < and > escaped.
  std::ostream& write(std::ostream& stream) const override;
  /// The text, or null.
  virtual const char* getText() const = 0;
  /// Stores a copy of `text` through storeText().
  virtual void setText(const char* text);
  /// Takes ownership of the array `text`.
  virtual void storeText(char* text) = 0;
  /// Adds a copy of `text` at the end.
  virtual void appendText(const char* text) = 0;
};

/// A processing instruction: a target and its data.
class KY_EXPORT KyXmlPII : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// Writes nothing: instructions are not part of the output.
  std::ostream& write(std::ostream& stream) const override;
  /// The target, or null.
  virtual const char* getTarget() const = 0;
  /// Stores a copy of `target` through storeTarget().
  virtual void setTarget(const char* target);
  /// Takes the array `target`; who frees it depends on the class (see KyXmlPI).
  virtual void storeTarget(char* target) = 0;
  /// The data after the target, or null.
  virtual const char* getData() const = 0;
  /// Stores a copy of `data` through storeData().
  virtual void setData(const char* data);
  /// Takes ownership of the array `data`.
  virtual void storeData(char* data) = 0;
};

/// A CDATA section.
class KY_EXPORT KyXmlCDataI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// Writes "<![CDATA[", the data and "]]>".
  std::ostream& write(std::ostream& stream) const override;
  /// The data, or null.
  virtual const char* getData() const = 0;
  /// Stores a copy of `data` through storeData().
  virtual void setData(const char* data);
  /// Takes ownership of the array `data`.
  virtual void storeData(char* data) = 0;
};

/// A character or entity reference, by number or by name.
class KY_EXPORT KyXmlCharRefI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// Writes nothing: references are not part of the output.
  std::ostream& write(std::ostream& stream) const override;
  /// The character number; -1 for a named reference.
  virtual int getRefCode() const = 0;
  /// Stores a character number.
  virtual void setRefCode(int code) = 0;
  /// The entity name, or null for a numbered reference.
  virtual const char* getRefName() const = 0;
  /// Sets the code to -1 first, then stores a copy of the name.
  virtual void setRefName(const char* name);
  /// Takes ownership of the array `name`.
  virtual void storeRefName(char* name) = 0;
};

/// An element: a tag, attributes and children. The defaults keep nothing: storeTag,
/// addChild and addAttribute dispose of what they are given, because the parser passes
/// ownership to them.
class KY_EXPORT KyXmlElementI : public KyXmlNodeI {
 public:
  Type getType() const override;
  /// The start tag, attributes and children, indented by the current column; a plain
  /// KyXmlElement subtree is written with a loop, other elements through their own
  /// write and writeChildren.
  std::ostream& write(std::ostream& stream) const override;
  /// The tag, or null.
  virtual const char* getTag() const = 0;
  /// Stores a copy of `tag` through storeTag().
  virtual void setTag(const char* tag);
  /// Takes ownership of the array `tag`; the default frees it.
  virtual void storeTag(char* tag);
  /// Takes ownership of a child node; the default deletes it.
  virtual void addChild(KyXmlNodeI* node);
  /// Asks the document for the attribute node, tells it, and adds the node here.
  virtual void storeAttribute(KyXmlDocumentI* document, char* name, char* value);
  /// A new element for a child tag, taking the array `tag`: a KyXmlElement by default.
  virtual KyXmlElementI* createChildElement(char* tag) const;
  /// A new attribute taking both arrays; null by default, so that the document makes it.
  virtual KyXmlAttributeI* createAttribute(char* name, char* value) const;
  /// Takes ownership of an attribute; the default deletes it.
  virtual void addAttribute(KyXmlAttributeI* attribute);
  /// The first attribute whose name equals `name` byte for byte, or null.
  virtual KyXmlAttributeI* getAttribute(const char* name) const;
  /// True when blank text inside is kept; false by default.
  virtual bool doesPreserveWhiteSpaces() const;
  /// Asks to keep blank text; the default keeps no flag.
  virtual void preserveWhiteSpaces(bool preserve);
  /// Writes each attribute after a blank.
  virtual void writeAttributes(std::ostream& stream) const;
  /// Closes the start tag before the first child; false when no child was written.
  virtual bool writeChildren(std::ostream& stream) const;
  /// The text of the element; null by default.
  virtual const char* getText() const;
  /// A new iterator over the children (the caller deletes it); null by default.
  virtual KyXmlNodeIteratorI* createChildrenIterator() const;
  /// A new iterator over the attributes (the caller deletes it); null by default.
  virtual KyXmlNodeIteratorI* createAttributesIterator() const;

  /// The value of the attribute `name`, or null.
  const char* getAttributeValue(const char* name) const;

  /// The writer's current column.
  static unsigned long GetIndent() { return _indent; }
  /// The writer's step per level.
  static unsigned long GetIndentation() { return _indentation; }
  /// Sets the step per level.
  static void SetIndentation(unsigned long step) { _indentation = step; }
  /// One level deeper.
  static void IndentMore() { _indent += _indentation; }
  /// One level back.
  static void IndentLess() { _indent -= _indentation; }
  /// Back to column 0.
  static void ResetIndent() { _indent = 0; }

 protected:
  /// The writer's column and its step (2 at start).
  static unsigned long _indent;
  /// The step per level.
  static unsigned long _indentation;
};

/// An attribute keeping its two texts; its memory comes from KyMemoryManager.
class KY_EXPORT KyXmlAttribute : public KyXmlAttributeI {
 public:
  /// An attribute holding copies of `name` and `value`.
  explicit KyXmlAttribute(const char* name = nullptr, const char* value = nullptr);
  /// Shares the texts held in arrays; a short text kept inside the node is copied.
  KyXmlAttribute(const KyXmlAttribute& other);
  /// Shares the texts held in arrays; a short text kept inside the node is copied.
  KyXmlAttribute& operator=(const KyXmlAttribute& other);
  /// Frees both texts.
  ~KyXmlAttribute() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  const char* getName() const override { return name; }
  void storeName(char* newName) override;
  const char* getValue() const override { return value; }
  void storeValue(char* newValue) override;

 private:
  friend class KyXmlParser;
  char* name;
  char* value;
  char local[24];
};

/// A comment keeping its text.
class KY_EXPORT KyXmlComment : public KyXmlCommentI {
 public:
  /// An empty comment.
  KyXmlComment() = default;
  /// Shares the text.
  KyXmlComment(const KyXmlComment&) = default;
  /// Shares the text.
  KyXmlComment& operator=(const KyXmlComment&) = default;
  /// Frees the text.
  ~KyXmlComment() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  const char* getComment() const override { return text; }
  void storeComment(char* newText) override;

 private:
  char* text = nullptr;
};

/// Character data keeping its text.
class KY_EXPORT KyXmlText : public KyXmlTextI {
 public:
  /// An empty text.
  KyXmlText() = default;
  /// Shares a text held in an array; a short text kept inside the node is copied.
  KyXmlText(const KyXmlText& other);
  /// Shares a text held in an array; a short text kept inside the node is copied.
  KyXmlText& operator=(const KyXmlText& other);
  /// Frees the text.
  ~KyXmlText() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  const char* getText() const override { return text; }
  void storeText(char* newText) override;
  /// Without a text yet, the same as setText; otherwise one new array of both texts.
  void appendText(const char* more) override;

 private:
  friend class KyXmlParser;
  char* text = nullptr;
  char local[16];
};

/// A CDATA section keeping its data.
class KY_EXPORT KyXmlCData : public KyXmlCDataI {
 public:
  /// An empty section.
  KyXmlCData() = default;
  /// Shares the data.
  KyXmlCData(const KyXmlCData&) = default;
  /// Shares the data.
  KyXmlCData& operator=(const KyXmlCData&) = default;
  /// Frees the data.
  ~KyXmlCData() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  const char* getData() const override { return data; }
  void storeData(char* newData) override;

 private:
  char* data = nullptr;
};

/// An instruction. Only the data is freed by the node: the target array stays with
/// whoever stored it, also when a new target replaces it.
class KY_EXPORT KyXmlPI : public KyXmlPII {
 public:
  /// An instruction of no target and no data.
  KyXmlPI() = default;
  /// Shares the texts.
  KyXmlPI(const KyXmlPI&) = default;
  /// Shares the texts.
  KyXmlPI& operator=(const KyXmlPI&) = default;
  /// Frees the data, not the target.
  ~KyXmlPI() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  const char* getTarget() const override { return target; }
  void storeTarget(char* newTarget) override;
  const char* getData() const override { return data; }
  void storeData(char* newData) override;

 private:
  char* target = nullptr;
  char* data = nullptr;
};

/// A reference holds a number or a name, never both: a name sets the code to -1, a
/// code clears the name. A new reference has code 0 and no name.
class KY_EXPORT KyXmlCharRef : public KyXmlCharRefI {
 public:
  /// A reference of code 0 and no name.
  KyXmlCharRef() = default;
  /// Shares a name held in an array; a short name kept inside the node is copied.
  KyXmlCharRef(const KyXmlCharRef& other);
  /// Shares a name held in an array; a short name kept inside the node is copied.
  KyXmlCharRef& operator=(const KyXmlCharRef& other);
  /// Frees the name.
  ~KyXmlCharRef() override;

  /// A cell from KyMemoryManager; std::bad_alloc when there is none.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);

  int getRefCode() const override { return code; }
  void setRefCode(int newCode) override;
  const char* getRefName() const override { return name; }
  void storeRefName(char* newName) override;

 private:
  friend class KyXmlParser;
  int code = 0;
  char* name = nullptr;
  char local[8];
};

/// An element keeping its tag, attributes and children in lists.
class KY_EXPORT KyXmlElement : public KyXmlElementI {
 public:
  /// An element with a copy of `tag`.
  explicit KyXmlElement(const char* tag = nullptr);
  /// Shares the lists and a tag held in an array; a short tag kept inside the node is
  /// copied.
  KyXmlElement(const KyXmlElement& other);
  /// Shares the lists and a tag held in an array; a short tag kept inside the node is
  /// copied.
  KyXmlElement& operator=(const KyXmlElement& other);
  /// Frees the tag, deletes the attributes and the children (see the family page for
  /// the order).
  ~KyXmlElement() override;

  const char* getTag() const override { return tag; }
  void storeTag(char* newTag) override;
  void addChild(KyXmlNodeI* node) override;
  void addAttribute(KyXmlAttributeI* attribute) override;
  KyXmlAttributeI* getAttribute(const char* name) const override;
  bool doesPreserveWhiteSpaces() const override { return preserve; }
  void preserveWhiteSpaces(bool value) override { preserve = value; }
  /// The text of the first text child, or null.
  const char* getText() const override;
  KyXmlNodeIteratorI* createChildrenIterator() const override;
  KyXmlNodeIteratorI* createAttributesIterator() const override;

  /// The children, in document order.
  KyKyXmlNodeIList& getChildren() { return children; }
  /// The attributes, in document order.
  KyKyXmlAttributeIList& getAttributes() { return attributes; }
  /// The number of children.
  unsigned long getChildrenCardinal() const { return children.getLength(); }
  /// The number of attributes.
  unsigned long getAttributesCardinal() const { return attributes.getLength(); }
  /// The first child element named `tag` after the child `after` (from the start when
  /// `after` is null); null at the end, also when `after` is not a child.
  KyXmlElement* getElement(const char* tag, KyXmlNodeI* after) const;

 private:
  friend class KyXmlParser;
  char* tag;
  char local[16];
  KyKyXmlNodeIList children;
  KyKyXmlAttributeIList attributes;
  bool preserve = false;
};

/// Wraps a borrowed text for the stream operator below, which escapes &, < and >.
class KY_EXPORT KyXmlString {
 public:
  /// Wraps `text`, which must outlive the wrapper.
  KyXmlString(const char* text) : text(text) {}
  /// Wraps the other's text.
  KyXmlString& operator=(const KyXmlString&) = default;

 private:
  friend KY_EXPORT std::ostream& operator<<(std::ostream& stream, const KyXmlString& string);
  const char* text;
};

/// Writes the text with "&amp;", "&lt;" and "&gt;" for the three characters; quotes
/// pass as they are. A null or empty text writes nothing.
KY_EXPORT std::ostream& operator<<(std::ostream& stream, const KyXmlString& string);

/// A count of blanks. Kept for callers that hold one; the library reads none.
class KY_EXPORT KyXmlSpaces {
 public:
  /// Keeps `count`.
  KyXmlSpaces(int count) : count(count) {}
  /// Copies the count.
  KyXmlSpaces& operator=(const KyXmlSpaces&) = default;

 private:
  [[maybe_unused]] int count;
};

#endif  // KYBASE_XML_XML_NODE_H
