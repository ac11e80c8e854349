// A benchmark that computes something wrong ends the run: its figures would mean nothing.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace tarnel::bench {

inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "micro_bench: %s\n", what);
  std::_Exit(1);
}

}  // namespace tarnel::bench
