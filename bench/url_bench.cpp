// URL stream benchmarks on 100 MB of generated text, made once into a scratch directory:
// the gzip file through the stream against zlib's gzread, the plain file against
// std::ifstream (64 KiB reads and getline), and HTTP from a loopback thread against a
// plain recv loop on the same connection kind. "_Ky" runs read once (kReadOnce);
// "_KyKeep" runs keep every byte, as the stream does by default.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "kybase/url/url_stream.h"
#include "support/net_guard.h"

namespace {

constexpr std::size_t kTextSize = 100 << 20;
constexpr std::size_t kBlock = 64 << 10;

std::string MakeText() {
  static const char* const words[] = {"joint", "plane", "chisel", "mortise", "tenon", "glue", "oak", "walnut",
                                      "bench", "saw",   "gauge",  "square",  "rasp",  "file", "dowel", "clamp"};
  std::string text;
  text.reserve(kTextSize + 128);
  unsigned state = 12345;
  for (unsigned line = 0; text.size() < kTextSize; ++line) {
    text += "line " + std::to_string(line) + ":";
    for (int word = 0; word < 10; ++word) {
      state = state * 1103515245 + 12345;
      text += ' ';
      text += words[(state >> 16) % 16];
    }
    text += '\n';
  }
  text.resize(kTextSize);
  text.back() = '\n';
  return text;
}

// The text as a plain file and as a gzip file, made on first use and kept between runs.
const std::string& Dir() {
  static const std::string dir = [] {
    std::string path = (std::filesystem::temp_directory_path() / "kybase_url_bench").string();
    std::filesystem::create_directories(path);
    if (std::filesystem::exists(path + "/text.gz") && std::filesystem::file_size(path + "/text.txt") == kTextSize)
      return path;
    const std::string text = MakeText();
    std::ofstream(path + "/text.txt", std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
    gzFile out = gzopen((path + "/text.gz.part").c_str(), "wb6");
    gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
    gzclose(out);
    std::filesystem::rename(path + "/text.gz.part", path + "/text.gz");
    return path;
  }();
  return dir;
}

std::size_t ReadStream(std::istream& stream) {
  std::vector<char> block(kBlock);
  std::size_t total = 0;
  while (stream.read(block.data(), kBlock) || stream.gcount() > 0) total += static_cast<std::size_t>(stream.gcount());
  return total;
}

std::size_t ReadUrl(const std::string& url, bool keep) {
  KyIUrlStream stream(url.c_str());
  if (!keep) stream.setHints(KyIUrlStream::kReadOnce);
  return ReadStream(stream);
}

void Check(benchmark::State& state, std::size_t total) {
  if (total != kTextSize) state.SkipWithError("short read");
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTextSize));
}

void Gzip_Ky(benchmark::State& state) {
  const std::string url = "file:" + Dir() + "/text.gz";
  std::size_t total = 0;
  for (auto _ : state) total = ReadUrl(url, false);
  Check(state, total);
}

void Gzip_KyKeep(benchmark::State& state) {
  const std::string url = "file:" + Dir() + "/text.gz";
  std::size_t total = 0;
  for (auto _ : state) total = ReadUrl(url, true);
  Check(state, total);
}

void Gzip_BaseGzread(benchmark::State& state) {
  const std::string path = Dir() + "/text.gz";
  std::size_t total = 0;
  std::vector<char> block(kBlock);
  for (auto _ : state) {
    gzFile in = gzopen(path.c_str(), "rb");
    total = 0;
    for (int got; (got = gzread(in, block.data(), kBlock)) > 0;) total += static_cast<std::size_t>(got);
    gzclose(in);
  }
  Check(state, total);
}

void Plain_Ky(benchmark::State& state) {
  const std::string path = Dir() + "/text.txt";
  std::size_t total = 0;
  for (auto _ : state) total = ReadUrl(path, false);
  Check(state, total);
}

void Plain_KyKeep(benchmark::State& state) {
  const std::string path = Dir() + "/text.txt";
  std::size_t total = 0;
  for (auto _ : state) total = ReadUrl(path, true);
  Check(state, total);
}

void Plain_BaseIfstream(benchmark::State& state) {
  const std::string path = Dir() + "/text.txt";
  std::size_t total = 0;
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    total = ReadStream(in);
  }
  Check(state, total);
}

std::size_t ReadLines(std::istream& stream) {
  std::size_t total = 0;
  for (std::string line; std::getline(stream, line);) total += line.size() + 1;
  return total;
}

void Lines_Ky(benchmark::State& state) {
  const std::string path = Dir() + "/text.txt";
  std::size_t total = 0;
  for (auto _ : state) {
    KyIUrlStream stream(path.c_str());
    stream.setHints(KyIUrlStream::kReadOnce);
    total = ReadLines(stream);
  }
  Check(state, total);
}

void Lines_BaseIfstream(benchmark::State& state) {
  const std::string path = Dir() + "/text.txt";
  std::size_t total = 0;
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    total = ReadLines(in);
  }
  Check(state, total);
}

// A loopback peer: one thread per connection answers one request with the text.
class HttpPeer {
 public:
  HttpPeer() : listener(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    listen(listener, 4);
    KyNetGuard::Route(80, ntohs(address.sin_port));
  }
  ~HttpPeer() { close(listener); }

  std::thread serve() {
    return std::thread([this] {
      int connection = accept(listener, nullptr, nullptr);
      std::string request;
      char piece[512];
      for (ssize_t got; request.find("\n\n") == std::string::npos && (got = recv(connection, piece, sizeof piece, 0)) > 0;)
        request.append(piece, static_cast<std::size_t>(got));
      std::string header = "HTTP/1.0 200 OK\r\nContent-Length: " + std::to_string(kTextSize) + "\r\n\r\n";
      send(connection, header.data(), header.size(), MSG_NOSIGNAL);
      for (std::size_t sent = 0; sent < kTextSize;) {
        ssize_t done = send(connection, text.data() + sent, std::min<std::size_t>(1 << 20, kTextSize - sent), MSG_NOSIGNAL);
        if (done <= 0) break;
        sent += static_cast<std::size_t>(done);
      }
      close(connection);
    });
  }

 private:
  int listener;
  const std::string text = MakeText();
};

void Http_Ky(benchmark::State& state) {
  HttpPeer peer;
  std::size_t total = 0;
  for (auto _ : state) {
    std::thread server = peer.serve();
    total = ReadUrl("http://127.0.0.1/text", false);
    server.join();
  }
  Check(state, total);
}

void Http_BaseRecv(benchmark::State& state) {
  HttpPeer peer;
  std::size_t total = 0;
  std::vector<char> block(kBlock);
  for (auto _ : state) {
    std::thread server = peer.serve();
    int connection = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(80);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const char request[] = "GET /text HTTP/1.0\nHost: 127.0.0.1\n\n";
    send(connection, request, sizeof request - 1, MSG_NOSIGNAL);
    std::string head;
    total = 0;
    for (ssize_t got; (got = recv(connection, block.data(), kBlock, 0)) > 0;) {
      std::size_t body = static_cast<std::size_t>(got);
      if (head.find("\r\n\r\n") == std::string::npos) {
        head.append(block.data(), body);
        std::size_t end = head.find("\r\n\r\n");
        body = end == std::string::npos ? 0 : head.size() - end - 4;
      }
      total += body;
    }
    close(connection);
    server.join();
  }
  Check(state, total);
}

}  // namespace

BENCHMARK(Gzip_Ky)->Unit(benchmark::kMillisecond);
BENCHMARK(Gzip_KyKeep)->Unit(benchmark::kMillisecond);
BENCHMARK(Gzip_BaseGzread)->Unit(benchmark::kMillisecond);
BENCHMARK(Plain_Ky)->Unit(benchmark::kMillisecond);
BENCHMARK(Plain_KyKeep)->Unit(benchmark::kMillisecond);
BENCHMARK(Plain_BaseIfstream)->Unit(benchmark::kMillisecond);
BENCHMARK(Lines_Ky)->Unit(benchmark::kMillisecond);
BENCHMARK(Lines_BaseIfstream)->Unit(benchmark::kMillisecond);
BENCHMARK(Http_Ky)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Http_BaseRecv)->Unit(benchmark::kMillisecond)->UseRealTime();
