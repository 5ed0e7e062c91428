// Reads a URL or a file line by line through KyIUrlStream: gzip data, and the first
// entry of a zip archive, come out inflated, whatever the source.
#include <kybase/kybase.h>

#include <cstring>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KyIUrlStream stream(argv[1]);
  if (stream.fail()) {
    std::cerr << argv[1] << ": cannot open\n";
    return 1;
  }
  if (const char* header = stream.getHeader())  // HTTP only: the reply's header as received
    std::cout << std::string(header, std::strcspn(header, "\r\n")) << '\n';
  std::string line;
  while (std::getline(stream, line)) std::cout << line << '\n';
  return 0;
}
