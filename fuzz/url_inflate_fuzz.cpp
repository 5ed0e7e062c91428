// Fuzz target of the URL stream's decoding: arbitrary bytes come through a caller's
// stream (so gzip and zip headers, deflate data and plain text alike), read to the end
// once keeping everything and once with kReadOnce. Both reads must give the same bytes,
// and the kept one must seek back to its start.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "kybase/url/url_stream.h"

namespace {

// Output is capped: one input can inflate to about a thousand times its size.
constexpr std::size_t kMostOutput = 64 << 20;

std::string ReadAll(KyIUrlStream& stream) {
  std::string out;
  char block[65536];
  while (out.size() < kMostOutput && (stream.read(block, sizeof block) || stream.gcount() > 0))
    out.append(block, static_cast<std::size_t>(stream.gcount()));
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  std::istringstream keptSource(bytes);
  KyIUrlStream kept(keptSource);
  const std::string whole = ReadAll(kept);
  std::istringstream onceSource(bytes);
  KyIUrlStream once(onceSource);
  once.setHints(KyIUrlStream::kReadOnce);
  if (whole.size() < kMostOutput && ReadAll(once) != whole) std::abort();
  kept.clear();
  kept.seekg(0);
  if (!whole.empty() && whole.size() < kMostOutput && kept.get() != static_cast<unsigned char>(whole[0])) std::abort();
  return 0;
}
