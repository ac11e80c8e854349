// The bridge from asynchronous work to the system's reply, for every operation that needs the host.
//
// The work gets a continuation and returns at once; the source calls the continuation exactly once,
// from a thread of its own, which is where `complete` runs. No task object, no thread that waits
// and no hand-over of its own stands between the two. Nobody keeps, awaits or cancels the work.
#pragma once

#include <utility>

#include "fs/FabricSource.h"

namespace tarnel {

template <class T, class Work, class Complete>
void on(Work work, Complete complete) {
  std::move(work)(typename FabricSource::template Reply<T>(std::move(complete)));
}

}  // namespace tarnel
