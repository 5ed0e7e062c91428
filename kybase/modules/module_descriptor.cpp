// Module descriptors: the object the loader keeps for each module, and the reading of
// one descriptor file in either of its two forms.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>
#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <climits>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

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

// Names of the chain to their newest descriptor. Never destroyed, so a shut-down that
// runs late in the process's exit still finds it.
std::unordered_map<std::string, _KyModuleDescriptor*>& Names() {
  static auto* names = new std::unordered_map<std::string, _KyModuleDescriptor*>;
  return *names;
}

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

// Reads a whole file, when it is a regular one: a FIFO could block, a device might
// never end. The check is made on the open file, so nothing can swap it in between.
bool ReadRegularFile(const char* path, std::string& text) {
  const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat info;
  bool regular = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
  // The size known from fstat spares the read that would only find the end.
  if (regular) text.resize(static_cast<std::size_t>(info.st_size));
  std::size_t done = 0;
  while (regular && done < text.size()) {
    const ssize_t got = ::read(fd, &text[done], text.size() - done);
    if (got > 0)
      done += static_cast<std::size_t>(got);
    else if (got == 0)
      text.resize(done);
    else
      regular = errno == EINTR;
  }
  ::close(fd);
  return regular;
}

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
  if (name != nullptr) Names()[name] = this;
  KyGlobalContext::SetModuleShutdownHook(KyModuleLoader::releaseDescriptors);
}

_KyModuleDescriptor::~_KyModuleDescriptor() {
  delete[] name;
  delete document;
  if (handle != nullptr) dlclose(handle);
  handle = nullptr;
}

_KyModuleDescriptor* KyModuleLoader::Newest(const char* name) {
  if (name == nullptr) return nullptr;
  auto found = Names().find(name);
  return found != Names().end() ? found->second : nullptr;
}

void KyModuleLoader::Retire(_KyModuleDescriptor* descriptor) {
  for (_KyModuleDescriptor** link = &Chain; *link != nullptr; link = &(*link)->next) {
    if (*link != descriptor) continue;
    *link = descriptor->next;
    descriptor->next = Retired;
    Retired = descriptor;
    break;
  }
  if (descriptor->name == nullptr || Newest(descriptor->name) != descriptor) return;
  Names().erase(descriptor->name);
  for (_KyModuleDescriptor* older = Chain; older != nullptr; older = older->next)
    if (older->name != nullptr && std::strcmp(older->name, descriptor->name) == 0) {
      Names()[older->name] = older;
      break;
    }
}

void KyModuleLoader::releaseDescriptors() {
  // Modules are not deleted: they are their clients', and those loaded for a requires
  // were never handed out. They stay listed here to the end of the process, no longer
  // tied to the descriptor that goes now.
  static auto* survivors = new std::vector<KyModule*>;
  Names().clear();
  for (_KyModuleDescriptor** list : {&Chain, &Retired}) {
    while (_KyModuleDescriptor* descriptor = *list) {
      *list = descriptor->next;
      if (descriptor->module != nullptr) {
        descriptor->module->descriptor = nullptr;
        survivors->push_back(descriptor->module);
      }
      delete descriptor;
    }
  }
}

void KyModuleLoader::Say(const std::string& text) {
  std::cerr.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cerr.flush();
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
  if ((TraceMask & 1) != 0) {
    std::ostringstream line;
    line << "KyModuleLoader: Scanning " << path << " - lib=" << library.getString(KyPathName::kSystemPathType) << '\n';
    Say(line.str());
  }

  std::string text;
  if (!ReadRegularFile(path, text)) return;
  std::istringstream in(text);

  // The module is named by the file, without its extension.
  const KyString moduleName = file.getFileName();

  int matched = 0;
  while (kOldFormMark[matched] != '\0' && in.get() == kOldFormMark[matched]) ++matched;
  if (kOldFormMark[matched] == '\0') {
    KyXmlDocument* document = ReadOldForm(in, moduleName);
    if (document == nullptr) return;
    std::ostringstream warning;
    warning << "KyModule warning: module descriptor '" << path
            << "' has an old format.\nHere is the new preferred format:\n";
    document->write(warning);
    Say(warning.str());
    new _KyModuleDescriptor(moduleName, KyModule::kLibraryVersion, library, document);
    return;
  }

  in.clear();
  in.seekg(0);
  auto* document = new DescriptorDocument;
  document->read(in);
  KyXmlElement* root = document->getRootElement();
  if (root == nullptr || root->getTag() == nullptr || std::strcmp(root->getTag(), "module") != 0) {
    Say("KyModuleLoader error: File '" + std::string(path) + " is not a valid Module Descriptor\n");
    delete document;
    return;
  }
  const char* versionText = root->getAttributeValue("version");
  const double code = versionCode(versionText);
  if (std::isnan(code) || code > KyModule::kLibraryVersion) {
    std::ostringstream line;
    line << "KyModule: Invalid version (\"" << (versionText != nullptr ? versionText : "")
         << "\") in module descriptor '" << path << "'. Expecting \"" << 6 << "." << 2 << "\"\n";
    Say(line.str());
    delete document;
    return;
  }
  const int version = code < INT_MIN ? INT_MIN : static_cast<int>(code);
  new _KyModuleDescriptor(moduleName, version, library, document);
}
