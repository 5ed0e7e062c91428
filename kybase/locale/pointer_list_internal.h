// The arrays of the locale layer (the list of live locales, a locale's extensions):
// pointers in order, grown by doubling from a capacity of 0 to 1, 2, 4, ...
#ifndef KYBASE_LOCALE_POINTER_LIST_INTERNAL_H
#define KYBASE_LOCALE_POINTER_LIST_INTERNAL_H

#include <cstring>

template <typename T>
void KyAppendPointer(T**& array, unsigned long& count, unsigned long& capacity, T* item) {
  if (count == capacity) {
    const unsigned long grown = capacity == 0 ? 1 : capacity * 2;
    T** bigger = new T*[grown];
    if (count != 0) std::memcpy(bigger, array, count * sizeof(T*));
    delete[] array;
    array = bigger;
    capacity = grown;
  }
  array[count++] = item;
}

// Closes the gap at `index`, keeping the order of the rest.
template <typename T>
void KyRemovePointerAt(T** array, unsigned long& count, unsigned long index) {
  std::memmove(array + index, array + index + 1, (count - index - 1) * sizeof(T*));
  --count;
}

#endif  // KYBASE_LOCALE_POINTER_LIST_INTERNAL_H
