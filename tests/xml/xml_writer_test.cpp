#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_node.h"
#include "xml/xml_test_support.h"

namespace {

TEST(XmlWriter, NewDocumentThenSmallTreeByteForByte) {
  KyXmlDocument document;
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n");
  auto* root = new KyXmlElement("a");
  root->addAttribute(new KyXmlAttribute("b", "x\"y&<>"));
  auto* text = new KyXmlText;
  text->setText("t&<>'\"");
  root->addChild(text);
  root->addChild(new KyXmlElement("d"));
  auto* inner = new KyXmlElement("e");
  auto* innerText = new KyXmlText;
  innerText->setText("u");
  inner->addChild(innerText);
  root->addChild(inner);
  auto* comment = new KyXmlComment;
  comment->setComment("c<");
  root->addChild(comment);
  root->addChild(new KyXmlComment);
  auto* data = new KyXmlCData;
  data->setData("y<&");
  root->addChild(data);
  auto* instruction = new KyXmlPI;
  instruction->setData("gone");
  root->addChild(instruction);
  auto* reference = new KyXmlCharRef;
  reference->setRefName("quot");
  root->addChild(reference);
  document.addNode(root);
  auto* lone = new KyXmlElement("p");
  lone->addChild(new KyXmlPI);
  document.addNode(lone);
  EXPECT_EQ(Written(document),
            "<?xml version=\"1.0\"?>\n"
            "<a b=\"x\"y&amp;&lt;&gt;\">\n"
            "t&amp;&lt;&gt;'\"  <d/>\n"
            "  <e>\n"
            "u  </e>\n"
            "<!--c<-->\n"
            "<!---->\n"
            "<![CDATA[y<&]]>\n"
            "</a>\n"
            "<p>\n"
            "</p>\n");
}

TEST(XmlWriter, IndentationStepAndAttributeForms) {
  KyXmlDocument document;
  ASSERT_TRUE(ReadText(document, "<a><b><c/></b></a>"));
  KyXmlElementI::SetIndentation(0);
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<a>\n<b>\n<c/>\n</b>\n</a>\n");
  KyXmlElementI::SetIndentation(3);
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<a>\n   <b>\n      <c/>\n   </b>\n</a>\n");
  KyXmlElementI::SetIndentation(2);
  EXPECT_EQ(KyXmlElementI::GetIndent(), 0u);

  std::ostringstream out;
  KyXmlAttributeI::Write(out, "n", 42L);
  out << ' ';
  KyXmlAttributeI::Write(out, "d", 2.5);
  out << ' ';
  KyXmlAttributeI::Write(out, "s", "a&b");
  out << KyXmlString(nullptr) << KyXmlString("");
  EXPECT_EQ(out.str(), "n=\"42\" d=\"2.5\" s=\"a&amp;b\"");
}

TEST(XmlWriter, DoctypeRestGainsABlankPerRoundTrip) {
  KyXmlDocument document;
  ASSERT_TRUE(ReadText(document, "<!DOCTYPE a SYSTEM 'x'><a/>"));
  EXPECT_STREQ(document.getDoctypeRest(), " SYSTEM 'x'");
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<!DOCTYPE a  SYSTEM 'x'>\n<a/>\n");
  KyXmlDocument bare;
  ReadText(bare, "<!DOCTYPE a><a/>");  // an empty rest, not none: the blank is written
  EXPECT_EQ(Written(bare), "<?xml version=\"1.0\"?>\n<!DOCTYPE a >\n<a/>\n");
}

// Nodes of other classes write through their own forms between the bytes a plain tree
// gathers; a line longer than the gathering block stays whole.
TEST(XmlWriter, OtherClassesInsideAPlainTree) {
  class Loud : public KyXmlAttribute {
   public:
    using KyXmlAttribute::KyXmlAttribute;
    std::ostream& write(std::ostream& stream) const override { return stream << "LOUD"; }
  };
  class Custom : public KyXmlElement {
   public:
    using KyXmlElement::KyXmlElement;
  };
  KyXmlDocument document;
  auto* root = new KyXmlElement("r");
  root->addAttribute(new Loud("a", "1"));
  auto* custom = new Custom("c");
  custom->addAttribute(new KyXmlAttribute("k", "v&"));
  custom->addChild(new KyXmlElement("d"));
  root->addChild(custom);
  auto* text = new KyXmlText;
  text->setText(std::string(300, 'x').c_str());
  root->addChild(text);
  document.addNode(root);
  EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<r LOUD>\n  <c k=\"v&amp;\">\n    <d/>\n  </c>\n" +
                                   std::string(300, 'x') + "</r>\n");
}

// A document subclass that changes the form of one kind: comments are dropped.
class NoComments : public KyXmlDocument {
 public:
  KyXmlCommentI* createComment() const override { return new Silent; }

 private:
  class Silent : public KyXmlComment {
   public:
    std::ostream& write(std::ostream& stream) const override { return stream; }
  };
};

TEST(XmlWriter, ReadAndWriteAgainGrowsWhiteSpace) {
  NoComments document;
  ASSERT_TRUE(ReadText(document, "<a>\n <b x='1'/><!--dropped-->\n</a>"));
  std::string once = Written(document);
  EXPECT_EQ(once, "<?xml version=\"1.0\"?>\n<a>\n\n   <b x=\"1\"/>\n\n</a>\n");
  NoComments again;
  ASSERT_TRUE(ReadText(again, once));
  EXPECT_GT(Written(again).size(), once.size());
}

}  // namespace
