// Loads a chain a -> b -> c and a module without entry point under the value of
// KY_TRACEMODULES this process was started with, and compares what went to standard
// error with the traces that value must give. Scan lines are compared as a set, as
// the order of a folder's entries is the file system's.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "kybase/modules/module.h"
#include "module_support.h"

int main() {
  const std::string folder = ky_test::MakeFolder();
  for (const char* pair : {"ab", "bc", "c"}) ky_test::AddModule(folder, {pair[0]}, pair + 1);
  ky_test::AddModule(folder, "e", "", "ky_test_noentry");
  ky_test::WriteFile(folder + "/x.kmd", "<module/>");
  setenv("KYMODULEPATH", folder.c_str(), 1);

  const std::string log = folder + "/stderr.txt";
  std::fflush(stderr);
  int saved = dup(2);
  int file = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(file, 2);
  KyModule* a = KyModule::Load("a", nullptr);
  KyModule* e = KyModule::Load("e", nullptr);
  std::cerr.flush();
  dup2(saved, 2);

  const std::string mode = std::getenv("KY_TRACEMODULES");
  const std::string d = folder + "/";
  std::vector<std::string> scan = {"KyModule: Cannot find library : " + d + "x.so"};
  for (const char* name : {"a", "b", "c", "e"})
    scan.push_back(std::string("KyModuleLoader: Scanning ") + d + name + ".kmd - lib=" + d + name + ".so");
  std::vector<std::string> load;
  for (const char* name : {"a", "b", "c"}) {
    load.push_back(std::string("KyModule::Load(") + name + ") -> name=" + name);
    load.push_back(std::string("KyModuleLoader: Loading ") + name + " - lib=" + d + name + ".so");
    if (name[0] != 'c') load.push_back(std::string("    requires module: ") + (name[0] == 'a' ? "b" : "c"));
  }
  for (const char* name : {"c", "b", "a"}) {
    load.push_back(std::string("_KyModuleDesc::load lib=") + d + name + ".so, entryPoint=KyInitModule");
    load.push_back("    => Success!");
  }
  load.insert(load.end(), {"KyModule::Load(e) -> name=e", "KyModuleLoader: Loading e - lib=" + d + "e.so",
                           "_KyModuleDesc::load lib=" + d + "e.so, entryPoint=KyInitModule",
                           "    => FAILURE. Error:EntryPointNotFound"});

  std::vector<std::string> expected;
  const bool loaded = mode != "disableload";
  if (mode == "YES" || mode == "Scan") expected = scan;
  if (mode == "YES") expected.insert(expected.end(), load.begin(), load.end());
  if (!loaded) expected = {"KyModuleLoader: Loading Disabled", "KyModuleLoader: Loading Disabled"};

  std::ifstream in(log);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  // The scan comes first, in the folder's order.
  std::size_t scanned = mode == "YES" || mode == "Scan" ? scan.size() : 0;
  std::sort(lines.begin(), lines.begin() + std::min(scanned, lines.size()));
  std::sort(expected.begin(), expected.begin() + scanned);
  std::filesystem::remove_all(folder);
  if (lines != expected || (a != nullptr) != loaded || e != nullptr ||
      KyModule::GetError() != (loaded ? KyModule::kEntryPointNotFound : KyModule::kModuleNotFound)) {
    std::cout << "unexpected traces for " << mode << ":\n";
    for (const std::string& line : lines) std::cout << "  " << line << "\n";
    return 1;
  }
  std::cout << "traces for " << mode << " as expected\n";
  return 0;
}
