// Fuzz target of KyXmlDocumentI::read: arbitrary bytes are read into a KyXmlDocument
// (then written out and read back), into a derived document that makes its own
// instruction nodes, and into a document that keeps nothing. Any crash, hang, leak or
// sanitizer report is a fault of the reader or the writer.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "kybase/xml/xml_node.h"

namespace {

// Instruction targets stay with whoever stored them, and a node dropped by a failed
// read cannot be reached afterwards: the fuzzed documents make instructions that free
// their own target.
class Instruction : public KyXmlPI {
 public:
  ~Instruction() override { delete[] getTarget(); }
};

// Keeps the tree as KyXmlDocument does.
class Keeping : public KyXmlDocument {
 public:
  KyXmlPII* createPI() const override { return new Instruction; }
};

// Keeps nothing: every node is disposed of as soon as it is handed over.
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
  void addNode(KyXmlNodeI* node) override { delete node; }
  KyXmlElementI* createElement(char* tag) const override {
    auto* element = new Element;
    element->storeTag(tag);
    return element;
  }
  KyXmlPII* createPI() const override { return new Instruction; }
};

// A plain document's instructions keep their targets: they are freed before the tree
// goes, walking it without recursion as it may be deep.
void FreeTargets(KyXmlDocument& document) {
  std::vector<Ky_List::Cell*> pending{document.getNodes().getFirst()};
  while (!pending.empty()) {
    Ky_List::Cell* cell = pending.back();
    pending.pop_back();
    if (cell == nullptr) continue;
    pending.push_back(cell->getNext());
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    if (node != nullptr && node->getType() == KyXmlNodeI::PI) {
      auto* instruction = static_cast<KyXmlPII*>(node);
      delete[] instruction->getTarget();
      instruction->storeTarget(nullptr);
    } else if (auto* element = dynamic_cast<KyXmlElement*>(node)) {
      pending.push_back(element->getChildren().getFirst());
    }
  }
}

std::string ReadAndWrite(const std::string& bytes) {
  KyXmlError::Reset();
  std::istringstream in(bytes);
  KyXmlDocument document;
  document.read(in);
  std::ostringstream out;
  document.write(out);
  FreeTargets(document);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  std::string written = ReadAndWrite(bytes);
  if (!KyXmlError::IsSet()) ReadAndWrite(written);
  KyXmlError::Reset();
  std::istringstream in(bytes);
  Keeping keeping;
  keeping.read(in);
  KyXmlError::Reset();
  in.clear();
  in.seekg(0);
  Forgetful forgetful;
  forgetful.read(in);
  KyXmlError::Reset();
  return 0;
}
