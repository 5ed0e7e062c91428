// kymod: lists the module descriptors on the module path, or loads one. --help and
// --version answer as usual.
#include <kybase/kybase.h>
#include <kybase/modules/modules_internal.h>
#include "tool_options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr char kUsage[] = "usage: kymod [load NAME]\n";

constexpr char kHelp[] =
    "Without arguments, scans the module path (the current directory, then the folders\n"
    "of KYMODULEPATH, or of PATH when it is unset) and prints one line per module\n"
    "descriptor, newest first: the name, the version (\"6.21\"), the modules it\n"
    "requires separated by commas (\"-\" for none) and the library file.\n"
    "\n"
    "With load NAME, loads the module NAME and what it requires, and prints whether a\n"
    "module came back and the loader's status, such as \"DependencyNotResolved (3)\".\n"
    "KY_TRACEMODULES=true traces the scan and the loading on standard error.\n"
    "\n"
    "  --help     print this text and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "Exit status: 0 listed, or the module loaded; 1 no module came back; 2 wrong\n"
    "arguments.\n";

std::string Requires(const KyModuleDescriptor& descriptor) {
  std::string list;
  KyXmlElement* root = descriptor.getDocument() != nullptr ? descriptor.getDocument()->getRootElement() : nullptr;
  for (KyXmlElement* required = root != nullptr ? root->getElement("requires", nullptr) : nullptr; required != nullptr;
       required = root->getElement("requires", required)) {
    const char* name = required->getAttributeValue("module");
    if (!list.empty()) list += ",";
    list += name != nullptr ? name : "?";
  }
  return list.empty() ? "-" : list;
}

int List() {
  KyModule::ReScan();
  unsigned long count = 0;
  KyModuleDescriptor** array = KyModule::GetDescriptors(count);
  // The array lies in a released pool block: copy it before anything else runs.
  std::vector<KyModuleDescriptor*> descriptors(array, array + count);
  for (KyModuleDescriptor* descriptor : descriptors) {
    const long code = descriptor->getVersion();
    char version[32];
    std::snprintf(version, sizeof version, "%s%ld.%02ld", code < 0 ? "-" : "", std::labs(code) / 100,
                  std::labs(code) % 100);
    std::cout << (descriptor->getName() != nullptr ? descriptor->getName() : "") << " " << version << " "
              << Requires(*descriptor) << " "
              << descriptor->getLibraryPath().getString(KyPathName::kSystemPathType) << "\n";
  }
  return 0;
}

int Load(const char* name) {
  KyModule* module = KyModule::Load(name, nullptr);
  KyModule::Error status = KyModule::GetError();
  std::cout << name << ": " << (module != nullptr ? "loaded" : "not loaded") << ", status "
            << KyModuleLoader::StatusText(status) << " (" << static_cast<int>(status) << ")\n";
  return module != nullptr ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (KyAnswerToolOption(argc, argv, "kymod", kUsage, kHelp)) return 0;
  if (argc == 1) return List();
  if (argc == 3 && std::strcmp(argv[1], "load") == 0) return Load(argv[2]);
  std::cerr << kUsage;
  return 2;
}
