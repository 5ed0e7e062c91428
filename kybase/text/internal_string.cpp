#include "kybase/text/internal_string.h"

#include <algorithm>

KyInternalString::~KyInternalString() { delete[] value; }

// The new block is zero-filled and never smaller than the text's length plus its
// terminator, so that operations that still trust length stay inside it.
void KyInternalString::reserve(int n) {
  if (n <= 0 || static_cast<unsigned int>(n) == size) return;
  char* block = new char[static_cast<std::size_t>(std::max(n, length + 1))]();
  delete[] value;
  value = block;
  size = static_cast<unsigned int>(n);
}

KyInternalString* KyInternalString::substituted(const KyInternalString& oldText, const KyInternalString& newText,
                                                int start, int end, int oldStart, int oldEnd, int newStart,
                                                int newEnd) const {
  KyInternalString* twin = copy();
  twin->substitute(oldText, newText, start, end, oldStart, oldEnd, newStart, newEnd);
  return twin;
}
