#include "kybase/url/url_stream.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>

#include "support/net_guard.h"
#include "support/sanitizer.h"

namespace {

const std::string kDir = KY_URL_TEST_DIR;

std::string Slurp(std::istream&& in) {
  std::ostringstream out;
  for (char c; in.get(c);) out.put(c);
  return out.str();
}
std::string Slurp(std::istream& in) { return Slurp(std::move(in)); }
std::string FileText(const std::string& name) { return Slurp(std::ifstream(kDir + "/data/" + name)); }

void RunPeers(const std::string& args) {
  EXPECT_EQ(std::system(("/usr/bin/python3 " KY_URL_PEERS " " + args).c_str()), 0) << args;
}

// Starts a server of peers.py, routed from port `asked`; it dies with the result.
std::shared_ptr<FILE> Python(const std::string& args, const std::string& log, unsigned short asked) {
  unlink(log.c_str());
  FILE* out = popen(("exec /usr/bin/python3 " KY_URL_PEERS " " + args + " " + log).c_str(), "r");
  int port = 0, pid = 0;
  EXPECT_EQ(fscanf(out, "%d %d", &port, &pid), 2);
  KyNetGuard::Route(asked, static_cast<unsigned short>(port));
  KyNetGuard::Names().clear();
  KyNetGuard::Ports().clear();
  return std::shared_ptr<FILE>(out, [pid](FILE* file) { kill(pid, SIGKILL), pclose(file); });
}

// Test data is made once per build tree, under a temporary name first.
class UrlStreamTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (access((kDir + "/data/two.zip").c_str(), R_OK) == 0) return;
    std::string temp = kDir + "/data." + std::to_string(getpid());
    RunPeers("data " + temp);
    if (rename(temp.c_str(), (kDir + "/data").c_str()) != 0) RunPeers("data " + temp + " clean");
  }
};

struct Read { bool opened; std::string data; };
Read Open(const std::string& name, bool readOnce = false) {
  KyIUrlStream stream(name.c_str());
  if (readOnce) stream.setHints(KyIUrlStream::kReadOnce);
  return {!stream.fail(), Slurp(stream)};
}

TEST_F(UrlStreamTest, IsAnURL) {
  const std::pair<const char*, bool> cases[] = {{"http:x", true}, {"ftp:a", true},    {"file:a", true},
                                                {"http:", true},  {"HTTP:x", false},  {"C:/x", false},
                                                {"http", false},  {"gopher:x", false}, {nullptr, false}};
  for (const auto& [name, url] : cases) EXPECT_EQ(KyIUrlStream::IsAnURL(name), url) << (name ? name : "null");
}

// Every file, compressed or not, read whole and read once; null data: the open fails.
TEST_F(UrlStreamTest, FilesAndCompressedData) {
  const std::string text = FileText("text.txt");
  char cwd[4096];
  ASSERT_TRUE(getcwd(cwd, sizeof cwd) != nullptr && chdir((kDir + "/data").c_str()) == 0);
  const std::pair<std::string, const char*> cases[] = {
      {"text.txt", text.c_str()}, {"file:fields.gz", text.c_str()}, {"file:" + kDir + "/data/multi.gz", text.c_str()},
      {"two.zip", text.c_str()},  {"file:/x", "fallback\n"},        {"file:u@dir/file.txt", "retrieved by ftp\n"},
      {"cuthead.gz", nullptr},    {"stored.zip", nullptr},          {"empty.txt", nullptr},
      {"missing", nullptr},       {"", nullptr}};
  for (bool readOnce : {false, true}) {
    for (const auto& [name, data] : cases) {
      Read got = Open(name, readOnce);
      EXPECT_EQ(got.opened, data != nullptr) << name;
      EXPECT_EQ(got.data, data != nullptr ? data : "") << name;
    }
    Read cut = Open("cut.gz", readOnce);
    EXPECT_TRUE(cut.data.size() > 100000 && cut.data.size() < text.size() && text.find(cut.data) == 0);
    EXPECT_EQ(Open("ratio.gz", readOnce).data, std::string(20000000, 'a'));
  }
  ASSERT_EQ(chdir(cwd), 0);
}

TEST_F(UrlStreamTest, GigabyteBombReadOnceInSmallBlocks) {
  KyIUrlStream stream((kDir + "/data/bomb.gz").c_str());
  stream.setHints(KyIUrlStream::kReadOnce);
  std::vector<char> block(1 << 20, 1);
  unsigned long total = 0;
  while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
    total += static_cast<unsigned long>(stream.gcount());
    EXPECT_TRUE(block[0] == 0 && block[stream.gcount() - 1] == 0);
  }
  EXPECT_EQ(total, 1UL << 30);
  rusage usage;
  EXPECT_TRUE(getrusage(RUSAGE_SELF, &usage) == 0 && usage.ru_maxrss < 600 * 1024);  // nothing kept
}

// Kept data that the heap cannot hold any more: the stream goes on in place, losing
// nothing, and says so by its hint; a seek that would need more kept data fails.
void ReadBombInSmallAddressSpace() {
  std::ifstream statm("/proc/self/statm");
  rlim_t pages = 0;
  statm >> pages;
  rlimit limit{pages * getpagesize() + (256 << 20), RLIM_INFINITY};
  setrlimit(RLIMIT_AS, &limit);
  const std::string bomb = kDir + "/data/bomb.gz";
  const bool seekFails = KyIUrlStream(bomb.c_str()).seekg(1L << 30).fail();
  KyIUrlStream stream(bomb.c_str());
  std::vector<char> block(1 << 20);
  unsigned long total = 0;
  while (stream.read(block.data(), block.size()) || stream.gcount() > 0) total += stream.gcount();
  const bool readOnce = stream.getHints() == KyIUrlStream::kReadOnce;
  stream.clear();
  std::exit(seekFails && readOnce && total == 1UL << 30 && stream.seekg(0).fail() ? 0 : 1);
}

TEST_F(UrlStreamTest, KeptDataBeyondTheHeapGoesOnInPlace) {
#ifdef KY_TEST_ASAN
  GTEST_SKIP() << "AddressSanitizer cannot run under a limited address space";
#endif
  EXPECT_EXIT(ReadBombInSmallAddressSpace(), testing::ExitedWithCode(0), "");
}

// A caller's stream that records the sizes asked of it.
struct Recorder : std::stringbuf {
  explicit Recorder(const std::string& data) : std::stringbuf(data) {}
  std::streamsize xsgetn(char* to, std::streamsize count) override {
    asks.push_back(count);
    return std::stringbuf::xsgetn(to, count);
  }
  std::vector<std::streamsize> asks;
};

TEST_F(UrlStreamTest, ChunkSizesAndOwnership) {
  using Sizes = std::vector<std::streamsize>;
  const std::tuple<std::string, unsigned long, Sizes> cases[] = {
      {std::string(3000000, 'x'), 0x40000, {4096, 8192, 16384, 32768, 65536, 131072, 262144, 524288, 524288}},
      {std::string(30000, 'x'), 4096, {4096, 8192, 8192, 8192}},
      {FileText("fields.gz").substr(0, 90000), 0x40000, Sizes(22, 4096)}};
  for (const auto& [data, limit, sizes] : cases) {
    Recorder recorder(data);
    std::istream source(&recorder);
    KyIUrlStream stream(source);
    EXPECT_EQ(stream.getBufferLimit(), 0x40000UL);
    stream.setBufferLimit(limit);
    Slurp(stream);
    recorder.asks.resize(std::min(recorder.asks.size(), sizes.size()));
    EXPECT_EQ(recorder.asks, sizes);
  }
  static bool deleted = false;
  struct Owned : std::istringstream {
    ~Owned() override { deleted = true; }
  };
  KyIUrlStream(new Owned);
  EXPECT_TRUE(deleted);
}

TEST_F(UrlStreamTest, SeeksOverKeptData) {
  const std::string text = FileText("text.txt");
  KyIUrlStream stream((kDir + "/data/text.txt").c_str());
  std::streambuf* buffer = stream.rdbuf();
  EXPECT_EQ(buffer->pubseekoff(100, std::ios_base::beg), 200);
  EXPECT_EQ(stream.tellg(), 100);
  EXPECT_EQ(stream.get(), text[100]);
  EXPECT_EQ(buffer->pubseekoff(-5, std::ios_base::end), 4096 - 5);
  EXPECT_EQ(stream.tellg(), 4096);
  EXPECT_EQ(buffer->pubseekoff(1, std::ios_base::end) + buffer->pubseekoff(-1, std::ios_base::beg), -2);
  stream.seekg(300000);
  EXPECT_EQ(stream.get(), text[300000]);
  stream.seekg(-200001, std::ios_base::cur);
  EXPECT_EQ(stream.tellg(), 100000);
  stream.seekg(10000000);
  EXPECT_EQ(stream.get(), EOF);
  stream.clear();
  EXPECT_EQ(Slurp(stream.seekg(0)), text);
  stream.clear();
  stream.setHints(KyIUrlStream::kReadOnce);
  EXPECT_TRUE(stream.seekg(0).fail());

  KyIUrlStream once((kDir + "/data/text.txt").c_str());
  once.setHints(KyIUrlStream::kReadOnce);
  EXPECT_EQ(Slurp(once), text);
  once.clear();
  once.setHints(KyIUrlStream::kNoHints);
  EXPECT_EQ(once.seekg(0, std::ios_base::end).tellg(), 4096);  // only the first chunk was kept
}

TEST_F(UrlStreamTest, HttpReplies) {
  auto peer = Python("odd", kDir + "/odd.log", 80);
  std::string unzipped;
  for (int i = 0; i < 100; ++i) unzipped += "hello gzip over http\n";
  const std::tuple<const char*, const char*, std::string> cases[] = {  // URL, header, data ("" fails)
      {"http://127.0.0.1:8080/crlf", "HTTP/1.0 200 OK\r\nA: b\r\n\r\n", "body"},
      {"http://127.0.0.1/lf", "HTTP/1.0 200 OK\r\n\n", "body"},
      {"http://127.0.0.1/garbage", nullptr, "garbage without status"},
      {"http://127.0.0.1/split", nullptr, "aaaa\r\n\r\nbody"},
      {"http://a:p@ss@127.0.0.1/404", "HTTP/1.0 404 Not Found\r\n\r\n", "missing"},
      {"http://127.0.0.1/short", "HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\n", "0123456789"},
      {"http://127.0.0.1/long", "HTTP/1.0 200 OK\r\nContent-Length: 3\r\n\r\n", "0123456789"},
      {"http://127.0.0.1/gzip", "HTTP/1.0 200 OK\r\n\r\n", unzipped},
      {"http://127.0.0.1/close", nullptr, ""},    {"http://127.0.0.1", nullptr, ""},
      {"http://joe@127.0.0.1/crlf", nullptr, ""}, {"ftp://joe@abcd/x", nullptr, ""},
      {"http://example.com/x", nullptr, ""}};
  for (const auto& [url, header, data] : cases) {
    KyIUrlStream stream(url);
    EXPECT_EQ(stream.fail(), data.empty()) << url;
    EXPECT_STREQ(stream.getHeader(), header) << url;
    EXPECT_EQ(Slurp(stream), data) << url;
  }
  const std::string request = "GET /crlf HTTP/1.0\nUser-Agent: Mozilla/1.5\nHost: 127.0.0.1\nAccept: */*\n\n";
  EXPECT_NE(FileText("../odd.log").find(request), std::string::npos);
  std::vector<std::string> names(9, "127.0.0.1");  // none for the URL without "/"
  names.insert(names.end(), {"@127.0.0.", "@abc", "example.com"});
  EXPECT_EQ(KyNetGuard::Names(), names);
  EXPECT_EQ(KyNetGuard::Ports(), std::vector<unsigned short>(9, 80));
}

TEST_F(UrlStreamTest, HttpFilesSeekBackAndEndlessHeader) {
  auto files = Python("http " + kDir + "/data", kDir + "/http.log", 80);
  KyIUrlStream stream("http://127.0.0.1/fields.gz");
  EXPECT_EQ(std::string(stream.getHeader()).substr(0, 17), "HTTP/1.0 200 OK\r\n");
  EXPECT_EQ(Slurp(stream), FileText("text.txt"));
  stream.clear();
  EXPECT_EQ(Slurp(stream.seekg(0)), FileText("text.txt"));
  EXPECT_NE(FileText("../http.log").find("GET /fields.gz HTTP/1.0"), std::string::npos);

  auto odd = Python("odd", kDir + "/endless.log", 80);
  KyIUrlStream endless("http://127.0.0.1/endless");
  std::string data(200000, '\0');
  EXPECT_EQ(endless.read(&data[0], data.size()).gcount(), 200000);
  // The header runs past the first chunk, so it ends at the fourth byte of the second.
  EXPECT_EQ(endless.getHeader(), nullptr);
  EXPECT_TRUE(data.find("HTTP") == std::string::npos && data.find("\nX: y\r\nX: y\r\n") != std::string::npos);
}

// Each waits out the bound of about 20 seconds (a silent peer, one that never reads a
// long request), or meets a peer that hangs up on a long request, which must not raise
// SIGPIPE.
class UrlWaitTest : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Bounds, UrlWaitTest, testing::Values("/silence", "/never", "/close"));

TEST_P(UrlWaitTest, FailsWithinBound) {
  auto peer = Python("odd", kDir + "/wait" + std::to_string(getpid()) + ".log", 80);
  auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(Open("http://127.0.0.1" + GetParam() + (GetParam() == "/silence" ? "" : std::string(1 << 20, 'p'))).data.empty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
}

TEST_F(UrlStreamTest, FtpRetrieval) {
  auto peer = Python("ftp " + kDir + "/data", kDir + "/ftp.log", 21);
  EXPECT_EQ(Open("ftp://u:p@x@127.0.0.1:2121/dir/file.txt").data, "retrieved by ftp\n");
  std::string log = FileText("../ftp.log");
  EXPECT_EQ(log.substr(0, 29), "USER u\nPASS p@x\nTYPE I\nPORT 1");
  EXPECT_NE(log.find("\nRETR dir/file.txt\n"), std::string::npos);
  // Without a user no login is sent: the server refuses and never connects back.
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(Open("ftp://127.0.0.1/dir/file.txt").opened);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
  EXPECT_EQ(FileText("../ftp.log").substr(log.size(), 7), "TYPE I\n");
}

}  // namespace
