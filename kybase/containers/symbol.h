// KySymbol: an interned string. For one text at most one symbol exists in the process,
// so two symbols are equal exactly when their pointers are. The global context owns
// every symbol; a symbol lives from its first Get(..., true) to process exit, so its
// pointer and name stay valid for the life of the process. The cache word is the
// client's and the library never reads it.
//
// Failure: operator new may throw std::bad_alloc. Threads: none (Get reads, then
// writes the table without a lock).
#ifndef KYBASE_CONTAINERS_SYMBOL_H
#define KYBASE_CONTAINERS_SYMBOL_H

#include "kybase/core/export.h"

/// An interned string; see the family page for its life.
class KY_EXPORT KySymbol {
 public:
  /// The symbol of `name` (compared byte for byte), made if missing and `create` is
  /// true; otherwise null when missing.
  static KySymbol* Get(const char* name, bool create);

  /// The text, a copy owned by the symbol.
  const char* name() const { return text; }
  /// The text.
  operator const char*() const { return text; }
  /// The client's cache word (0 at first).
  unsigned long getCache() const { return cache; }
  /// Stores the client's cache word.
  void setCache(unsigned long value) { cache = value; }

  /// Member-wise: the two share one text, so keep symbols by pointer.
  KySymbol& operator=(const KySymbol&) = default;

 private:
  friend class KyGlobalContext;
  explicit KySymbol(const char* name);
  ~KySymbol();
  KySymbol(const KySymbol&) = default;

  char* text;
  unsigned long cache;
};

#endif  // KYBASE_CONTAINERS_SYMBOL_H
