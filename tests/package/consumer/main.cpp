// A user program: includes the umbrella header and uses the library through it.
#include <kybase/kybase.h>

#include <iostream>
#include <sstream>
#include <string>

int main() {
  KyStringHashTable table(17);
  char key[] = "kybase";
  table.insert(key, key);
  void* cell = KyMemoryManager::GetInstance().alloc(16);
  KyMemoryManager::GetInstance().release(cell, 16);
  if (table.find(const_cast<char*>("kybase")) != key) return 1;
  // The URL stream on a caller's stream, and zlib's forwarders from the library.
  std::istringstream text("plain text");
  KyIUrlStream stream(text);
  std::string word;
  if (!(stream >> word) || word != "plain") return 1;
  Ky::Zlib1_2_8::z_stream inflater{};
  if (Ky::Zlib1_2_8::inflateInit2_(&inflater, -15, "1.2.8", static_cast<int>(sizeof inflater)) != Z_OK) return 1;
  Ky::Zlib1_2_8::inflateEnd(&inflater);
  std::cout << "consumer ok\n";
  return 0;
}
