// The module loader: the scan of the module path, loading with what a module requires,
// the traces of KY_TRACEMODULES, and the release of every descriptor at shut-down.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

#include "kybase/core/global_context.h"
#include "kybase/core/memory_pool.h"
#include "kybase/modules/modules_internal.h"
#include "kybase/paths/path_list.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_node.h"

namespace {

// Made when the library is loaded, before any client code runs.
const KyString LibraryExtension("so");
const KyString DescriptorExtension("kmd");

// How many loads are nested through requires.
int LoadDepth = 0;

int ReadTraceMask() {
  const char* value = std::getenv("KY_TRACEMODULES");
  if (value == nullptr) return 0;
  if (strcasecmp(value, "true") == 0 || strcasecmp(value, "yes") == 0) return 3;
  if (strcasecmp(value, "scan") == 0) return 1;
  if (strcasecmp(value, "load") == 0) return 2;
  if (strcasecmp(value, "disableload") == 0) return 4;
  return 0;
}

bool Tracing(int bit) { return (KyModuleLoader::TraceMask & bit) != 0; }

// A path as the system writes it, for messages.
std::string Text(const KyPathName& path) { return path.getString(KyPathName::kSystemPathType).getValue(); }

// Traces print a missing name as empty text.
const char* Printable(const char* text) { return text != nullptr ? text : ""; }

// Returns 1 when the loader was already started, 0 when this call started it.
int InitLoader() {
  if (KyModuleLoader::Started) return 1;
  KyModuleLoader::Started = true;
  KyModuleLoader::TraceMask = ReadTraceMask();
  KyGlobalContext::SetModuleShutdownHook(KyModuleLoader::releaseDescriptors);
  KyModule::ReScan();
  return 0;
}

// The name plus "." and the library extension. The test for a name that already ends
// in the extension looks one place too early and never matches, so the suffix is always
// added, as callers of the original loader saw.
KyString LibraryFileName(const KyString& name) {
  const std::string text = name.getValue();
  const std::string extension = LibraryExtension.getValue();
  const std::size_t dot = text.size() - extension.size() - 1;
  if (text.size() > extension.size() + 1 && text[dot] == '.' &&
      strcasecmp(extension.c_str(), text.c_str() + dot - 1) == 0)
    return name;
  return KyString((text + "." + extension).c_str());
}


// The text dlopen gets: a path without "/" would make dlopen search the system's
// library path, so the file found here is named relative to the current directory.
std::string LibraryText(const KyPathName& library) {
  std::string text = Text(library);
  if (text.find('/') == std::string::npos) text = "./" + text;
  return text;
}

}  // namespace

KyModule::~KyModule() {
  auto* own = static_cast<_KyModuleDescriptor*>(descriptor);
  if (own == nullptr || own->module != this) return;
  // The module's own destructor may be running in the library: the descriptor leaves
  // the chain now, and its library closes at shut-down.
  own->module = nullptr;
  KyModuleLoader::Retire(own);
}

const char* KyModuleLoader::StatusText(KyModule::Error error) {
  switch (error) {
    case KyModule::kNoError: return "NoError";
    case KyModule::kModuleNotFound: return "ModuleNotFound";
    case KyModule::kEntryPointNotFound: return "EntryPointNotFound";
    case KyModule::kDependencyNotResolved: return "DependencyNotResolved";
  }
  return "Unknown";
}

KyModule::Error KyModule::GetError() { return KyModuleLoader::Status; }

void KyModule::SetError(Error error) { KyModuleLoader::Status = error; }

KyModuleDescriptor* KyModule::Find(const char* name) { return KyModuleLoader::Newest(name); }

KyModule* KyModule::IsLoaded(const char* name) {
  KyModuleDescriptor* descriptor = Find(name);
  return descriptor != nullptr ? descriptor->getModule() : nullptr;
}

KyModuleDescriptor** KyModule::GetDescriptors(unsigned long& count) {
  count = 0;
  for (_KyModuleDescriptor* d = KyModuleLoader::Chain; d != nullptr; d = d->next) ++count;
  if (count == 0) return nullptr;
  void** array = KyPointerPool::Alloc(count, false);
  if (array == nullptr) {
    count = 0;
    return nullptr;
  }
  unsigned long index = 0;
  for (_KyModuleDescriptor* d = KyModuleLoader::Chain; d != nullptr; d = d->next) array[index++] = d;
  return reinterpret_cast<KyModuleDescriptor**>(array);
}

void KyModule::ReScan() {
  if (InitLoader() == 0) return;
  for (KyPathListIterator entry(KyGlobalContext::GetInstance().getModulePath()); !entry == 0; entry++) {
    KyPathName directory(static_cast<const KyPathName&>(entry));
    if (!directory.openDir()) continue;
    // The work path takes each entry's name; the library path shares its folder and
    // takes the same stem with the library extension.
    KyPathName work(directory);
    work.setExtension(DescriptorExtension, -1, 0);
    KyPathName library(directory);
    library.setExtension(LibraryExtension, -1, 0);
    KyPathName item;
    while (directory.readDir(item)) {
      // The entry's name was split by setBaseName already; its parts are taken as they
      // are, as a second split of the joined text would give the same.
      work.setFileName(item.getFileName(), -1, 0);
      work.setExtension(item.getExtension(), -1, 0);
      const KyString moduleName = work.getFileName();
      if (work.getExtension().compare(DescriptorExtension) != 0 || moduleName.getLength() == 0 || !work.isReadable())
        continue;
      if (Find(moduleName) != nullptr) continue;
      library.setFileName(moduleName, -1, 0);
      if (library.isReadable())
        KyModuleLoader::scanDescriptor(work, library);
      else if (Tracing(1))
        KyModuleLoader::Say("KyModule: Cannot find library : " + Text(library) + "\n");
    }
    directory.closeDir();
  }
}

KyModule* KyModule::Load(const char* name, void* userArg) {
  InitLoader();
  if (name == nullptr) return nullptr;
  KyPathName path(name);
  const KyString moduleName = path.getFileName();
  KyPathName result;
  if (Tracing(2))
    KyModuleLoader::Say("KyModule::Load(" + std::string(name) + ") -> name=" + moduleName.getValue() + "\n");

  if (KyModuleDescriptor* known = Find(moduleName)) {
    if (known->getModule() != nullptr) return known->getModule();
    return static_cast<_KyModuleDescriptor*>(known)->load(userArg);
  }

  const KyPathList& modulePath = KyGlobalContext::GetInstance().getModulePath();
  path.setBaseName(moduleName, -1, 0);
  if (modulePath.findInPath(path, result, false)) {
    auto* descriptor = new _KyModuleDescriptor(moduleName, kLibraryVersion, result, nullptr);
    if (KyModule* module = descriptor->load(userArg)) return module;
  }
  path.setBaseName(LibraryFileName(moduleName), -1, 0);
  if (modulePath.findInPath(path, result, false))
    return Load(new _KyModuleDescriptor(moduleName, kLibraryVersion, result, nullptr), userArg);
  return nullptr;
}

KyModule* KyModule::Load(KyModuleDescriptor* descriptor, void* userArg) {
  if (descriptor == nullptr) return nullptr;
  if (descriptor->getModule() != nullptr) return descriptor->getModule();
  return static_cast<_KyModuleDescriptor*>(descriptor)->load(userArg);
}

KyModule* _KyModuleDescriptor::load(void* userArg) {
  if (Tracing(4)) {
    KyModuleLoader::Say("KyModuleLoader: Loading Disabled\n");
    KyModuleLoader::Status = KyModule::kModuleNotFound;
    return nullptr;
  }
  KyModuleLoader::Status = KyModule::kNoError;
  if (module != nullptr) return module;
  // A requires that comes back to a load under way, or nests too deep, cannot resolve.
  if (loading || LoadDepth >= KyModuleLoader::kMaxDepth) {
    KyModuleLoader::Status = KyModule::kDependencyNotResolved;
    return nullptr;
  }
  if (Tracing(2))
    KyModuleLoader::Say("KyModuleLoader: Loading " + std::string(Printable(name)) + " - lib=" + Text(library) + "\n");

  loading = true;
  ++LoadDepth;
  KyModule* result = loadRequiredAndLibrary(userArg);
  --LoadDepth;
  loading = false;
  return result;
}

KyModule* _KyModuleDescriptor::loadRequiredAndLibrary(void* userArg) {
  KyXmlElement* root = document != nullptr ? document->getRootElement() : nullptr;
  if (root != nullptr) {
    for (KyXmlElement* required = root->getElement("requires", nullptr); required != nullptr;
         required = root->getElement("requires", required)) {
      const char* requiredName = required->getAttributeValue("module");
      if (requiredName == nullptr) {
        KyModuleLoader::Say("KyModule error: 'requires' tag needs a 'module' attribute.\n");
        return nullptr;
      }
      if (Tracing(2)) KyModuleLoader::Say("    requires module: " + std::string(requiredName) + "\n");
      if (KyModule::Load(requiredName, nullptr) == nullptr) {
        KyModuleLoader::Say("KyModule error: Module '" + std::string(Printable(name)) +
                            "' requires unloadable module '" + requiredName + "'\n");
        KyModuleLoader::Status = KyModule::kDependencyNotResolved;
        return nullptr;
      }
    }
  }

  static const char* const entryName = "KyInit" "Module";
  if (Tracing(2))
    KyModuleLoader::Say("_KyModuleDesc::load lib=" + Text(library) + ", entryPoint=" + entryName + "\n");
  const std::string text = LibraryText(library);
  void* newHandle = dlopen(text.c_str(), RTLD_NOW | RTLD_LOCAL);
  KyModule* made = nullptr;
  KyModule::Error error = KyModule::kNoError;
  if (newHandle == nullptr) {
    const char* reason = dlerror();
    KyModuleLoader::Say("Module load failed (LoadLibrary): " + std::string(Printable(reason)) + "\n");
    error = KyModule::kModuleNotFound;
  } else if (void* entry = dlsym(newHandle, entryName)) {
    made = reinterpret_cast<KyModule* (*)(void*)>(entry)(userArg);
  } else {
    error = KyModule::kEntryPointNotFound;
  }
  KyModuleLoader::Status = error;

  // A library opened again replaces the earlier handle; dlopen counts opens, so the
  // earlier one is closed here rather than left open for ever.
  if (handle != nullptr && newHandle != nullptr) dlclose(handle);
  if (newHandle != nullptr) handle = newHandle;
  if (error == KyModule::kNoError) {
    module = made;
    if (made != nullptr) made->descriptor = this;
  } else {
    delete made;
    if (handle != nullptr) dlclose(handle);
    handle = nullptr;
  }
  if (Tracing(2)) {
    if (made != nullptr)
      KyModuleLoader::Say("    => Success!\n");
    else
      KyModuleLoader::Say("    => FAILURE. Error:" + std::string(KyModuleLoader::StatusText(error)) + "\n");
  }
  return made;
}
