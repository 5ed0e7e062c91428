// KyGlobalContext: the process-wide root of the library's state, made on the first
// GetInstance() and destroyed at process exit (or library unload) in one fixed order.
// It owns the symbol table and every KySymbol, a two-level registry of client values
// (owner -> key -> value; the pointers are never dereferenced), the exit and free
// callback lists, the home path, the module path and the locale reference.
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
class KyPathList;
class KyPathName;
class KyStringHashTable;
class KySymbol;

/// The process-wide root object; see the family page for what it owns and the order
/// in which it lets go at exit.
class KY_EXPORT KyGlobalContext {
 public:
  /// The outcome of the last value registry call.
  enum Error {
    kNoError = 0,  ///< the call succeeded
    kKeyExists = 1,       ///< addValue: the owner already has this key
    kNoOwner = 2,         ///< the owner has no table
    kNoKey = 3,           ///< getValue, replaceValue: the owner has no such key
    kNoKeyAndValue = 4,   ///< removeValue: no cell with this key and this value
  };

  /// The context of the process, made on the first call together with the memory
  /// manager, the symbol table, the home path and the module path.
  static KyGlobalContext& GetInstance();
  /// The outcome of the last addValue, getValue, removeValue or replaceValue.
  static Error GetError() { return _Error; }
  /// True: the library is built for little-endian processors only.
  static bool IsCPULsb();

  /// Registers the module loader's shut-down routine, run at step 8 of destruction
  /// (after the free callbacks, before the symbols). Core knows nothing else of it.
  static void SetModuleShutdownHook(void (*hook)());
  /// Registers the locale layer's release of the context's locale reference, run at
  /// step 13 of destruction. setLocale registers it; core never includes a locale header.
  static void SetLocaleReleaseHook(void (*hook)(KyLocaleExtension*));

  /// Runs the exit callbacks, frees the value tables, runs the free callbacks (unless
  /// KY_CALL_FREE_CALLBACKS says no), shuts the modules down, then drops the symbols,
  /// the locale reference and the paths.
  virtual ~KyGlobalContext();
  /// There is one context.
  KyGlobalContext(const KyGlobalContext&) = delete;
  /// There is one context.
  KyGlobalContext& operator=(const KyGlobalContext&) = delete;

  /// Registers `value` under (owner, key); false with kKeyExists when the owner has
  /// that key already. Nothing is dereferenced: the pointers stay the caller's.
  bool addValue(void* value, void* key, void* owner);
  /// The value under (owner, key) in `value` (null when missing); false with kNoOwner
  /// or kNoKey.
  bool getValue(void*& value, void* key, void* owner) const;
  /// Removes the entry (owner, key) holding `value`; false with kNoOwner or
  /// kNoKeyAndValue.
  bool removeValue(void* value, void* key, void* owner);
  /// Stores `value` under the existing (owner, key); false with kNoOwner or kNoKey.
  bool replaceValue(void* value, void* key, void* owner);

  /// Adds a function to the exit list, run first when the context dies. Each function
  /// stands at most once in each list.
  void addExitCallback(void (*callback)());
  /// Takes a function out of the exit list, if it is there.
  void removeExitCallback(void (*callback)());
  /// Adds a function to the free list, run when the context dies, after the value tables
  /// are gone.
  void addFreeCallback(void (*callback)());
  /// Takes a function out of the free list, if it is there.
  void removeFreeCallback(void (*callback)());

  /// The symbol of this text, or null when none was made; see KySymbol::Get.
  KySymbol* findSymbol(const char* name) const;

  /// The locale the context holds one lock on (defined in the locale layer). getLocale
  /// first makes "C" the default KyLocale, then returns the field: null until a client
  /// calls setLocale, which locks the new extension before unlocking the old one, so
  /// setting the same extension again is harmless. setLocale(nullptr) changes nothing.
  KyLocaleExtension* getLocale() const;
  /// \copydoc getLocale
  void setLocale(KyLocaleExtension* extension);
  /// True once a client has set a locale.
  bool hasLocale() const { return locale != nullptr; }

  /// The per-user data directory and the module search path (defined in the paths
  /// layer). The home is a name only: it is neither made nor tested. A fresh module
  /// path searches "." first, then the list, then KYMODULEPATH (or else PATH).
  const KyPathName& getHome() const;
  /// The module search path.
  const KyPathList& getModulePath() const;
  /// Appends a directory to the module path's previous list, searched first.
  void addInModulePathPrevList(const KyPathName& path);
  /// Appends a directory to the module path's list.
  void addInModulePathList(const KyPathName& path);
  /// Appends a directory to the module path's post list, searched last.
  void addInModulePathPostList(const KyPathName& path);

 protected:
  /// Made only by GetInstance().
  KyGlobalContext();

  /// Enters a new symbol in the table; called by KySymbol.
  void addSymbol(KySymbol* symbol);
  /// Takes a dying symbol out of the table; called by KySymbol.
  void removeSymbol(KySymbol* symbol);

  /// The compatibility flag `number` (0 to 31; only the lowest five bits of the number
  /// count), a switch a higher layer may keep in the context.
  bool getCompatibilityFlag(unsigned short number) const { return (compatibilityFlags & Flag(number)) != 0; }
  /// Sets the flag `number`.
  void setCompatibilityFlag(unsigned short number) { compatibilityFlags |= Flag(number); }
  /// Sets or clears the flag `number`.
  void setCompatibilityFlag(unsigned short number, bool on) {
    on ? setCompatibilityFlag(number) : unSetCompatibilityFlag(number);
  }
  /// Clears the flag `number`.
  void unSetCompatibilityFlag(unsigned short number) { compatibilityFlags &= ~Flag(number); }
  /// Turns the flag `number` over.
  void invertCompatibilityFlag(unsigned short number) { compatibilityFlags ^= Flag(number); }

 private:
  friend class KySymbol;
  static std::uint32_t Flag(unsigned short number) { return 1u << (number & 31); }
  static void CallAll(KyList* callbacks);
  /// The owner's table of values, or null with the error set to kNoOwner; clears the
  /// error first.
  KyAList* innerTable(void* owner) const;
  /// The paths layer makes the two path objects (construction step 2), fills them from
  /// the environment (step 5, and again on setLocale) and destroys them (step 14).
  void makePaths();
  void initializeHomePath();
  void initializeModulePath();
  void destroyPaths();

  static Error _Error;

  KyLocaleExtension* locale = nullptr;
  std::uint32_t compatibilityFlags = 0;
  std::uint32_t reserved1 = 0;  // free for higher layers
  std::uint32_t reserved2 = 0;
  KyStringHashTable* symbols = nullptr;
  KyAList* values = nullptr;
  KyList* exitCallbacks = nullptr;
  KyList* freeCallbacks = nullptr;
  KyPathName* home = nullptr;
  KyPathList* modulePath = nullptr;
};

#endif  // KYBASE_CORE_GLOBAL_CONTEXT_H
