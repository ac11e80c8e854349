#include "control/Thread.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace tarnel {
namespace {

constexpr std::size_t maxNameBytes = 15;

void nameThisThread(const std::string& name) {
#if defined(__APPLE__)
  pthread_setname_np(name.c_str());
#else
  // The end of a label tells more than its beginning.
  const std::size_t from = name.size() > maxNameBytes ? name.size() - maxNameBytes : 0;
  pthread_setname_np(pthread_self(), name.c_str() + from);
#endif
}

sigset_t everySignal() {
  sigset_t all;
  sigfillset(&all);
  return all;
}

// Every signal blocked in a scope, however it is left: a thread that cannot be made throws.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    const sigset_t all = everySignal();
    pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before;
};

}  // namespace

void blockAllSignals() {
  const sigset_t all = everySignal();
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

std::thread startThread(const std::string& name, std::function<void()> body) {
  // Blocked before the thread exists, so that it never runs with a signal open.
  const SignalsBlocked blocked;
  return std::thread([name, body = std::move(body)] {
    nameThisThread(name);
    body();
  });
}

}  // namespace tarnel
