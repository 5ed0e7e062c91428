// A guard over the socket calls of the programs that link it (tests, fuzz targets,
// benchmarks): it defines connect and getaddrinfo, so every connection the library
// makes passes here. Only the name "127.0.0.1" is looked up, and only connections to
// 127.0.0.1 on a routed port go through, to the port of a peer that the program
// started itself; everything else is refused, so nothing leaves the machine. The names
// looked up and the ports asked for (before routing) are recorded. Not thread-safe:
// connections are made from one thread.
#ifndef KYBASE_TESTS_SUPPORT_NET_GUARD_H
#define KYBASE_TESTS_SUPPORT_NET_GUARD_H

#include <string>
#include <vector>

namespace KyNetGuard {

// Connections to 127.0.0.1:`asked` go to 127.0.0.1:`real`; a `real` of 0 refuses them.
void Route(unsigned short asked, unsigned short real);
std::vector<std::string>& Names();
std::vector<unsigned short>& Ports();
// Called after every connection that went through (also one still in progress), so that
// a single-threaded program can accept and answer before the library reads.
void AfterConnect(void (*hook)());

}  // namespace KyNetGuard

#endif  // KYBASE_TESTS_SUPPORT_NET_GUARD_H
