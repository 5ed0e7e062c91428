// The options every kybase tool answers alike: --help prints the usage and the help
// text, --version the tool's name and the library's version, both on standard output.
#ifndef KYBASE_TOOLS_TOOL_OPTIONS_H
#define KYBASE_TOOLS_TOOL_OPTIONS_H

#include <cstring>
#include <iostream>

// True when argv was --help or --version and has been answered; the tool then exits 0.
inline bool KyAnswerToolOption(int argc, char** argv, const char* tool, const char* usage, const char* help) {
  if (argc != 2) return false;
  if (std::strcmp(argv[1], "--help") == 0) {
    std::cout << usage << help;
    return true;
  }
  if (std::strcmp(argv[1], "--version") == 0) {
    std::cout << tool << " (kybase) " << KYBASE_VERSION << '\n';
    return true;
  }
  return false;
}

#endif  // KYBASE_TOOLS_TOOL_OPTIONS_H
