// The signals that end a host or a mount.
#pragma once

#include <signal.h>

namespace tarnel {

// INT, TERM and HUP, but for a HUP that this process was started to ignore: that is what `nohup`
// asks for. (A shell ignores INT for what it starts in the background; a script that sends it means
// it.) Blocks them for the calling thread, which takes them with sigwait or a signalfd; every other
// thread blocks all signals. What a terminal's user needs besides, Ctrl-\ and Ctrl-Z, stays as it
// is.
inline sigset_t blockEndSignals() {
  sigset_t ends;
  sigemptyset(&ends);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action{};
    ::sigaction(signal, nullptr, &action);
    const bool isNotWanted = signal == SIGHUP && action.sa_handler == SIG_IGN;
    if (!isNotWanted) sigaddset(&ends, signal);
  }
  ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  return ends;
}

}  // namespace tarnel
