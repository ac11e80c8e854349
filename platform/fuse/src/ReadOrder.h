// The order in which a file's short answers reach the kernel.
//
// The kernel reads ahead in several requests at once. A short answer tells it where the file ends,
// but it believes only the first one, and fills the pages of every other with zeros. When a file
// has shrunk unseen, the answer of the larger offset could come first, since each short answer
// costs a further question to the host: the zeros of the smaller one would then stand before the
// end. So a short answer waits until no read of a smaller offset is under way; the smallest never
// waits.
// Whole answers and failures do not wait.
// Threads: any.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "FuseReply.h"
#include "control/Mutex.h"

namespace tarnel {

class ReadOrder {
 public:
  using Answer = std::function<void()>;

  struct Read {
    fuse_ino_t node;
    off_t offset;
    std::uint64_t number;
  };

  [[nodiscard]] Read begin(fuse_ino_t node, off_t offset);
  // Exactly one of the two for each read.
  void end(const Read& read);  // whole or failed: its answer has been given
  // Calls `answer` once, now or in a later end of another read of the file.
  void endShort(const Read& read, Answer answer);

 private:
  struct UnderWay {
    Read read;
    Answer held;  // a short answer that waits
  };
  using Reads = std::vector<UnderWay>;

  void remove(const Read& read) REQUIRES(lock);
  void giveReady(fuse_ino_t node);

  Mutex lock;  // guards all below; never held while an answer is given
  std::unordered_map<fuse_ino_t, Reads> reads GUARDED_BY(lock);
  std::uint64_t nextNumber GUARDED_BY(lock) = 0;
};

}  // namespace tarnel
