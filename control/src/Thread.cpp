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

}  // namespace

void blockAllSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

std::thread startThread(const std::string& name, std::function<void()> body) {
  // Blocked before the thread exists, so that it never runs with a signal open.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread([name, body = std::move(body)] {
    nameThisThread(name);
    body();
  });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace tarnel
