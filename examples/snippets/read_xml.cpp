// Reads an XML file and walks its elements, depth first: tag, attributes, text.
#include <kybase/kybase.h>

#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

void walk(const KyXmlElementI& element, int depth) {
  std::cout << std::string(2 * depth, ' ') << element.getTag();
  KyXmlNodeIteratorI* attributes = element.createAttributesIterator();
  while (KyXmlNodeI* node = attributes->getNextNode()) {
    auto* attribute = static_cast<KyXmlAttributeI*>(node);
    std::cout << ' ' << attribute->getName() << "=\"" << attribute->getValue() << '"';
  }
  delete attributes;
  const char* text = element.getText();  // the first text child, blanks between tags too
  if (text && std::string_view(text).find_first_not_of(" \t\r\n") != std::string_view::npos)
    std::cout << ": " << text;
  std::cout << '\n';
  KyXmlNodeIteratorI* children = element.createChildrenIterator();
  while (KyXmlNodeI* child = children->getNextNode())
    if (child->getType() == KyXmlNodeI::Element) walk(*static_cast<KyXmlElementI*>(child), depth + 1);
  delete children;
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  KyXmlDocument document;
  KyXmlError::Reset();  // read() records faults here and never clears the record
  document.read(file);
  KyXmlError::Severity severity;
  int code, line;
  if (const char* name = KyXmlError::Get(severity, code, line); severity != KyXmlError::kNone) {
    std::cerr << argv[1] << ':' << line << ": " << (name ? name : "XML error") << '\n';
    return 1;
  }
  walk(*document.getRootElement(), 0);
  return 0;
}
