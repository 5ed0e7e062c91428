// Module descriptors: the object the loader keeps for each module, and the reading of
// one descriptor file in either of its two forms.
#include <dlfcn.h>
#include <sys/stat.h>

#include <cmath>
#include <climits>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "kybase/core/global_context.h"
#include "kybase/modules/modules_internal.h"
#include "kybase/text/number_text.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_node.h"

_KyModuleDescriptor* KyModuleLoader::Chain = nullptr;
_KyModuleDescriptor* KyModuleLoader::Retired = nullptr;
int KyModuleLoader::TraceMask = 0;
KyModule::Error KyModuleLoader::Status = KyModule::kNoError;
bool KyModuleLoader::Started = false;

namespace {

char* CopyName(const char* text) {
  if (text == nullptr || text[0] == '\0') return nullptr;
  std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

// Instruction targets are not freed by the library's nodes; a descriptor's document
// frees its own, so reading descriptors leaks nothing.
class Instruction : public KyXmlPI {
 public:
  ~Instruction() override { delete[] getTarget(); }
};

class DescriptorDocument : public KyXmlDocument {
 public:
  KyXmlPII* createPI() const override { return new Instruction; }
};

// The old form's first characters, matched one by one.
constexpr char kOldFormMark[] = "// KYRL Panes";
constexpr std::streamsize kOldFormLineLimit = 1024;

KyXmlElement* ClassElement(const std::string& name, const std::string& root) {
  auto* element = new KyXmlElement("class");
  element->addAttribute(new KyXmlAttribute("name", name.c_str()));
  element->addAttribute(new KyXmlAttribute("rootClass", root.c_str()));
  return element;
}

// The old text form: groups of a root class, an opening token, class names and a
// token starting with "}". Gives the document, or null when no class was seen.
KyXmlDocument* ReadOldForm(std::istream& in, const char* moduleName) {
  in.ignore(kOldFormLineLimit, '\n');
  auto* module = new KyXmlElement("module");
  module->addAttribute(new KyXmlAttribute("name", moduleName != nullptr ? moduleName : ""));
  module->addAttribute(new KyXmlAttribute("version", "6.1"));
  auto* document = new KyXmlDocument;
  bool classes = false;
  std::string token;
  in >> token;
  while (in) {
    const std::string root = token;
    in >> token;
    in >> token;
    while (in && token[0] != '}') {
      module->addChild(ClassElement(token, root));
      classes = true;
      in >> token;
    }
    in >> token;
  }
  if (!classes) {
    delete module;
    delete document;
    return nullptr;
  }
  document->addNode(module);
  return document;
}

}  // namespace

_KyModuleDescriptor::_KyModuleDescriptor(const char* moduleName, int moduleVersion, const KyPathName& libraryPath,
                                         KyXmlDocument* moduleDocument)
    : name(CopyName(moduleName)),
      version(moduleVersion),
      library(libraryPath),
      document(moduleDocument),
      next(KyModuleLoader::Chain) {
  KyModuleLoader::Chain = this;
  KyGlobalContext::SetModuleShutdownHook(KyModuleLoader::releaseDescriptors);
}

_KyModuleDescriptor::~_KyModuleDescriptor() {
  delete[] name;
  delete document;
  if (handle != nullptr) dlclose(handle);
  handle = nullptr;
}

double KyModuleLoader::versionCode(const char* text) {
  double value = 0.0;
  if (text != nullptr) {
    char* end = nullptr;
    KyStringToDouble(text, end, value);
  }
  return std::trunc(value * 100.0 + 0.5);
}

void KyModuleLoader::scanDescriptor(const KyPathName& file, const KyPathName& library) {
  const KyString path = file.getString(KyPathName::kSystemPathType);
  if ((TraceMask & 1) != 0)
    std::cerr << "KyModuleLoader: Scanning " << path << " - lib=" << library.getString(KyPathName::kSystemPathType) << std::endl;

  // A FIFO, device or directory is passed over unread: reading one could block or
  // never end.
  struct stat info;
  if (::stat(path, &info) != 0 || !S_ISREG(info.st_mode)) return;
  std::ifstream in(static_cast<const char*>(path), std::ios::binary);
  if (!in) return;

  KyPathName stem(file);
  stem.setExtension(KyString(), -1, 0);
  const KyString moduleName = stem.getFileName();

  int matched = 0;
  while (kOldFormMark[matched] != '\0' && in.get() == kOldFormMark[matched]) ++matched;
  if (kOldFormMark[matched] == '\0') {
    KyXmlDocument* document = ReadOldForm(in, moduleName);
    if (document == nullptr) return;
    std::cerr << "KyModule warning: module descriptor '" << path
              << "' has an old format.\nHere is the new preferred format:" << std::endl;
    document->write(std::cerr);
    std::cerr.flush();
    new _KyModuleDescriptor(moduleName, KyModule::kLibraryVersion, library, document);
    return;
  }

  in.clear();
  in.seekg(0);
  auto* document = new DescriptorDocument;
  document->read(in);
  KyXmlElement* root = document->getRootElement();
  if (root == nullptr || root->getTag() == nullptr || std::strcmp(root->getTag(), "module") != 0) {
    std::cerr << "KyModuleLoader error: File '" << path << " is not a valid Module Descriptor" << std::endl;
    delete document;
    return;
  }
  const char* versionText = root->getAttributeValue("version");
  const double code = versionCode(versionText);
  if (std::isnan(code) || code > KyModule::kLibraryVersion) {
    std::cerr << "KyModule: Invalid version (\"" << (versionText != nullptr ? versionText : "")
              << "\") in module descriptor '" << path << "'. Expecting \"" << 6 << "." << 2 << "\"" << std::endl;
    delete document;
    return;
  }
  const int version = code < INT_MIN ? INT_MIN : static_cast<int>(code);
  new _KyModuleDescriptor(moduleName, version, library, document);
}
