// One source, several plugins: KY_TEST_PLUGIN names the plugin; KY_TEST_NO_ENTRY
// leaves the entry point out; KY_TEST_UNRESOLVED makes the library need a symbol that
// nothing defines, so that loading it fails.
#include "test_plugin.h"

namespace {

class Module : public KyTestModule {
 public:
  const char* pluginName() const override { return KY_TEST_PLUGIN; }
};

}  // namespace

#ifdef KY_TEST_UNRESOLVED
extern "C" void KyTestSymbolNobodyDefines();
#endif

#ifndef KY_TEST_NO_ENTRY
extern "C" __attribute__((visibility("default"))) KyModule* KyInitModule(void* userArg) {
#ifdef KY_TEST_UNRESOLVED
  KyTestSymbolNobodyDefines();
#endif
  auto* arg = static_cast<KyTestPluginArg*>(userArg);
  if (arg != nullptr) {
    ++arg->calls;
    if (arg->refuse) return nullptr;
  }
  return new Module;
}
#endif
