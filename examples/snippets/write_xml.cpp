// Builds a document in memory and writes it. Every node belongs to the element or
// document it was added to, and dies with it.
#include <kybase/kybase.h>

#include <iostream>

KyXmlElement* item(const char* tag, const char* content, const char* count) {
  auto* element = new KyXmlElement(tag);
  element->addAttribute(new KyXmlAttribute("content", content));
  auto* text = new KyXmlText;
  text->setText(count);  // set... copies; store... would take the array itself
  element->addChild(text);
  return element;
}

int main() {
  KyXmlDocument document;
  auto* comment = new KyXmlComment;
  comment->setComment(" The pantry, counted on Sunday. ");
  document.addNode(comment);
  auto* pantry = new KyXmlElement("pantry");
  pantry->addAttribute(new KyXmlAttribute("room", "cellar & shed"));
  pantry->addChild(item("jar", "plum jam", "4"));
  pantry->addChild(item("crate", "apples", "half full"));
  document.addNode(pantry);
  document.write(std::cout);
  return 0;
}
