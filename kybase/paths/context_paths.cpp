// The global context's home path and module path. Core declares these operations and
// holds the two objects by pointer; they live here because they need KyPathName and
// KyPathList, which core may not include. None of them calls GetInstance: they run
// inside the context's construction.
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "kybase/core/global_context.h"
#include "kybase/paths/path_list.h"
#include "kybase/paths/path_name.h"

namespace {

// What stands in for the system directory below which user profiles live.
const char* const kProfilesBase = "/home";

// The login name of the process's user, or false when the system has none.
bool UserName(KyString& name) {
  long hint = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(hint > 0 ? static_cast<std::size_t>(hint) : 1024);
  for (;;) {
    passwd entry;
    passwd* result = nullptr;
    const int status = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &result);
    if (status == ERANGE && buffer.size() < (1u << 20)) {
      buffer.resize(buffer.size() * 2);
      continue;
    }
    if (status != 0 || result == nullptr || result->pw_name == nullptr || result->pw_name[0] == '\0') return false;
    name = result->pw_name;
    return true;
  }
}

}  // namespace

void KyGlobalContext::makePaths() {
  home = new KyPathName;
  modulePath = new KyPathList;
}

void KyGlobalContext::destroyPaths() {
  delete modulePath;
  modulePath = nullptr;
  delete home;
  home = nullptr;
}

const KyPathName& KyGlobalContext::getHome() const { return *home; }

const KyPathList& KyGlobalContext::getModulePath() const { return *modulePath; }

void KyGlobalContext::addInModulePathPrevList(const KyPathName& path) { modulePath->addInPrevList(path); }

void KyGlobalContext::addInModulePathList(const KyPathName& path) { modulePath->addInList(path); }

void KyGlobalContext::addInModulePathPostList(const KyPathName& path) { modulePath->addInPostList(path); }

void KyGlobalContext::initializeHomePath() {
  if (const char* profile = std::getenv("USERPROFILE")) {
    home->setValue(profile, -1, KyPathName::kSystemPathType, 0);
    home->closeDir();
    home->forceDirectory();
  } else if (const char* user = std::getenv("HOME")) {
    *home = user;
    home->forceDirectory();
  } else {
    home->setValue(kProfilesBase, -1, KyPathName::kSystemPathType, 0);
    home->closeDir();
    home->forceDirectory();
    home->addDirectory("Profiles", -1, KyPathName::kSystemPathType, 0);
    KyString name;
    if (UserName(name)) home->addDirectory(name, -1, KyPathName::kSystemPathType, 0);
  }
  home->addDirectory("Application Data/Kyrel/", -1, KyPathName::kSystemPathType, 0);
}

void KyGlobalContext::initializeModulePath() {
  const KyPathName current(".");
  modulePath->setList(current);
  modulePath->setPostList(current);
  modulePath->setPrevList(current);
  modulePath->removeFromList(current);
  modulePath->removeFromPostList(current);
  const char* search = std::getenv("KYMODULEPATH");
  if (search == nullptr) search = std::getenv("PATH");
  if (search != nullptr) modulePath->addInPostList(KyString(search));
}
