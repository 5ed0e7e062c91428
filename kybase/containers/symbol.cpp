#include "kybase/containers/symbol.h"

#include <cstring>

#include "kybase/core/global_context.h"

KySymbol* KySymbol::Get(const char* name, bool create) {
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  // A null text has no symbol: hashing it would read through null.
  if (name == nullptr) return nullptr;
  if (KySymbol* found = context.findSymbol(name)) return found;
  if (!create) return nullptr;
  KySymbol* symbol = new KySymbol(name);
  context.addSymbol(symbol);
  return symbol;
}

KySymbol::KySymbol(const char* name) : text(nullptr), cache(0) {
  if (name == nullptr) return;
  const std::size_t size = std::strlen(name) + 1;
  text = new char[size];
  std::memcpy(text, name, size);
}

KySymbol::~KySymbol() {
  KyGlobalContext::GetInstance().removeSymbol(this);
  delete[] text;
}
