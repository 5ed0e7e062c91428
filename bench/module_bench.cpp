// Scanning the module path: 1,000 descriptors (a quarter in the old text form, the
// rest XML) with a library beside each, in 10 folders named by KYMODULEPATH, read by
// KyModule::ReScan, against a std::filesystem loop that does the same sibling check
// and reads each descriptor (KyXmlDocument::read for XML, ">>" tokens for the old
// form). Runs from an empty folder, standard error to /dev/null (the old form's
// warnings); the chain is released between runs.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "kybase/core/global_context.h"
#include "kybase/modules/modules_internal.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 10;
constexpr int kDescriptors = 1000;

// Builds the folders once, points KYMODULEPATH at them before the context exists,
// and moves into an empty folder.
const std::vector<std::string>& Folders() {
  static const std::vector<std::string> folders = [] {
    char pattern[] = "/tmp/kymodbenchXXXXXX";
    const std::string root = mkdtemp(pattern);
    std::vector<std::string> made;
    std::string path;
    for (int f = 0; f < kFolders; ++f) {
      made.push_back(root + "/dir" + std::to_string(f));
      fs::create_directories(made.back());
      path += (f != 0 ? ":" : "") + made.back();
    }
    for (int i = 0; i < kDescriptors; ++i) {
      const std::string stem = made[i % kFolders] + "/m" + std::to_string(i);
      std::ofstream(stem + ".so") << "library";
      std::ofstream kmd(stem + ".kmd");
      if (i % 4 == 0)
        kmd << "// KYRL Panes\nPane { Chart" << i << " Axis" << i << " }\n";
      else
        kmd << "<module name=\"m" << i << "\" version=\"6.1\"><class name=\"C" << i
            << "\" rootClass=\"Pane\"/><requires module=\"m" << (i + 1) << "\"/></module>\n";
    }
    fs::create_directories(root + "/empty");
    setenv("KYMODULEPATH", path.c_str(), 1);
    if (chdir((root + "/empty").c_str()) != 0) std::abort();
    if (std::freopen("/dev/null", "w", stderr) == nullptr) std::abort();
    return made;
  }();
  return folders;
}

void ModuleScan_Ky(benchmark::State& state) {
  Folders();
  for (auto _ : state) {
    KyXmlError::Reset();
    KyModule::ReScan();
    unsigned long count = 0;
    KyModule::GetDescriptors(count);
    if (count != kDescriptors) state.SkipWithError("not every descriptor was read");
    state.PauseTiming();
    KyModuleLoader::releaseDescriptors();
    state.ResumeTiming();
  }
}

void ModuleScan_Base(benchmark::State& state) {
  std::vector<std::string> folders{"."};
  folders.insert(folders.end(), Folders().begin(), Folders().end());
  for (auto _ : state) {
    std::vector<std::string> names;
    std::vector<KyXmlDocument*> documents;
    for (const std::string& folder : folders) {
      std::error_code error;
      for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const fs::path& path = entry.path();
        if (path.extension() != ".kmd" || access(path.c_str(), R_OK) != 0) continue;
        fs::path library = path;
        library.replace_extension(".so");
        if (access(library.c_str(), R_OK) != 0) continue;
        std::ifstream in(path, std::ios::binary);
        std::string first;
        std::getline(in, first);
        auto* document = new KyXmlDocument;
        if (first.rfind("// KYRL Panes", 0) == 0) {
          for (std::string token; in >> token;) benchmark::DoNotOptimize(token);
        } else {
          in.seekg(0);
          KyXmlError::Reset();
          document->read(in);
        }
        names.push_back(path.stem().string());
        documents.push_back(document);
      }
    }
    if (names.size() != kDescriptors) state.SkipWithError("not every descriptor was read");
    state.PauseTiming();
    for (KyXmlDocument* document : documents) delete document;
    state.ResumeTiming();
  }
}

BENCHMARK(ModuleScan_Ky)->Unit(benchmark::kMillisecond);
BENCHMARK(ModuleScan_Base)->Unit(benchmark::kMillisecond);

}  // namespace
