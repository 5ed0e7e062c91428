// The loader's descriptor class and entry points, exported for the tests, the fuzz
// target, the benchmark and the kymod tool; clients use KyModule.
#ifndef KYBASE_MODULES_MODULES_INTERNAL_H
#define KYBASE_MODULES_MODULES_INTERNAL_H

#include <string>

#include "kybase/core/export.h"
#include "kybase/modules/module.h"
#include "kybase/paths/path_name.h"

// The one concrete descriptor. Making one links it at the head of the loader's chain;
// only the loader's shut-down (or its module's deletion) destroys it.
class KY_EXPORT _KyModuleDescriptor : public KyModuleDescriptor {
 public:
  _KyModuleDescriptor(const char* name, int version, const KyPathName& library, KyXmlDocument* document);

  const char* getName() const override { return name; }
  int getVersion() const override { return version; }
  const KyPathName& getLibraryPath() const override { return library; }
  KyXmlDocument* getDocument() const override { return document; }
  KyModule* getModule() const override { return module; }

  // Loads what the descriptor requires, then its library, and calls the entry point.
  KyModule* load(void* userArg);

 protected:
  ~_KyModuleDescriptor() override;

 private:
  friend class KyModule;
  friend struct KyModuleLoader;

  KyModule* loadRequiredAndLibrary(void* userArg);

  char* name;
  int version;
  KyPathName library;
  KyXmlDocument* document;
  KyModule* module = nullptr;
  void* handle = nullptr;
  _KyModuleDescriptor* next;
  bool loading = false;  // a load of this descriptor is under way (cycle guard)
};

struct KY_EXPORT KyModuleLoader {
  // How deep requires may nest before a load fails as unresolved.
  static constexpr int kMaxDepth = 256;

  // Reads one descriptor file and, when it is valid, makes its descriptor.
  static void scanDescriptor(const KyPathName& file, const KyPathName& library);
  // Destroys every descriptor, closing their libraries (the context's shut-down step).
  static void releaseDescriptors();
  // "NoError", "ModuleNotFound", "EntryPointNotFound", "DependencyNotResolved", or
  // "Unknown" for any other value.
  static const char* StatusText(KyModule::Error error);

  // Writes a message to standard error in one piece and flushes it.
  static void Say(const std::string& text);

  // The version code of a version text: times 100 plus 0.5, cut toward zero, in double
  // (an absent text counts as 0).
  static double versionCode(const char* text);

  // The newest descriptor of the chain with this name, or null: Find without a walk.
  static _KyModuleDescriptor* Newest(const char* name);
  // Takes a descriptor out of the chain (its module was deleted), keeping the index.
  static void Retire(_KyModuleDescriptor* descriptor);

  static _KyModuleDescriptor* Chain;    // newest first
  static _KyModuleDescriptor* Retired;  // descriptors whose module was deleted
  static int TraceMask;                 // 1 scan, 2 load, 4 loading disabled
  static KyModule::Error Status;
  static bool Started;
};

#endif  // KYBASE_MODULES_MODULES_INTERNAL_H
