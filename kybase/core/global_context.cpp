#include "kybase/core/global_context.h"

#include <strings.h>

#include <cstdlib>
#include <initializer_list>

#include "kybase/containers/hash_table.h"
#include "kybase/containers/list.h"
#include "kybase/containers/symbol.h"

KyGlobalContext::Error KyGlobalContext::_Error = KyGlobalContext::kNoError;

namespace {

// -1 until read, then 0 (free callbacks suppressed) or 1.
int FreeCallbackSwitch = -1;
int CPULsb = -1;
void (*ModuleShutdownHook)() = nullptr;
void (*LocaleReleaseHook)(KyLocaleExtension*) = nullptr;

int ReadFreeCallbackSwitch() {
  const char* value = std::getenv("KY_CALL_FREE_CALLBACKS");
  if (value == nullptr) return 1;
  for (const char* off : {"false", "no", "off", "0"})
    if (strcasecmp(value, off) == 0) return 0;
  return 1;
}

void* AsPointer(void (*callback)()) { return reinterpret_cast<void*>(callback); }

}  // namespace

KyGlobalContext& KyGlobalContext::GetInstance() {
  static KyGlobalContext instance;
  return instance;
}

bool KyGlobalContext::IsCPULsb() {
  // Built for little-endian processors only: no probe at run time.
  if (CPULsb == -1) CPULsb = 1;
  return CPULsb != 0;
}

void KyGlobalContext::SetModuleShutdownHook(void (*hook)()) { ModuleShutdownHook = hook; }

void KyGlobalContext::SetLocaleReleaseHook(void (*hook)(KyLocaleExtension*)) { LocaleReleaseHook = hook; }

KyGlobalContext::KyGlobalContext() {
  makePaths();
  symbols = new KyStringHashTable(31);
  values = new KyAList;
  exitCallbacks = new KyList;
  freeCallbacks = new KyList;
  initializeHomePath();
  initializeModulePath();
}

void KyGlobalContext::CallAll(KyList* callbacks) {
  if (callbacks == nullptr || callbacks->getLength() == 0) return;
  // A safe iterator stays valid whatever a callback removes from the list, itself or
  // another callback.
  KySafeListIterator next(*callbacks);
  while (next.hasMoreElements()) reinterpret_cast<void (*)()>(next.getNextElement())();
}

KyGlobalContext::~KyGlobalContext() {
  if (FreeCallbackSwitch == -1) FreeCallbackSwitch = ReadFreeCallbackSwitch();

  CallAll(exitCallbacks);

  if (values != nullptr) {
    for (Ky_AList::Cell* cell = values->getFirst(); cell != nullptr; cell = cell->getNext())
      delete static_cast<KyAList*>(cell->getValue());
  }

  reserved2 = 0;

  if (FreeCallbackSwitch == 1) CallAll(freeCallbacks);
  delete freeCallbacks;
  freeCallbacks = nullptr;

  if (ModuleShutdownHook != nullptr) ModuleShutdownHook();

  // Symbols go bucket by bucket, each cell unhooked before its symbol dies, so the
  // symbol's own removal from the table finds nothing.
  if (symbols != nullptr && symbols->getLength() != 0) {
    KyBucket* buckets = symbols->getBuckets();
    for (unsigned long index = 0; index < symbols->numberOfBuckets(); ++index) {
      KyBucket& bucket = buckets[index];
      while (KyBucketCell* cell = bucket.first) {
        bucket.first = cell->next;
        delete static_cast<KySymbol*>(cell->value);
        cell->next = nullptr;
        delete cell;
      }
    }
  }

  delete exitCallbacks;
  exitCallbacks = nullptr;
  delete values;
  values = nullptr;
  delete symbols;
  symbols = nullptr;

  if (locale != nullptr && LocaleReleaseHook != nullptr) LocaleReleaseHook(locale);
  locale = nullptr;

  destroyPaths();
}

bool KyGlobalContext::addValue(void* value, void* key, void* owner) {
  _Error = kNoError;
  auto* inner = static_cast<KyAList*>(values->get(owner));
  if (inner == nullptr) {
    inner = new KyAList;
    values->append(owner, inner);
  }
  if (inner->find(key, nullptr)) {
    _Error = kKeyExists;
    return false;
  }
  inner->append(key, value);
  return true;
}

KyAList* KyGlobalContext::innerTable(void* owner) const {
  _Error = kNoError;
  auto* inner = static_cast<KyAList*>(values->get(owner));
  if (inner == nullptr) _Error = kNoOwner;
  return inner;
}

bool KyGlobalContext::getValue(void*& value, void* key, void* owner) const {
  value = nullptr;
  KyAList* inner = innerTable(owner);
  if (inner == nullptr) return false;
  if (!inner->find(key, &value)) {
    _Error = kNoKey;
    return false;
  }
  return true;
}

bool KyGlobalContext::removeValue(void* value, void* key, void* owner) {
  KyAList* inner = innerTable(owner);
  if (inner == nullptr) return false;
  if (!inner->remove(key, value)) {
    _Error = kNoKeyAndValue;
    return false;
  }
  return true;
}

bool KyGlobalContext::replaceValue(void* value, void* key, void* owner) {
  KyAList* inner = innerTable(owner);
  if (inner == nullptr) return false;
  if (!inner->replace(key, value)) {
    _Error = kNoKey;
    return false;
  }
  return true;
}

void KyGlobalContext::addExitCallback(void (*callback)()) {
  if (!exitCallbacks->find(AsPointer(callback))) exitCallbacks->append(AsPointer(callback));
}

void KyGlobalContext::removeExitCallback(void (*callback)()) { exitCallbacks->remove(AsPointer(callback)); }

void KyGlobalContext::addFreeCallback(void (*callback)()) {
  if (!freeCallbacks->find(AsPointer(callback))) freeCallbacks->append(AsPointer(callback));
}

void KyGlobalContext::removeFreeCallback(void (*callback)()) { freeCallbacks->remove(AsPointer(callback)); }

void KyGlobalContext::addSymbol(KySymbol* symbol) {
  symbols->insert(const_cast<char*>(symbol->name()), symbol);
}

void KyGlobalContext::removeSymbol(KySymbol* symbol) {
  if (symbols != nullptr && symbol->name() != nullptr) symbols->remove(const_cast<char*>(symbol->name()));
}

KySymbol* KyGlobalContext::findSymbol(const char* name) const {
  return static_cast<KySymbol*>(symbols->find(const_cast<char*>(name), nullptr, nullptr));
}
