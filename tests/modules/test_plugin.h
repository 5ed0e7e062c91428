// What the test plugins and the module tests share: the argument of the entry point
// and the interface of the module it makes.
#ifndef KYBASE_TESTS_MODULES_TEST_PLUGIN_H
#define KYBASE_TESTS_MODULES_TEST_PLUGIN_H

#include "kybase/modules/module.h"

struct KyTestPluginArg {
  int calls = 0;        // raised by every call of the entry point
  bool refuse = false;  // the entry point returns null
};

class KyTestModule : public KyModule {
 public:
  virtual const char* pluginName() const = 0;
};

#endif  // KYBASE_TESTS_MODULES_TEST_PLUGIN_H
