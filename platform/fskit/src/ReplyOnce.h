// One reply of the C surface: made exactly once, whatever the core does with it.
//
// The first call goes out; further ones do not. Dropped without a call, it goes out as EIO with
// empty results. Threads: any; the last copy may go on a thread of the core's.
#pragma once

#include <atomic>
#include <utility>

#include "fskit/TarnelCore.h"
#include "seam/VolumeError.h"

namespace tarnel {

[[nodiscard]] constexpr TarnelError surfaceError(const OptionalError& error) {
  if (!error) return {.domain = tarnelNoError, .code = 0};
  const bool isPosix = error->domain == VolumeError::Domain::posix;
  return {.domain = isPosix ? tarnelPosixError : tarnelFileSystemKitError, .code = error->code};
}

inline constexpr TarnelError surfaceInputOutput = surfaceError(posixError(darwin::inputOutput));

template <class... Results>
class ReplyOnce {
 public:
  using Function = void (*)(void* context, TarnelError error, Results... results);

  ReplyOnce(Function function, void* argument) : reply(function), context(argument) {}
  ~ReplyOnce() { fail(); }
  ReplyOnce(const ReplyOnce&) = delete;
  ReplyOnce& operator=(const ReplyOnce&) = delete;

  // False when the reply has been made before; then the results stay the caller's.
  bool send(const OptionalError& error, Results... results) {
    if (made.exchange(true)) return false;
    reply(context, surfaceError(error), results...);
    return true;
  }
  void fail() {
    if (!made.exchange(true)) reply(context, surfaceInputOutput, Results{}...);
  }

 private:
  const Function reply;
  void* const context;
  std::atomic<bool> made = false;
};

}  // namespace tarnel
