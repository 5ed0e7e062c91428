// The global context's locale reference. Core declares these operations; they live
// here because they need KyLocale and KyLocaleExtension, which core may not include.
#include "kybase/core/global_context.h"
#include "kybase/locale/kylocale.h"

namespace {

void ReleaseLocale(KyLocaleExtension* extension) { extension->unlock(); }

}  // namespace

KyLocaleExtension* KyGlobalContext::getLocale() const {
  if (locale == nullptr) KySetLocale("C");
  return locale;
}

void KyGlobalContext::setLocale(KyLocaleExtension* extension) {
  if (extension == nullptr) return;
  SetLocaleReleaseHook(ReleaseLocale);
  extension->lock();
  if (locale != nullptr) locale->unlock();
  locale = extension;
  // Both paths are made again as in a fresh context: what clients added to the module
  // path is gone.
  initializeHomePath();
  initializeModulePath();
}
