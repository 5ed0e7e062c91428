#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <string>

#include "kybase/paths/path_list.h"
#include "kybase/paths/path_name.h"

namespace {

using P = KyPathName;

// Each case works in a fresh temporary directory, removed afterwards by the system's
// own tools so that a faulty remove cannot hide its faults.
class PathFsTest : public testing::Test {
 protected:
  void SetUp() override {
    char base[] = "/tmp/kypathsXXXXXX";
    ASSERT_NE(mkdtemp(base), nullptr);
    root = std::string(base) + "/";
    outside = std::string(base) + "-outside/";
    ASSERT_EQ(mkdir(outside.c_str(), 0777), 0);
    Write(outside + "keep", "kept");
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  }
  void TearDown() override {
    ASSERT_EQ(chdir(cwd), 0);
    std::string command = "chmod -R u+rwx " + root + " 2>/dev/null; rm -rf " + root + " " + outside;
    ASSERT_EQ(std::system(command.c_str()), 0);
  }
  static void Write(const std::string& name, const char* text) { std::ofstream(name) << text; }
  static bool Exists(const std::string& name) {
    struct stat s;
    return lstat(name.c_str(), &s) == 0;
  }
  std::string root, outside;
  char cwd[4096];
};

TEST_F(PathFsTest, QueriesAndAccess) {
  for (const char* name : {"a.EXE", "a.cmd", "run"}) Write(root + name, "x");
  chmod((root + "run").c_str(), 0755);
  EXPECT_TRUE(P(root.c_str()).doesExist());
  EXPECT_TRUE(P(root.substr(0, root.size() - 1).c_str()).doesExist());
  P exe((root + "a.EXE").c_str());
  EXPECT_TRUE(exe.isNewer(exe));
  EXPECT_FALSE(exe.isNewer((root + "none").c_str()));
  EXPECT_TRUE(exe.isExecutable());
  EXPECT_FALSE(P::isExecutable((root + "a.cmd").c_str()));
  EXPECT_TRUE(P::isExecutable((root + "run").c_str()));
  EXPECT_FALSE(P(root.c_str()).isSensitive());
  short mode = 1;
  EXPECT_TRUE(exe.queryMode(mode));
  EXPECT_TRUE(S_ISREG(static_cast<unsigned short>(mode)));
  EXPECT_TRUE(exe.changeMode(0600));
  EXPECT_FALSE(P(root.c_str()).changeMode(0600));
  long long time = -1;
  EXPECT_FALSE(P((root + "none").c_str()).queryModificationTime(time));
  EXPECT_EQ(time, -1);
  EXPECT_TRUE(exe.queryModificationTime(time) && time > 0);
  // Writable tests leave nothing behind, truncate nothing, and keep the reversed sense
  // for a missing directory, which stays made.
  EXPECT_TRUE(P::isWritable(root.c_str()));
  EXPECT_FALSE(Exists(root + "kyvtempaccess.tst"));
  EXPECT_TRUE(exe.isWritable());
  EXPECT_EQ(std::ifstream(root + "a.EXE").get(), 'x');
  EXPECT_TRUE(P::isWritable((root + "new.txt").c_str()));
  EXPECT_FALSE(Exists(root + "new.txt"));
  EXPECT_FALSE(P::isWritable((root + "made/").c_str()));
  EXPECT_TRUE(Exists(root + "made"));
  Write(root + "kyvtempaccess.tst", "mine");
  EXPECT_FALSE(P::isWritable(root.c_str()));  // only a file it made itself is unlinked
  EXPECT_TRUE(Exists(root + "kyvtempaccess.tst"));
}

TEST_F(PathFsTest, ReadOnlyFolder) {
  if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
  ASSERT_EQ(mkdir((root + "ro").c_str(), 0555), 0);
  EXPECT_FALSE(P::isWritable((root + "ro/").c_str()));
  EXPECT_TRUE(P::isReadable((root + "ro/").c_str()));
  EXPECT_FALSE(P((root + "ro/x/").c_str()).create(-1, true));
}

TEST_F(PathFsTest, CreateAndRemove) {
  EXPECT_FALSE(P((root + "n/").c_str()).create(-1, false));
  EXPECT_TRUE(P((root + "a/b/c/").c_str()).create(0750, true));
  struct stat s;
  ASSERT_EQ(stat((root + "a/b").c_str(), &s), 0);
  EXPECT_EQ(s.st_mode & 0777, 0750u);
  EXPECT_TRUE(P((root + "x/y/f.txt").c_str()).create(-1, true));
  EXPECT_TRUE(Exists(root + "x/y/f.txt"));
  EXPECT_TRUE(P((root + "a/b/").c_str()).create(0700, true));  // exists: mode unchanged
  ASSERT_EQ(stat((root + "a/b").c_str(), &s), 0);
  EXPECT_EQ(s.st_mode & 0777, 0750u);
  EXPECT_FALSE(P((root + "a/").c_str()).remove(false));
  EXPECT_TRUE(Exists(root + "a/b/c"));
  // Links out of the tree, a loop, a dangling link and a socket all go as entries.
  ASSERT_EQ(symlink(outside.c_str(), (root + "a/out").c_str()), 0);
  ASSERT_EQ(symlink((outside + "keep").c_str(), (root + "a/b/file-out").c_str()), 0);
  ASSERT_EQ(symlink((root + "a").c_str(), (root + "a/b/c/loop").c_str()), 0);
  ASSERT_EQ(symlink((root + "none").c_str(), (root + "a/dangling").c_str()), 0);
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string socketName = root + "a/b/sock";
  ASSERT_LT(socketName.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, socketName.c_str());
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_FALSE(P(socketName.c_str()).isSystemDirectory());
  EXPECT_TRUE(P((root + "a/").c_str()).remove(true));
  close(fd);
  EXPECT_FALSE(Exists(root + "a"));
  EXPECT_TRUE(Exists(outside + "keep"));
  // A link named as a directory is unlinked, not entered.
  ASSERT_EQ(symlink(outside.c_str(), (root + "l").c_str()), 0);
  EXPECT_TRUE(P((root + "l/").c_str()).remove(true));
  EXPECT_TRUE(Exists(outside + "keep"));
  P dosRoot;
  dosRoot.setDosValue("c:\\");
  EXPECT_FALSE(P("/").remove(false));
  EXPECT_FALSE(dosRoot.remove(false));
  EXPECT_FALSE(P("/").isEmptyDirectory());
}

TEST_F(PathFsTest, DeepTrees) {
  std::string deep = root;
  for (int i = 0; i < 1000; ++i) deep += "d/";
  EXPECT_TRUE(P(deep.c_str()).create(-1, true));
  EXPECT_TRUE(P((root + "d/").c_str()).remove(true));
  EXPECT_FALSE(Exists(root + "d"));
  // Far past the system's limit: false, without exhausting the stack, having made the
  // levels the system allows.
  std::string huge = root;
  for (int i = 0; i < 500000; ++i) huge += "e/";
  EXPECT_FALSE(P(huge.c_str()).create(-1, true));
  EXPECT_TRUE(Exists(root + "e/e/e"));
}

TEST_F(PathFsTest, ScanEntriesAndEmptiness) {
  ASSERT_EQ(mkdir((root + "s").c_str(), 0777), 0);
  ASSERT_EQ(mkdir((root + "s/sub").c_str(), 0777), 0);
  Write(root + "s/f.txt", "");
  Write(root + "s/g.xml", "");
  P dir((root + "s/").c_str());
  ASSERT_TRUE(dir.openDir());
  std::set<std::string> seen;
  P entry;
  while (dir.readDir(entry)) seen.insert(entry.getUnixValue().getValue());
  EXPECT_EQ(seen, (std::set<std::string>{"./", "../", "sub/", "f.txt", "g.xml"}));
  EXPECT_FALSE(dir.readDir(entry));
  dir.rewindDir();
  EXPECT_TRUE(dir.readDir(entry));
  EXPECT_TRUE(dir.openDir());  // a second open replaces the first
  EXPECT_TRUE(dir.closeDir());
  EXPECT_FALSE(dir.readDir(entry));
  EXPECT_FALSE(P((root + "none/").c_str()).openDir());
  EXPECT_TRUE(P("/").openDir());
  EXPECT_FALSE(dir.isEmptyDirectory());
  EXPECT_TRUE(P((root + "s/sub/").c_str()).isEmptyDirectory());
  P withDevice((root + "s/sub/").c_str());
  withDevice.setDevice("c");
  EXPECT_FALSE(withDevice.isEmptyDirectory());
  // Its "." entry names the directory itself: that part fails, the rest goes on.
  Write(root + "s/sub/x", "");
  EXPECT_FALSE(withDevice.remove(true));
  EXPECT_FALSE(Exists(root + "s/sub/x"));
}

TEST_F(PathFsTest, FindInPathTrace) {
  ASSERT_EQ(mkdir((root + "data").c_str(), 0777), 0);
  Write(root + "data/w.xml", "");
  KyPathList list;
  list.setList(P((root + "missing/").c_str()));
  list.addInList(P((root + "data/").c_str()));
  list.setPrevList(P("."));
  P found("same");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(list.findInPath("w.xml", found, true));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "KyvPathList::findInPath file w.xml not in ./.\n"
            "KyvPathList::findInPath file w.xml not in " + root + "missing/.\n"
            "KyvPathList::findInPath found: " + root + "data/w.xml.\n");
  EXPECT_EQ(std::string(found.getUnixValue().getValue()), root + "data/w.xml");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(list.findInPath((root + "data/w.xml").c_str(), found, false));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(PathFsTest, LongAndDeletedWorkingDirectory) {
  ASSERT_EQ(chdir(root.c_str()), 0);
  const std::string name(200, 'w');
  for (int i = 0; i < 11; ++i) ASSERT_EQ(mkdir(name.c_str(), 0777) || chdir(name.c_str()), 0);
  std::string expected(root);
  for (int i = 0; i < 11; ++i) expected += name + "/";
  ASSERT_GT(expected.size(), 2000u);
  P here("f.txt");
  here.queryCurrentDirectory(nullptr);
  EXPECT_EQ(std::string(here.getUnixValue().getValue()), expected + "f.txt");
  std::string buffer(4096, '#');
  P::QueryCurrentDirectory(&buffer[0], 4096, nullptr);
  EXPECT_EQ(std::string(buffer.c_str()), expected.substr(0, expected.size() - 1));
  buffer.assign(100, '#');
  P::QueryCurrentDirectory(&buffer[0], 10, nullptr);  // too small: the empty text
  EXPECT_EQ(buffer, std::string(1, '\0') + std::string(99, '#'));
  KyString device("c");
  buffer.assign(4096, '#');
  P::QueryCurrentDirectory(&buffer[0], 4096, &device);
  EXPECT_STREQ(buffer.c_str(), "/");
  struct stat before, after;
  ASSERT_EQ(stat(".", &before), 0);
  ASSERT_EQ(rmdir(expected.c_str()), 0);
  P::QueryCurrentDirectory(&buffer[0], 4096, &device);  // returns into the deleted directory
  ASSERT_EQ(stat(".", &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

}  // namespace
