// Linked into the test build of the URL snippet, after the socket guard (whose table
// must be made first): the snippet's connections to 127.0.0.1:80 go to the port of
// the peer that the test started, given in KY_SNIPPET_HTTP_PORT. The guard refuses
// every other connection and every name but "127.0.0.1".
#include <cstdlib>

#include "support/net_guard.h"

namespace {

const bool Routed = [] {
  const char* port = std::getenv("KY_SNIPPET_HTTP_PORT");
  if (port != nullptr) KyNetGuard::Route(80, static_cast<unsigned short>(std::atoi(port)));
  return port != nullptr;
}();

}  // namespace
