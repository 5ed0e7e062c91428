// Folders of descriptors and plugin copies for the module tests.
#ifndef KYBASE_TESTS_MODULES_MODULE_SUPPORT_H
#define KYBASE_TESTS_MODULES_MODULE_SUPPORT_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace ky_test {

inline std::string MakeFolder() {
  char pattern[] = "/tmp/kymodXXXXXX";
  return mkdtemp(pattern);
}

inline void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// name.kmd requiring `requires` (space-separated, may be empty) beside a copy of the
// plugin file `plugin` as name.so.
inline void AddModule(const std::string& folder, const std::string& name, const std::string& requires,
                      const std::string& plugin = "ky_test_a") {
  std::string text = "<module version=\"6.1\">";
  std::istringstream names(requires);
  for (std::string name; names >> name;) text += "<requires module=\"" + name + "\"/>";
  WriteFile(folder + "/" + name + ".kmd", text + "</module>");
  std::filesystem::copy_file(std::string(KY_TEST_PLUGIN_DIR) + "/" + plugin + ".so", folder + "/" + name + ".so");
}

}  // namespace ky_test

#endif  // KYBASE_TESTS_MODULES_MODULE_SUPPORT_H
