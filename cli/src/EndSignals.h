// The signals that end a host or a mount.
#pragma once

#include <signal.h>

namespace tarnel {

// INT, TERM and HUP, but for one that this process was started to ignore, as `nohup` does with HUP.
// Blocks them for the calling thread, which takes them with sigwait or a signalfd; every other thread
// blocks all signals. What a terminal's user needs besides, Ctrl-\ and Ctrl-Z, stays as it is.
inline sigset_t blockEndSignals() {
  sigset_t ends;
  sigemptyset(&ends);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action{};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) sigaddset(&ends, signal);
  }
  ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  return ends;
}

}  // namespace tarnel
