#include "support/net_guard.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <map>

namespace {

std::map<unsigned short, unsigned short> routes;
std::vector<std::string> names;
std::vector<unsigned short> ports;
void (*afterConnect)() = nullptr;

}  // namespace

void KyNetGuard::Route(unsigned short asked, unsigned short real) { routes[asked] = real; }
std::vector<std::string>& KyNetGuard::Names() { return names; }
std::vector<unsigned short>& KyNetGuard::Ports() { return ports; }
void KyNetGuard::AfterConnect(void (*hook)()) { afterConnect = hook; }

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
  names.push_back(node != nullptr ? node : "");
  if (node == nullptr || std::strcmp(node, "127.0.0.1") != 0) return EAI_NONAME;
  addrinfo numeric = hints != nullptr ? *hints : addrinfo{};
  numeric.ai_flags |= AI_NUMERICHOST;
  return reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"))(node, service, &numeric, result);
}

extern "C" int connect(int descriptor, const sockaddr* address, socklen_t length) {
  sockaddr_in to{};
  if (address != nullptr && address->sa_family == AF_INET && length >= sizeof to) {
    std::memcpy(&to, address, sizeof to);
    ports.push_back(ntohs(to.sin_port));
    auto route = routes.find(ports.back());
    if (to.sin_addr.s_addr == htonl(INADDR_LOOPBACK) && route != routes.end() && route->second != 0) {
      to.sin_port = htons(route->second);
      int result = reinterpret_cast<decltype(&connect)>(dlsym(RTLD_NEXT, "connect"))(
          descriptor, reinterpret_cast<const sockaddr*>(&to), sizeof to);
      int error = errno;
      if (afterConnect != nullptr && (result == 0 || error == EINPROGRESS)) afterConnect();
      errno = error;
      return result;
    }
  }
  errno = ECONNREFUSED;
  return -1;
}
