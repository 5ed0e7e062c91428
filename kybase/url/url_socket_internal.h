// Socket steps shared by the HTTP and FTP sources. Every wait is a poll of one
// descriptor for 10 seconds, retried when interrupted and given up after the second
// silent period, so no step of a connection blocks for more than about 20 seconds.
// Descriptors are made close-on-exec; sends never raise SIGPIPE.
#ifndef KYBASE_URL_URL_SOCKET_INTERNAL_H
#define KYBASE_URL_URL_SOCKET_INTERNAL_H

#include <netinet/in.h>

#include <cstddef>

// Waits until `descriptor` is ready for `events` (or has failed, which the next call
// reports). False after two silent periods or when poll fails.
bool KyUrlWait(int descriptor, short events);

// Looks `host` up as an IPv4 name, connects a new stream socket to it on `port` and
// returns the socket, or -1.
int KyUrlConnect(const char* host, unsigned short port);

// Sends all of `text` or fails; a peer that stops reading ends the send after the wait.
bool KyUrlSend(int descriptor, const char* text, std::size_t length);
bool KyUrlSend(int descriptor, const char* text);

// Waits for data, then receives up to `size` bytes: their number, 0 when the peer has
// closed, -1 on a failure or after the wait.
int KyUrlReceive(int descriptor, char* buffer, int size);

// Closes `descriptor` if it is open and sets it to -1.
void KyUrlClose(int& descriptor);

#endif  // KYBASE_URL_URL_SOCKET_INTERNAL_H
