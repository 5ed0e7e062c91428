// Fuzz target of URL names: arbitrary text goes to KyIUrlStream::IsAnURL and to the
// name constructor, under the socket guard of the tests, which refuses every name and
// address (no peer is routed), so parsing, look-up and the fall-back to a file name
// run without any traffic. Names that could reach a device or a process file are left
// out, since a file behind them may never end or never answer.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "kybase/url/url_stream.h"
#include "support/net_guard.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name(reinterpret_cast<const char*>(data), strnlen(reinterpret_cast<const char*>(data), size));
  KyIUrlStream::IsAnURL(name.c_str());
  for (const char* risky : {"dev", "proc", "sys", "..", "fd"})
    if (name.find(risky) != std::string::npos) return 0;
  KyIUrlStream stream(name.c_str());
  char block[65536];
  for (int reads = 0; reads < 16 && stream.read(block, sizeof block); ++reads) {
  }
  KyNetGuard::Names().clear();
  KyNetGuard::Ports().clear();
  return 0;
}
