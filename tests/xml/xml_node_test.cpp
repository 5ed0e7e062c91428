#include "kybase/xml/xml_node.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kybase/containers/array.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_factory.h"
#include "kybase/xml/xml_iterators.h"
#include "xml/xml_test_support.h"

namespace {

// A text node that counts what reaches its store operation.
class CountingText : public KyXmlText {
 public:
  void storeText(char* text) override {
    stored.push_back(text != nullptr ? text : "(null)");
    KyXmlText::storeText(text);
  }
  std::vector<std::string> stored;
};

TEST(XmlNode, SetCopiesThroughStoreAndTreatsEmptyAsNull) {
  CountingText text;
  std::string source = "abc";
  text.setText(source.c_str());
  source[0] = 'x';
  EXPECT_STREQ(text.getText(), "abc");  // a copy: the source has changed
  text.setText("");
  EXPECT_EQ(text.getText(), nullptr);
  EXPECT_EQ(text.stored, (std::vector<std::string>{"abc", "(null)"}));

  text.appendText("de");  // no text yet: a set
  text.appendText("f");
  EXPECT_STREQ(text.getText(), "def");
  EXPECT_EQ(text.stored.size(), 3u);

  KyXmlAttribute attribute("", "v");
  EXPECT_EQ(attribute.getName(), nullptr);
  KyXmlElement element("");
  EXPECT_EQ(element.getTag(), nullptr);
}

TEST(XmlNode, TypesCharRefsAndInstructionTargets) {
  KyXmlAttribute attribute;
  KyXmlElement element;
  KyXmlText text;
  KyXmlComment comment;
  KyXmlCData data;
  KyXmlPI instruction;
  KyXmlCharRef reference;
  const KyXmlNodeI* nodes[] = {&attribute, &element, &text, &comment, &data, &instruction, &reference};
  for (int type = 0; type < 7; ++type) EXPECT_EQ(nodes[type]->getType(), type);
  // A reference holds a code or a name, never both.
  EXPECT_EQ(reference.getRefCode(), 0);
  EXPECT_EQ(reference.getRefName(), nullptr);
  reference.setRefName("lt");
  EXPECT_EQ(reference.getRefCode(), -1);
  EXPECT_STREQ(reference.getRefName(), "lt");
  reference.setRefCode(65);
  EXPECT_EQ(reference.getRefCode(), 65);
  EXPECT_EQ(reference.getRefName(), nullptr);
  // An instruction frees its data but never its target.
  char* target = new char[4]{'a', 'b', 'c', '\0'};
  {
    KyXmlPI owner;
    owner.storeTarget(target);
    owner.setData("d");
  }
  EXPECT_STREQ(target, "abc");
  delete[] target;
}

TEST(XmlNode, LookupsAreExactAndFirstWins) {
  KyXmlElement parent("p");
  parent.addAttribute(new KyXmlAttribute("name", "1"));
  parent.addAttribute(new KyXmlAttribute("name", "2"));
  EXPECT_STREQ(parent.getAttributeValue("name"), "1");
  EXPECT_EQ(parent.getAttribute("Name"), nullptr);
  EXPECT_EQ(parent.getAttributeValue("missing"), nullptr);
  EXPECT_EQ(parent.getAttributesCardinal(), 2u);
  // The interface's own lookup walks the iterator and gives the same answer.
  EXPECT_EQ(parent.KyXmlElementI::getAttribute("name"), parent.getAttribute("name"));
  auto* first = new KyXmlElement("x");
  auto* second = new KyXmlElement("x");
  auto* text = new KyXmlText;
  text->setText("t");
  for (KyXmlNodeI* child : {static_cast<KyXmlNodeI*>(text), static_cast<KyXmlNodeI*>(first),
                            static_cast<KyXmlNodeI*>(new KyXmlElement("y")), static_cast<KyXmlNodeI*>(second)})
    parent.addChild(child);
  KyXmlElement stranger("x");
  const std::pair<KyXmlElement*, KyXmlElement*> found[] = {
      {parent.getElement("x", nullptr), first},  {parent.getElement("x", first), second},
      {parent.getElement("x", second), nullptr}, {parent.getElement("X", nullptr), nullptr},
      {parent.getElement("x", &stranger), nullptr}};
  for (const auto& [got, wanted] : found) EXPECT_EQ(got, wanted);
  EXPECT_STREQ(parent.getText(), "t");
}

TEST(XmlNode, InterfaceDefaultsKeepNothing) {
  // An element that keeps nothing disposes of what it is handed; the sanitizer build
  // sees a leak if it did not.
  class Bare : public KyXmlElementI {
   public:
    const char* getTag() const override { return "bare"; }
  };
  Bare bare;
  bare.setTag("t");
  bare.addChild(new KyXmlText);
  bare.addAttribute(new KyXmlAttribute("a", "b"));
  EXPECT_EQ(bare.getAttribute("a"), nullptr);
  EXPECT_EQ(bare.createChildrenIterator(), nullptr);
  bare.preserveWhiteSpaces(true);
  EXPECT_FALSE(bare.doesPreserveWhiteSpaces());

  KyXmlNodeFactory factory;
  EXPECT_EQ(factory.createElement(nullptr), nullptr);
  EXPECT_EQ(factory.createText(), nullptr);
}

TEST(XmlNode, IteratorsWalkTheirSources) {
  KyXmlText a;
  KyXmlComment b;
  KyArray array;
  array.add(&a);
  array.add(&b);
  KyXmlNodeArrayIterator overArray(array);
  const KyXmlNodeI* pointers[] = {&b, &a};
  KyXmlNodePtrArrayIterator overPointers(2, pointers);
  std::vector<KyXmlNodeI*> seen;
  while (overArray.hasMoreNodes()) seen.push_back(overArray.getNextNode());
  while (overPointers.hasMoreNodes()) seen.push_back(overPointers.getNextNode());
  EXPECT_EQ(seen, (std::vector<KyXmlNodeI*>{&a, &b, &b, &a}));
  EXPECT_EQ(overArray.getNextNode(), nullptr);
  EXPECT_EQ(overPointers.getNextNode(), nullptr);

  KyXmlNodeIterator empty(nullptr);
  EXPECT_FALSE(empty.hasMoreNodes());
  EXPECT_EQ(empty.getNextNode(), nullptr);
  KyXmlElement element("e");
  element.addChild(new KyXmlText);
  KyXmlNodeIterator wrapped(element.createChildrenIterator());
  EXPECT_TRUE(wrapped.hasMoreNodes());
  EXPECT_EQ(wrapped.getNextNode()->getType(), KyXmlNodeI::Text);
  EXPECT_FALSE(wrapped.hasMoreNodes());
}

TEST(XmlNode, DocumentRootVersionAndEmpty) {
  KyXmlDocument document;
  EXPECT_EQ(document.getRootElement(), nullptr);
  ASSERT_TRUE(ReadText(document, "<?xml version='2.5'?><!--c--><?pi x?><root/>"));
  ASSERT_NE(document.getRootElement(), nullptr);
  EXPECT_STREQ(document.getRootElement()->getTag(), "root");
  EXPECT_EQ(document.getNodes().getLength(), 3u);
  FreeTargets(document.getNodes());
  document.empty();
  EXPECT_EQ(document.getNodes().getLength(), 0u);
  EXPECT_STREQ(document.getVersion(), "2.5");
  // A new read stores a new version and leaves the old array to whoever holds it.
  const char* old = document.getVersion();
  ReadText(document, "<?xml version='3'?><r/>");
  EXPECT_STREQ(document.getVersion(), "3");
  EXPECT_STREQ(old, "2.5");
  delete[] old;
}

// Texts that fit inside the node, texts that do not, and the two around the edge, in
// every node the reader fills in place. Copies keep short texts after the tree is gone,
// and storing over a kept text never frees it (the sanitizer build sees that).
TEST(XmlNode, ReadTextsSurviveCopiesStoresAndTheTree) {
  KyXmlDocument document;
  ReadText(document,
           "<r a='1' name-of-eighteen='value-of-5' b='fifteen letters' c='sixteen letters!' d='x&#0;y' "
           "e='t&amp;u'>fifteen letters<tag-of-fifteen1/>&lt;&abcdefg;&abcdefgh;sixteen letters!</r>");
  EXPECT_EQ(Written(document),
            "<?xml version=\"1.0\"?>\n<r a=\"1\" name-of-eighteen=\"value-of-5\" b=\"fifteen letters\" "
            "c=\"sixteen letters!\" d=\"x\" e=\"t&amp;u\">\nfifteen letters  <tag-of-fifteen1/>\n"
            "&lt;sixteen letters!</r>\n");
  KyXmlElement* root = document.getRootElement();
  KyKyXmlNodeIList& children = root->getChildren();
  ASSERT_EQ(children.getLength(), 6u);
  auto* shortText = static_cast<KyXmlText*>(children[0]);
  auto* reference = static_cast<KyXmlCharRef*>(children[3]);
  EXPECT_STREQ(reference->getRefName(), "abcdefg");
  EXPECT_STREQ(static_cast<KyXmlCharRef*>(children[4])->getRefName(), "abcdefgh");

  KyXmlText textCopy(*shortText);
  KyXmlAttribute attributeCopy(*static_cast<KyXmlAttribute*>(root->getAttribute("a")));
  KyXmlCharRef referenceCopy(*reference);
  KyXmlElement elementCopy(*root);
  elementCopy.getChildren() = KyKyXmlNodeIList();
  elementCopy.getAttributes() = KyKyXmlAttributeIList();
  shortText->appendText(" and more");
  EXPECT_STREQ(shortText->getText(), "fifteen letters and more");
  reference->setRefCode(62);
  root->setTag("renamed");
  document.empty();
  EXPECT_STREQ(textCopy.getText(), "fifteen letters");
  EXPECT_STREQ(attributeCopy.getValue(), "1");
  EXPECT_STREQ(referenceCopy.getRefName(), "abcdefg");
  EXPECT_STREQ(elementCopy.getTag(), "r");
}

// A caller's text node that records its text when it dies.
struct LoggedText : KyXmlText {
  explicit LoggedText(std::vector<std::string>& log) : log(log) {}
  ~LoggedText() override { log.push_back(getText()); }
  std::vector<std::string>& log;
};

struct LoggingDocument : KyXmlDocument {
  KyXmlTextI* createText() const override { return new LoggedText(log); }
  mutable std::vector<std::string> log;
};

TEST(XmlNode, NodesOfOtherClassesDieInListOrder) {
  LoggingDocument document;
  ReadText(document, "<r>one<a/>two<b>three</b>four</r>");
  document.empty();
  EXPECT_EQ(document.log, (std::vector<std::string>{"one", "two", "three", "four"}));
}

TEST(XmlError, RecordAndNames) {
  KyXmlError::Reset();
  KyXmlError::Severity severity = KyXmlError::kError;
  int code = 9;
  int line = 9;
  EXPECT_EQ(KyXmlError::Get(severity, code, line), nullptr);
  EXPECT_EQ(CurrentFault(), (XmlFault{0, 0, 0}));
  EXPECT_FALSE(KyXmlError::IsSet());
  const std::pair<int, const char*> names[] = {
      {1, "INVALID_DOCUMENT"},           {4, "END_OF_DOCUMENT_EXPECTED"},   {7, "INVALID_SD_DECLARATION"},
      {8, nullptr},                      {9, "INVALID_DECLARATION_END"},    {12, "INVALID_CDATA"},
      {14, "INVALID_ENCODING_DECLARATION"}, {22, "INVALID_REFERENCE_DECLARATION"}, {24, "INVALID_DOCTYPE_NAME"},
      {25, nullptr},                     {26, nullptr},                     {-1, nullptr},
  };
  for (const auto& [wanted, name] : names) {
    KyXmlError::Set(KyXmlError::kWarning, wanted, 7);
    const char* got = KyXmlError::Get(severity, code, line);
    if (name == nullptr) {
      EXPECT_EQ(got, nullptr) << wanted;
    } else {
      EXPECT_STREQ(got, name) << wanted;
    }
    EXPECT_EQ(CurrentFault(), (XmlFault{1, wanted, 7}));
  }
  KyXmlError::Reset();
}

}  // namespace
