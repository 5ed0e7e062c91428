// The global context's locale reference is released when the context dies at exit.
#include <cstdio>

#include "kybase/core/global_context.h"
#include "kybase/locale/kylocale.h"

namespace {

struct ReportingExtension : KyLocaleExtension {
  using KyLocaleExtension::KyLocaleExtension;
  ~ReportingExtension() override { std::printf("extension released\n"); }
  const char* getName() const override { return "reporting"; }
};

}  // namespace

int main() {
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  context.setLocale(new ReportingExtension(KySetLocale("C")));
  std::printf("setLocale done\n");
  std::fflush(stdout);
  return 0;
}
