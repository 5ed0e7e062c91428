// A sample plugin for the tour: the module "greeter" says hello in its constructor's
// caller's words. Built as greeter.so beside greeter.kmd, in the folder the tour puts
// on the module path.
#include <kybase/modules/module.h>

#include <iostream>

namespace {

class Greeter : public KyModule {
 public:
  explicit Greeter(const char* who) { std::cout << "greeter: hello, " << (who != nullptr ? who : "stranger") << "\n"; }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) KyModule* KyInitModule(void* userArg) {
  return new Greeter(static_cast<const char*>(userArg));
}
