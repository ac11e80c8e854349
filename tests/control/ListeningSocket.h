// A listening socket that accepts nobody, and a bare connect, for tests of connecting.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "control/PosixSocket.h"
#include "control/UniqueFd.h"

namespace tarnel::test {

inline sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), std::min(path.size(), sizeof address.sun_path - 1));
  return address;
}

inline UniqueFd listeningSocket(const std::string& path, int backlog = 8) {
  UniqueFd fd = makeUnixStreamSocket();
  const sockaddr_un address = addressOf(path);
  EXPECT_EQ(::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(::listen(fd.get(), backlog), 0);
  return fd;
}

// For a descriptor that must be there before the connection is.
inline void connectTo(int fd, const std::string& path) {
  const sockaddr_un address = addressOf(path);
  EXPECT_EQ(::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

}  // namespace tarnel::test
