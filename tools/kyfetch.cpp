// kyfetch URL: writes the bytes behind a URL (http:, ftp:, file: or a plain file name),
// inflated when they are gzip or zip data, on standard output; memory stays at one
// chunk. When the URL cannot be opened it prints "URL: cannot open" (with the URL
// given) on standard error and exits with 1. --help and --version answer as usual.
#include <kybase/kybase.h>
#include "tool_options.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <vector>

namespace {

constexpr char kUsage[] = "usage: kyfetch URL\n";

constexpr char kHelp[] =
    "Writes the data behind URL to standard output: http://host/path (HTTP/1.0, port\n"
    "80), ftp://[user[:password]@]host/path (active mode, port 21), file:path, or a\n"
    "plain file name. gzip data and the first entry of a zip archive come out inflated.\n"
    "\n"
    "  --help     print this text and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "Exit status: 0 the data was written; 1 URL cannot be opened or the output failed;\n"
    "2 wrong arguments.\n";

}  // namespace

int main(int argc, char** argv) {
  if (KyAnswerToolOption(argc, argv, "kyfetch", kUsage, kHelp)) return 0;
  if (argc != 2) {
    std::cerr << kUsage;
    return 2;
  }
  KyIUrlStream stream(argv[1]);
  if (stream.fail()) {
    std::cerr << argv[1] << ": cannot open\n";
    return 1;
  }
  stream.setHints(KyIUrlStream::kReadOnce);
  std::vector<char> block(1 << 16);
  while (stream.read(block.data(), static_cast<std::streamsize>(block.size())) || stream.gcount() > 0) {
    const std::size_t count = static_cast<std::size_t>(stream.gcount());
    if (std::fwrite(block.data(), 1, count, stdout) != count) return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
