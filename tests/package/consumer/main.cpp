// A user program: includes the umbrella header and uses the library through it.
#include <kybase/kybase.h>

#include <iostream>

int main() {
  KyStringHashTable table(17);
  char key[] = "kybase";
  table.insert(key, key);
  void* cell = KyMemoryManager::GetInstance().alloc(16);
  KyMemoryManager::GetInstance().release(cell, 16);
  if (table.find(const_cast<char*>("kybase")) != key) return 1;
  std::cout << "consumer ok\n";
  return 0;
}
