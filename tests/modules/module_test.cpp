#include <dlfcn.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "kybase/core/global_context.h"
#include "kybase/modules/modules_internal.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "module_support.h"
#include "test_plugin.h"

namespace {

using ky_test::AddModule;
using ky_test::MakeFolder;
using ky_test::WriteFile;

constexpr int kNone = INT_MAX;

TEST(ModuleDescriptor, BothFormsAndTheirLines) {
  const std::string folder = MakeFolder();
  const std::string file = folder + "/m.kmd";
  const std::string invalid = "KyModuleLoader error: File '" + file + " is not a valid Module Descriptor\n";
  auto refused = [&](const char* text) {
    return std::string("KyModule: Invalid version (\"") + text + "\") in module descriptor '" + file +
           "'. Expecting \"6.2\"\n";
  };
  std::string deep;
  for (int i = 0; i < 200000; ++i) deep += i < 100000 ? "<a>" : "</a>";
  struct Row { std::string text; std::string lines; int version; } rows[] = {
      {"<module/>", "", 0},                                {"<module version=\"6.21\" name=\"other\"/>", "", 621},
      {"<module version=\"6.215\"/>", refused("6.215"), kNone}, {"<module version=\"-1\"/>", "", -99},
      {"<module version=\"abc\"/>", "", 0},                  {"<module version=\"1e400\"/>", refused("1e400"), kNone},
      {"<module version=\"-1e400\"/>", "", INT_MIN},          {"<Module/>", invalid, kNone},
      {"<m/>   ", invalid, kNone},                        {"//KYRL Panes\nRoot { A }", invalid, kNone},
      {"// KYRL Panes\n  \n", "", kNone},
      {"// KYRL Panes" + std::string(1030, 'x') + "\nRoot { A B }\nNext { C", "old", 621},
      {"<module version=\"6\">" + deep + "</module>", "", 600},  // read without recursion
  };
  for (const Row& row : rows) {
    WriteFile(file, row.text);
    KyXmlError::Reset();
    testing::internal::CaptureStderr();
    KyModuleLoader::scanDescriptor(KyPathName(file.c_str()), KyPathName((folder + "/m.so").c_str()));
    std::string lines = testing::internal::GetCapturedStderr();
    KyModuleDescriptor* descriptor = KyModule::Find("m");
    EXPECT_EQ(descriptor != nullptr ? descriptor->getVersion() : kNone, row.version) << row.text.substr(0, 80);
    if (row.lines != "old") {
      EXPECT_EQ(lines, row.lines) << row.text.substr(0, 80);
    } else {
      EXPECT_EQ(lines.find("KyModule warning: module descriptor '" + file +
                           "' has an old format.\nHere is the new preferred format:\n"),
                0u);
      // Only 1,024 characters of the first line are dropped: the rest of it is the
      // first root class, and "Root" the token that is not looked at.
      EXPECT_NE(lines.find("<class name=\"A\" rootClass=\"xxxxxx\"/>"), std::string::npos) << lines;
      EXPECT_NE(lines.find("<class name=\"C\" rootClass=\"Next\"/>"), std::string::npos) << lines;
    }
    KyModuleLoader::releaseDescriptors();
  }

  // The XML error record is never reset by the reader: after one malformed descriptor
  // every later XML one reads as invalid, while the old form still reads.
  WriteFile(file, "<module>");
  testing::internal::CaptureStderr();
  KyModuleLoader::scanDescriptor(KyPathName(file.c_str()), KyPathName());
  WriteFile(file, "<module/>");
  KyModuleLoader::scanDescriptor(KyPathName(file.c_str()), KyPathName());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), invalid + invalid);
  EXPECT_EQ(KyModule::Find("m"), nullptr);

  // Files that are not regular are passed over unread, without blocking.
  ASSERT_EQ(mkfifo((folder + "/p.kmd").c_str(), 0600), 0);
  KyModuleLoader::scanDescriptor(KyPathName((folder + "/p.kmd").c_str()), KyPathName());
  EXPECT_EQ(KyModule::Find("p"), nullptr);
  std::filesystem::remove_all(folder);
}

class ModuleLoader : public testing::Test {
 protected:
  void SetUp() override {
    first = MakeFolder();
    second = MakeFolder();
    // A chain a -> b -> c, a cycle x <-> y, and s requiring itself.
    for (const char* pair : {"ab", "bc", "c", "xy", "yx", "ss"}) AddModule(first, {pair[0]}, pair + 1);
    AddModule(first, "e", "", "ky_test_noentry");
    AddModule(first, "u", "", "ky_test_unresolved");
    AddModule(first, "r", "");
    WriteFile(first + "/r.kmd", "<module><requires/></module>");
    AddModule(second, "a", "");
    AddModule(second, "f", "");
    WriteFile(second + "/f.so", "not a library");
    std::filesystem::copy_file(std::string(KY_TEST_PLUGIN_DIR) + "/ky_test_a.so", second + "/n.so");
    setenv("KYMODULEPATH", (first + ":" + second).c_str(), 1);
  }
  void TearDown() override {
    std::filesystem::remove_all(first);
    std::filesystem::remove_all(second);
  }
  static bool Opened(const std::string& library) {
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }
  std::string first, second;
};

TEST_F(ModuleLoader, LoadsWithRequirementsAndReportsEachFailure) {
  EXPECT_EQ(KyModule::Find("a"), nullptr);  // Find doesn't start the loader
  EXPECT_EQ(KyModule::Load(static_cast<const char*>(nullptr), nullptr), nullptr);
  KyTestPluginArg arg;
  auto* a = static_cast<KyTestModule*>(KyModule::Load("a", &arg));
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(KyModule::GetError(), KyModule::kNoError);
  EXPECT_STREQ(a->pluginName(), "ky_test_a");
  EXPECT_EQ(a->getDescriptor(), KyModule::Find("a"));
  EXPECT_STREQ(a->getDescriptor()->getLibraryPath().getString(KyPathName::kSystemPathType), (first + "/a.so").c_str());
  EXPECT_NE(KyModule::IsLoaded("c"), nullptr);
  EXPECT_EQ(KyModule::Load("elsewhere/a.so", &arg), a);
  EXPECT_EQ(KyModule::Load("a.so", &arg), a);
  EXPECT_EQ(arg.calls, 1);

  struct Row { const char* name; KyModule::Error status; std::string lines; } rows[] = {
      {"f", KyModule::kModuleNotFound, "Module load failed (LoadLibrary): "},
      {"u", KyModule::kModuleNotFound, "Module load failed (LoadLibrary): "}, {"e", KyModule::kEntryPointNotFound, ""},
      {"x", KyModule::kDependencyNotResolved,
       "KyModule error: Module 'y' requires unloadable module 'x'\n"
       "KyModule error: Module 'x' requires unloadable module 'y'\n"},
      {"s", KyModule::kDependencyNotResolved, "KyModule error: Module 's' requires unloadable module 's'\n"},
      {"r", KyModule::kNoError, "KyModule error: 'requires' tag needs a 'module' attribute.\n"},
  };
  for (const Row& row : rows) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(KyModule::Load(row.name, nullptr), nullptr) << row.name;
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, row.lines.size()), row.lines) << row.name;
    EXPECT_EQ(KyModule::GetError(), row.status) << row.name;
  }
  EXPECT_FALSE(Opened(first + "/x.so") || Opened(first + "/y.so") || Opened(first + "/s.so"));

  // Unknown names leave the status alone; a library found on the path gets a
  // descriptor of version 621 without a document.
  KyModule::SetError(KyModule::kEntryPointNotFound);
  EXPECT_EQ(KyModule::Load("nowhere", nullptr), nullptr);
  EXPECT_EQ(KyModule::GetError(), KyModule::kEntryPointNotFound);
  ASSERT_NE(KyModule::Load("n", nullptr), nullptr);
  EXPECT_EQ(KyModule::Find("n")->getVersion(), 621);
  EXPECT_EQ(KyModule::Find("n")->getDocument(), nullptr);

  unsigned long count = 0;
  KyModuleDescriptor** descriptors = KyModule::GetDescriptors(count);
  ASSERT_EQ(count, 11u);  // nine from the first folder, f from the second, then n
  EXPECT_STREQ(descriptors[0]->getName(), "n");

  // Deleting the module takes its descriptor out of the loader; shut-down frees it.
  delete a;
  EXPECT_EQ(KyModule::Find("a"), nullptr);
}

TEST_F(ModuleLoader, EntryPointReturningNullIsCalledAgain) {
  KyTestPluginArg arg;
  arg.refuse = true;
  EXPECT_EQ(KyModule::Load("c", &arg), nullptr);
  EXPECT_EQ(KyModule::GetError(), KyModule::kNoError);
  EXPECT_TRUE(Opened(first + "/c.so"));
  arg.refuse = false;
  KyModule* c = KyModule::Load("c", &arg);
  EXPECT_NE(c, nullptr);
  EXPECT_EQ(arg.calls, 2);
  KyModule copy(*c);  // a copy owns nothing
}

}  // namespace
