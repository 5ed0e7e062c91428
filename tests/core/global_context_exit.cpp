// Registers callbacks, a module hook, values and symbols, then returns from main: the
// context's shut-down prints what ran, in order (CMakeLists.txt matches the output).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "kybase/containers/symbol.h"
#include "kybase/core/global_context.h"

namespace {

void ExitA();
void ExitB() { std::printf("exit:B\n"); }
// C removes itself while it runs.
void ExitC() {
  std::printf("exit:C\n");
  KyGlobalContext::GetInstance().removeExitCallback(ExitC);
}
// A removes B, which stands next: B must be skipped, not called from a freed cell.
void ExitA() {
  std::printf("exit:A\n");
  KyGlobalContext::GetInstance().removeExitCallback(ExitB);
}
void FreeF() { std::printf("free:F\n"); }
void Hook() { std::printf("hook\n"); }

KySymbol* Kept = nullptr;

// Registered before the context exists, so it runs after the context has died.
void AfterContext() { std::printf("%s\n", Kept != nullptr ? "symbols freed" : "no symbol"); }

}  // namespace

int main() {
  if (const char* name = std::getenv("KY_TEST_UNSET")) unsetenv(name);
  std::atexit(AfterContext);
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  for (void (*callback)() : {ExitA, ExitA, ExitB, ExitC}) context.addExitCallback(callback);
  for (void (*callback)() : {FreeF, FreeF}) context.addFreeCallback(callback);
  KyGlobalContext::SetModuleShutdownHook(Hook);
  static int owner;
  context.addValue(&owner, &owner, &owner);
  for (const char* name : {"alpha", "beta", "", "gamma"}) Kept = KySymbol::Get(name, true);
  std::fflush(stdout);
  return 0;
}
