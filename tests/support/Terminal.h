// A terminal that the test sits at: what programs show on it, and what is typed.
//
// Waiting is bounded. The terminal echoes what is typed, and shows a line feed as "\r\n".
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <string_view>

#include "control/UniqueFd.h"
#include "support/Eventually.h"

namespace tarnel::test {

class Terminal {
 public:
  Terminal() : screen(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (screen.valid() && ::grantpt(screen.get()) == 0 && ::unlockpt(screen.get()) == 0) {
      const char* const made = ::ptsname(screen.get());
      if (made != nullptr) name = made;
    }
    // Held, so that the terminal lives on between the programs.
    keeper = UniqueFd(::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    EXPECT_TRUE(keeper.valid()) << "no terminal here";
  }

  // For ProgramOptions::terminal.
  [[nodiscard]] const std::string& path() const { return name; }

  void type(std::string_view text) {
    EXPECT_EQ(::write(screen.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  // True once everything that has been shown holds `text`.
  [[nodiscard]] bool waitFor(std::string_view text) {
    return eventually([&] {
      take();
      return seen.find(text) != std::string::npos;
    });
  }
  // What has been shown.
  [[nodiscard]] const std::string& shown() {
    take();
    return seen;
  }

  void clear() {
    take();
    seen.clear();
  }

 private:
  void take() {
    pollfd watched{.fd = screen.get(), .events = POLLIN, .revents = 0};
    while (::poll(&watched, 1, 0) == 1 && (watched.revents & POLLIN) != 0) {
      char bytes[4'096];
      const ssize_t count = ::read(screen.get(), bytes, sizeof bytes);
      if (count <= 0) return;
      seen.append(bytes, static_cast<std::size_t>(count));
    }
  }

  UniqueFd screen;
  UniqueFd keeper;
  std::string name;
  std::string seen;
};

}  // namespace tarnel::test
