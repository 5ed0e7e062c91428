#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "kybase/xml/xml_node.h"
#include "xml/xml_test_support.h"

namespace {

std::string Utf16(const std::string& ascii, bool bigEndian, bool mark) {
  std::string out;
  auto unit = [&](unsigned value) {
    char low = static_cast<char>(value & 0xFF);
    char high = static_cast<char>(value >> 8);
    out += bigEndian ? high : low;
    out += bigEndian ? low : high;
  };
  if (mark) unit(0xFEFF);
  for (unsigned char c : ascii) unit(c);
  return out;
}

// The text of the root's first child, which must be a text node.
std::string RootText(KyXmlDocument& document) {
  KyXmlElement* root = document.getRootElement();
  if (root == nullptr || root->getText() == nullptr) return "(none)";
  return root->getText();
}

TEST(XmlParser, EncodingTable) {
  const std::tuple<std::string, int, std::string> cases[] = {
      {"<a>\xC3\xA9</a>", 0, "\xC3\xA9"},
      {"\xEF\xBB\xBF<a>x</a>", 0, "x"},
      {Utf16("<a>x</a>", false, true), 0, "x"},
      {Utf16("<a>x</a>", true, true), 0, "x"},
      // UTF-16 without a mark: little-endian reaches the UTF-8 row and fails on the
      // zero unit after "<"; big-endian starts with a zero byte.
      {Utf16("<a>x</a>", false, false), KyXmlError::kInvalidTagName, ""},
      {Utf16("<a>x</a>", true, false), KyXmlError::kInvalidDocument, ""},
      {"  <a>x</a>", KyXmlError::kInvalidDocument, ""},
      {"<a/>   ", KyXmlError::kInvalidDocument, ""},
      {"<a/>    ", 0, "(none)"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>", 0, "\xC3\xA9"},
      // Beyond the basic plane: U+FFFD from UTF-8, four bytes from a UTF-16 pair.
      {"<a>\xF0\x9F\x98\x80</a>", 0, "\xEF\xBF\xBD"},
      {"<a>\xF8\x88\x80\x80\x80</a>", 0, "\xEF\xBF\xBD"},
      {Utf16("<a>", false, true) + std::string("\x3D\xD8\x00\xDE", 4) + Utf16("</a>", false, false), 0,
       "\xF0\x9F\x98\x80"},
      // Trailing bytes are not checked: a lead byte takes the "<" after it.
      {"<a>\xC3</a>  ", KyXmlError::kEndOfDocumentUnexpected, ""},
      // A sequence cut off by the end of the input is read no further.
      {"<a/>      \xF0\x9F", KyXmlError::kEndOfDocumentExpected, ""},
  };
  for (const auto& [bytes, code, text] : cases) {
    KyXmlDocument document;
    ReadText(document, bytes);
    EXPECT_EQ(CurrentFault().code, code) << bytes;
    if (code == 0) {
      EXPECT_EQ(RootText(document), text) << bytes;
    } else {
      EXPECT_EQ(document.getNodes().getLength(), 0u) << bytes;
    }
  }
}

TEST(XmlParser, EveryErrorWithItsLine) {
  const std::tuple<const char*, XmlFault> cases[] = {
      {"", {2, 1, 1}}, {"<?xml version='1.0'?>", {2, 2, 1}},
      {"<!-- never closed", {2, 3, 1}}, {"<a>x</a>\n\ny", {1, 4, 3}},
      {"<a>\n\ntext", {2, 5, 3}}, {"<?xml?><a/>", {2, 6, 1}},
      {"<?xml version='1.0'\nstandalone='maybe'?><a/>", {2, 7, 2}}, {"<!DOCTYPE a SYSTEM x><a/>", {2, 8, 1}},
      {"<!DOCTYPE a PUBLIC 'a{b' 'c'><a/>", {2, 8, 1}}, {"<?xml version='1.0'\n x?><a/>", {2, 9, 2}},
      {"<!-- a -- b --><a/>", {2, 10, 1}}, {"<!---->\n<?xmlfoo?><a/>", {2, 11, 2}},
      {"<a>\n<![CDATA[x\x01]]></a>", {2, 12, 2}}, {"<?xml version='1.0' encoding='8bit'?><a/>", {2, 13, 1}},
      {"<?xml version='1.0' encoding=UTF-8?><a/>", {2, 14, 1}}, {"<a>\n< b/></a>", {2, 15, 2}},
      {"<a b='<'/>   ", {2, 16, 1}}, {"<a>x</a x>", {2, 17, 1}},
      {"<a>\n</b>   ", {2, 18, 2}}, {"<a b='1'c='2'/>", {2, 19, 1}},
      {"<a b/>      ", {2, 20, 1}}, {"<a b=1/>    ", {2, 21, 1}},
      {"<a>&#X41;</a>", {2, 22, 1}}, {"<a>%x;</a>  ", {2, 22, 1}},
      {"<a b='&#X41;'/>", {2, 23, 1}}, {"<!DOCTYPE 1a><a/>", {2, 24, 1}},
      // Unfinished constructs on which an unguarded reader would loop for ever; CTest's
      // time limit catches a hang.
      {"<a>text <", {2, 5, 1}}, {"<a><b>x</b>\n<", {2, 5, 2}},
      {"<!DOCTYPE a [ <!ENTITY x 'y'>", {2, 3, 1}}, {"<!DOCTYPE a SYSTEM 'x'", {2, 3, 1}},
      {"<?pi never closed", {2, 3, 1}}, {"<a><?pi never closed", {2, 3, 1}},
      {"<a>x</a><?pi never", {2, 3, 1}}, {"<root><tag \n", {2, 3, 2}},
      {"<a b='1' c='x&", {2, 3, 1}},
  };
  for (const auto& [text, fault] : cases) {
    KyXmlDocument document;
    ReadText(document, text);
    EXPECT_EQ(CurrentFault(), fault) << text;
    EXPECT_EQ(document.getNodes().getLength(), 0u) << text;
    // The error left standing empties the next read at once and stays as it was.
    std::istringstream again("<a/>     ");
    document.read(again);
    EXPECT_EQ(document.getNodes().getLength(), 0u) << text;
    EXPECT_EQ(CurrentFault(), fault) << text;
  }
}

TEST(XmlParser, ReferenceOddities) {
  struct Case {
    const char* text;
    std::vector<std::string> pieces;  // child texts; "@name" for a kept reference
  };
  const Case cases[] = {
      {"<a>&#x41;</a>", {"A"}}, {"<a>&#xA;</a>  ", {}}, {"<a>&#xff;</a>  ", {"U"}},
      {"<a>&#xFF;</a>  ", {"U"}}, {"<a>&#233;</a>  ", {"\xE9"}}, {"<a>&#65601;</a>", {"A"}},
      {"<a>&quote;</a> ", {"'"}}, {"<a>&LT;&Gt;&aMp;</a>", {"<", ">", "&"}},
      {"<a>&quot;&apos;</a>", {"@quot", "@apos"}},
      {"<a>&#65535;</a>", {"@"}}, {"<a>a&amp;b</a>", {"a", "&", "b"}},
  };
  for (const Case& c : cases) {
    KyXmlDocument document;
    ASSERT_TRUE(ReadText(document, c.text)) << c.text;
    std::vector<std::string> pieces;
    for (Ky_List::Cell* cell = document.getRootElement()->getChildren().getFirst(); cell; cell = cell->getNext()) {
      auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
      if (node->getType() == KyXmlNodeI::Text) {
        pieces.push_back(static_cast<KyXmlTextI*>(node)->getText());
      } else {
        auto* reference = static_cast<KyXmlCharRefI*>(node);
        pieces.push_back("@" + std::string(reference->getRefName() ? reference->getRefName() : ""));
      }
    }
    EXPECT_EQ(pieces, c.pieces) << c.text;
  }
  KyXmlDocument values;
  ASSERT_TRUE(ReadText(values, "<a v='&quot;x&lt;&#x41;&#65;y' w=\"&amp;&#xA;z\" e=''/>"));
  KyXmlElement* root = values.getRootElement();
  EXPECT_STREQ(root->getAttributeValue("v"), "&quot;x<AAy");
  EXPECT_EQ(std::string(root->getAttributeValue("w"), 3), std::string("&\0z", 3));
  EXPECT_STREQ(root->getAttributeValue("e"), "");
}

TEST(XmlParser, CommentInsideAnElementClearsAChildsError) {
  KyXmlDocument document;
  EXPECT_TRUE(ReadText(document, "<a><b x='1'?<!--c--></a>"));
  KyXmlElement* root = document.getRootElement();
  ASSERT_NE(root, nullptr);
  ASSERT_EQ(root->getChildrenCardinal(), 1u);
  EXPECT_EQ(root->getChildren()[0]->getType(), KyXmlNodeI::Comment);

  // After a failed end tag the comment belongs to the failed child, which is lost.
  EXPECT_TRUE(ReadText(document, "<a><b></<!--x--></a>"));
  EXPECT_EQ(document.getRootElement()->getChildrenCardinal(), 0u);

  // Instructions and reserved targets: no error inside the element, an error outside.
  EXPECT_TRUE(ReadText(document, "<a><?xmlfoo x?><?xml-stylesheet href='a'?>x</a>"));
  ASSERT_EQ(document.getRootElement()->getChildrenCardinal(), 3u);
  auto* reserved = static_cast<KyXmlPII*>(document.getRootElement()->getChildren()[0]);
  EXPECT_EQ(reserved->getTarget(), nullptr);
  EXPECT_STREQ(reserved->getData(), "x");
  FreeTargets(document.getNodes());
  ReadText(document, "<a/><?xmlfoo?>");
  EXPECT_EQ(CurrentFault().code, KyXmlError::kReservedPiTargetName);
  EXPECT_EQ(document.getNodes().getLength(), 0u);
}

TEST(XmlParser, PrologDoctypeAndSpacePreserve) {
  KyXmlDocument document;
  ReadText(document,
           "<?XML version=\"1.0\" encoding='UTF-8' standalone='no'?>\n"
           "<!DOCTYPE a [ <!ENTITY b ']'> ]>");
  // The internal subset ends at the first "]"; the rest then reads as content.
  EXPECT_EQ(CurrentFault().code, KyXmlError::kEmptyDocument);
  EXPECT_STREQ(document.getDoctypeRest(), " [ <!ENTITY b ']'");
  // Without a root, what the prolog made stays.
  ReadText(document, "<!--c-->\n<?p?>  ");
  EXPECT_EQ(CurrentFault().code, KyXmlError::kEmptyDocument);
  EXPECT_EQ(document.getNodes().getLength(), 2u);
  FreeTargets(document.getNodes());
  // A second document type replaces the first without freeing it.
  const char* oldName = document.getDoctypeName();
  const char* oldRest = document.getDoctypeRest();
  ASSERT_TRUE(ReadText(document,
                       "<!DOCTYPE r PUBLIC '-//x//y' 's'>\n<r xml:space='preserve'><s xml:space='default'/></r>"));
  EXPECT_STREQ(oldName, "a");
  EXPECT_STREQ(document.getDoctypeName(), "r");
  delete[] oldName;
  delete[] oldRest;
  EXPECT_TRUE(document.getRootElement()->doesPreserveWhiteSpaces());
  EXPECT_FALSE(document.getRootElement()->getElement("s", nullptr)->doesPreserveWhiteSpaces());
  EXPECT_TRUE(ReadText(document, "<a b='1' b='2'>]</a>"));
  EXPECT_STREQ(document.getRootElement()->getAttributeValue("b"), "1");
  EXPECT_EQ(document.getRootElement()->getAttributesCardinal(), 2u);
  EXPECT_STREQ(document.getRootElement()->getText(), "]");
}

// Records every event of a read; keeps the tree as KyXmlDocument does.
class Listener : public KyXmlDocument {
 public:
  void startElement(KyXmlElementI* e) override { log.push_back(std::string("start:") + e->getTag()); }
  void attributeAdded(KyXmlElementI*, KyXmlAttributeI* a) override { log.push_back(std::string("attr:") + a->getName()); }
  void endElement(KyXmlElementI* e) override { log.push_back(std::string("end:") + e->getTag()); }
  void textAdded(KyXmlTextI* t) override { log.push_back(std::string("text:") + t->getText()); }
  void commentAdded(KyXmlCommentI* c) override { log.push_back(std::string("comment:") + c->getComment()); }
  void charRefAdded(KyXmlCharRefI* r) override { log.push_back(std::string("ref:") + r->getRefName()); }
  void cDataAdded(KyXmlCDataI* d) override { log.push_back(std::string("cdata:") + d->getData()); }
  void processingInstructionAdded(KyXmlPII*) override { log.push_back("pi"); }
  void addNode(KyXmlNodeI* node) override {
    log.push_back("node:" + std::to_string(node->getType()));
    KyXmlDocument::addNode(node);
  }
  std::vector<std::string> log;
};

TEST(XmlParser, ChildrenArriveBeforeTheirParents) {
  Listener document;
  ASSERT_TRUE(ReadText(document, "<!--p--><r a='1'><c>t&quot;</c><![CDATA[d]]><?i?></r>"));
  EXPECT_EQ(document.log, (std::vector<std::string>{"comment:p", "node:3", "start:r", "attr:a", "start:c", "text:t",
                                                    "ref:quot", "end:c", "cdata:d", "end:r", "node:1"}));
  FreeTargets(document.getNodes());
}

// A document that keeps nothing: elements dispose of their children, the document of
// its top-level nodes. The sanitizer build checks that nothing is left behind.
class Forgetful : public KyXmlDocumentI {
 public:
  class Element : public KyXmlElementI {
   public:
    ~Element() override { delete[] tag; }
    const char* getTag() const override { return tag; }
    void storeTag(char* newTag) override {
      delete[] tag;
      tag = newTag;
    }

   private:
    char* tag = nullptr;
  };
  class Instruction : public KyXmlPI {
   public:
    ~Instruction() override { delete[] getTarget(); }
  };

  void addNode(KyXmlNodeI* node) override {
    ++nodes;
    delete node;
  }
  void endElement(KyXmlElementI*) override { ++elements; }
  KyXmlElementI* createElement(char* tag) const override {
    auto* element = new Element;
    element->storeTag(tag);
    return element;
  }
  KyXmlPII* createPI() const override { return new Instruction; }
  int nodes = 0;
  int elements = 0;
};

TEST(XmlParser, DocumentThatKeepsNothingHearsEveryElement) {
  Forgetful document;
  EXPECT_TRUE(ReadText(document, "<?p x?><r a='1'><c>t</c><c/><?q?></r><!--e-->"));
  EXPECT_EQ(document.elements, 3);
  EXPECT_EQ(document.nodes, 3);
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n");

  class NoElements : public Forgetful {
   public:
    KyXmlElementI* createElement(char* tag) const override {
      delete[] tag;
      return nullptr;
    }
  } refusing;
  ReadText(refusing, "<a/>    ");
  EXPECT_EQ(CurrentFault(), (XmlFault{2, KyXmlError::kElementNotCreated, 1}));
}

TEST(XmlParser, HundredThousandLevelsDeep) {
  constexpr int kDepth = 100000;
  std::string text;
  for (int i = 0; i < kDepth; ++i) text += "<e>";
  std::string unfinished = text + "x";
  text += "x";
  for (int i = 0; i < kDepth; ++i) text += "</e>";
  KyXmlDocument document;
  ASSERT_TRUE(ReadText(document, text));
  int depth = 0;
  for (KyXmlElement* element = document.getRootElement(); element; element = element->getElement("e", nullptr))
    ++depth;
  EXPECT_EQ(depth, kDepth);
  KyXmlElementI::SetIndentation(0);
  std::string written = Written(document);
  KyXmlElementI::SetIndentation(2);
  EXPECT_EQ(written.size(), 22 + 4 * kDepth + 5 * kDepth + 1);
  Forgetful listener;
  ReadText(listener, text);
  EXPECT_EQ(listener.elements, kDepth);
  ReadText(document, unfinished);  // the deep tree read before goes with this read
  EXPECT_EQ(CurrentFault().code, KyXmlError::kEndOfDocumentUnexpected);
  EXPECT_EQ(document.getNodes().getLength(), 0u);
}

}  // namespace
