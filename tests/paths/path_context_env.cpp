// Prints the context's home and module path as the environment made them, again after
// a client entry and after setLocale, and once more from the exit callback, the free
// callback and the module hook: they run before the paths die. CMakeLists.txt matches
// the output. KY_TEST_UNSET names variables (comma-separated) removed before anything
// reads them.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "kybase/core/global_context.h"
#include "kybase/locale/kylocale.h"
#include "kybase/paths/path_list.h"
#include "kybase/paths/path_name.h"

namespace {

struct Extension : KyLocaleExtension {
  using KyLocaleExtension::KyLocaleExtension;
  const char* getName() const override { return "paths"; }
};

void Print(const char* when) {
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  std::printf("%s home=%s module=%s\n", when, static_cast<const char*>(context.getHome()),
              context.getModulePath().getString().getValue());
}

void AtExit() { Print("exit"); }
void AtFree() { Print("free"); }
void Hook() { Print("hook"); }

}  // namespace

int main() {
  std::istringstream names(std::getenv("KY_TEST_UNSET") != nullptr ? std::getenv("KY_TEST_UNSET") : "");
  for (std::string name; std::getline(names, name, ',');) unsetenv(name.c_str());
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  Print("start");
  context.addInModulePathList(KyPathName("/added"));
  Print("added");
  context.setLocale(new Extension(KySetLocale("C")));
  Print("locale");
  context.addExitCallback(AtExit);
  context.addFreeCallback(AtFree);
  KyGlobalContext::SetModuleShutdownHook(Hook);
  std::fflush(stdout);
  return 0;
}
