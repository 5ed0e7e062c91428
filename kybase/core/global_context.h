// KyGlobalContext: the process-wide root of the library's state, made on the first
// GetInstance() and destroyed at process exit (or library unload) in one fixed order.
// It owns the symbol table and every KySymbol, a two-level registry of client values
// (owner -> key -> value; the pointers are never dereferenced), the exit and free
// callback lists, and (once the paths and locale layers stand) the home path, the
// module path and the locale reference.
//
// Failure: the value registry answers by result and keeps the outcome of its last call
// in GetError(); nothing throws but operator new and the client's callbacks.
// Threads: only the first GetInstance() is safe against concurrent callers; callers
// serialise everything else.
#ifndef KYBASE_CORE_GLOBAL_CONTEXT_H
#define KYBASE_CORE_GLOBAL_CONTEXT_H

#include <cstdint>

#include "kybase/core/export.h"

class KyAList;
class KyList;
class KyLocaleExtension;
class KyStringHashTable;
class KySymbol;

class KY_EXPORT KyGlobalContext {
 public:
  // The outcome of the last value registry call.
  enum Error {
    kNoError = 0,
    kKeyExists = 1,       // addValue: the owner already has this key
    kNoOwner = 2,         // the owner has no table
    kNoKey = 3,           // getValue, replaceValue: the owner has no such key
    kNoKeyAndValue = 4,   // removeValue: no cell with this key and this value
  };

  static KyGlobalContext& GetInstance();
  static Error GetError() { return _Error; }
  static bool IsCPULsb();

  // Registers the module loader's shut-down routine, run at step 8 of destruction
  // (after the free callbacks, before the symbols). Core knows nothing else of it.
  static void SetModuleShutdownHook(void (*hook)());
  // Registers the locale layer's release of the context's locale reference, run at
  // step 13 of destruction. setLocale registers it; core never includes a locale header.
  static void SetLocaleReleaseHook(void (*hook)(KyLocaleExtension*));

  virtual ~KyGlobalContext();
  KyGlobalContext(const KyGlobalContext&) = delete;
  KyGlobalContext& operator=(const KyGlobalContext&) = delete;

  bool addValue(void* value, void* key, void* owner);
  bool getValue(void*& value, void* key, void* owner) const;
  bool removeValue(void* value, void* key, void* owner);
  bool replaceValue(void* value, void* key, void* owner);

  // Each function stands at most once in its list.
  void addExitCallback(void (*callback)());
  void removeExitCallback(void (*callback)());
  void addFreeCallback(void (*callback)());
  void removeFreeCallback(void (*callback)());

  KySymbol* findSymbol(const char* name) const;

  // The locale the context holds one lock on (defined in the locale layer). getLocale
  // first makes "C" the default KyLocale, then returns the field: null until a client
  // calls setLocale, which locks the new extension before unlocking the old one, so
  // setting the same extension again is harmless. setLocale(nullptr) changes nothing.
  KyLocaleExtension* getLocale() const;
  void setLocale(KyLocaleExtension* extension);
  bool hasLocale() const { return locale != nullptr; }

 protected:
  KyGlobalContext();

  void addSymbol(KySymbol* symbol);
  void removeSymbol(KySymbol* symbol);

  // Only the lowest five bits of the number count.
  bool getCompatibilityFlag(unsigned short number) const { return (compatibilityFlags & Flag(number)) != 0; }
  void setCompatibilityFlag(unsigned short number) { compatibilityFlags |= Flag(number); }
  void setCompatibilityFlag(unsigned short number, bool on) {
    on ? setCompatibilityFlag(number) : unSetCompatibilityFlag(number);
  }
  void unSetCompatibilityFlag(unsigned short number) { compatibilityFlags &= ~Flag(number); }
  void invertCompatibilityFlag(unsigned short number) { compatibilityFlags ^= Flag(number); }

 private:
  friend class KySymbol;
  static std::uint32_t Flag(unsigned short number) { return 1u << (number & 31); }
  static void CallAll(KyList* callbacks);
  // The owner's table of values, or null with the error set to kNoOwner; clears the
  // error first.
  KyAList* innerTable(void* owner) const;

  static Error _Error;

  KyLocaleExtension* locale = nullptr;
  std::uint32_t compatibilityFlags = 0;
  std::uint32_t reserved1 = 0;  // free for higher layers
  std::uint32_t reserved2 = 0;
  KyStringHashTable* symbols = nullptr;
  KyAList* values = nullptr;
  KyList* exitCallbacks = nullptr;
  KyList* freeCallbacks = nullptr;
};

#endif  // KYBASE_CORE_GLOBAL_CONTEXT_H
