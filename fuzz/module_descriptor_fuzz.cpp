// Module descriptors from arbitrary bytes. The first byte chooses whether the old
// form's first line goes in front; the rest is written to a temporary file that the
// loader's reader reads. The XML error record is cleared before each read and every
// descriptor is released after it, so inputs don't affect each other.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "kybase/modules/modules_internal.h"
#include "kybase/xml/xml_error.h"

namespace {

const std::string& Folder() {
  static const std::string folder = [] {
    char pattern[] = "/tmp/kymodfuzzXXXXXX";
    return std::string(mkdtemp(pattern));
  }();
  return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string file = Folder() + "/fuzz.kmd";
  {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if ((data[0] & 1) != 0) out << "// KYRL Panes\n";
    out.write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
  }
  KyXmlError::Reset();
  KyModuleLoader::scanDescriptor(KyPathName(file.c_str()), KyPathName((Folder() + "/fuzz.so").c_str()));
  KyModuleDescriptor* descriptor = KyModule::Find("fuzz");
  if (descriptor != nullptr && descriptor->getVersion() > KyModule::kLibraryVersion) {
    std::fprintf(stderr, "module_descriptor_fuzz: a version above the limit was accepted\n");
    std::abort();
  }
  KyModuleLoader::releaseDescriptors();
  return 0;
}
