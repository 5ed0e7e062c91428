// kyxml FILE: reads an XML file with the library's reader and prints the tree with its
// writer. On a fault prints "FILE:LINE: NAME" (the code number when the code has no
// name) on standard error and exits with 1.
#include <kybase/kybase.h>

#include <fstream>
#include <iostream>

namespace {

// Instruction targets are not freed by the library's nodes; these free their own.
class Instruction : public KyXmlPI {
 public:
  ~Instruction() override { delete[] getTarget(); }
};

class Document : public KyXmlDocument {
 public:
  KyXmlPII* createPI() const override { return new Instruction; }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: kyxml FILE\n";
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  if (!file) {
    std::cerr << argv[1] << ": cannot open\n";
    return 1;
  }
  Document document;
  KyXmlError::Reset();
  document.read(file);
  KyXmlError::Severity severity;
  int code;
  int line;
  const char* name = KyXmlError::Get(severity, code, line);
  if (severity != KyXmlError::kNone) {
    std::cerr << argv[1] << ':' << line << ": ";
    if (name != nullptr)
      std::cerr << name << '\n';
    else
      std::cerr << code << '\n';
    return 1;
  }
  document.write(std::cout);
  return 0;
}
