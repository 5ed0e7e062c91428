// kyxml FILE: reads an XML file with the library's reader and prints the tree with its
// writer. On a fault prints "FILE:LINE: NAME" (the code number when the code has no
// name) on standard error and exits with 1. --help and --version answer as usual.
#include <kybase/kybase.h>
#include "tool_options.h"

#include <cstring>
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

constexpr char kUsage[] = "usage: kyxml FILE\n";

constexpr char kHelp[] =
    "Reads the XML document FILE with the kybase reader and writes the tree it built\n"
    "to standard output with the kybase writer, in UTF-8.\n"
    "\n"
    "  --help     print this text and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "On a fault of the document, prints FILE:LINE: and the name of the XML error\n"
    "(its number when the error has no name) on standard error.\n"
    "\n"
    "Exit status: 0 the tree was written; 1 FILE cannot be opened or the reader\n"
    "recorded an error; 2 wrong arguments.\n";

}  // namespace

int main(int argc, char** argv) {
  if (KyAnswerToolOption(argc, argv, "kyxml", kUsage, kHelp)) return 0;
  // A file whose name starts with "--" is still reachable as ./--name.
  if (argc != 2 || std::strncmp(argv[1], "--", 2) == 0) {
    std::cerr << kUsage;
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
