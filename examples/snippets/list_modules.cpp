// Lists the module descriptors on the module path (the current directory, then
// KYMODULEPATH or else PATH), then loads one module by name.
#include <kybase/kybase.h>

#include <iostream>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KyModule::ReScan();
  unsigned long count = 0;
  KyModuleDescriptor** block = KyModule::GetDescriptors(count);
  const std::vector<KyModuleDescriptor*> descriptors(block, block + count);  // the block is only lent
  for (const KyModuleDescriptor* descriptor : descriptors)
    std::cout << (descriptor->getName() ? descriptor->getName() : "") << ", version " << descriptor->getVersion()
              << " (hundredths), library " << descriptor->getLibraryPath().getBaseName() << '\n';
  KyModule* module = KyModule::Load(argv[1], const_cast<char*>("first steps"));
  std::cout << "Load(\"" << argv[1] << "\"): " << (module ? "a module" : "null") << ", status "
            << KyModule::GetError() << '\n';
  const bool loaded = module != nullptr;
  delete module;  // the module is the caller's
  return loaded ? 0 : 1;
}
