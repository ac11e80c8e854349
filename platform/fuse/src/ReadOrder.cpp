#include "ReadOrder.h"

#include <algorithm>
#include <utility>

namespace tarnel {

ReadOrder::Read ReadOrder::begin(fuse_ino_t node, off_t offset) {
  MutexLock hold(lock);
  const Read read{.node = node, .offset = offset, .number = nextNumber++};
  reads[node].push_back({.read = read, .held = nullptr});
  return read;
}

void ReadOrder::end(const Read& read) {
  {
    MutexLock hold(lock);
    remove(read);
  }
  giveReady(read.node);
}

void ReadOrder::endShort(const Read& read, Answer answer) {
  {
    MutexLock hold(lock);
    Reads& all = reads[read.node];
    std::find_if(all.begin(), all.end(), [&](const UnderWay& other) {
      return other.read.number == read.number;
    })->held = std::move(answer);
  }
  giveReady(read.node);
}

void ReadOrder::remove(const Read& read) {
  const auto found = reads.find(read.node);
  std::erase_if(found->second,
                [&](const UnderWay& other) { return other.read.number == read.number; });
  if (found->second.empty()) reads.erase(found);
}

// A read stays among those under way until its answer has been given, so that two threads that
// bring ends at once cannot give theirs the wrong way round.
void ReadOrder::giveReady(fuse_ino_t node) {
  while (true) {
    Answer answer;
    Read read{};
    {
      MutexLock hold(lock);
      const auto found = reads.find(node);
      if (found == reads.end()) return;
      const auto first = std::min_element(
          found->second.begin(), found->second.end(),
          [](const UnderWay& a, const UnderWay& b) { return a.read.offset < b.read.offset; });
      if (!first->held) return;
      answer = std::exchange(first->held, nullptr);
      read = first->read;
    }
    answer();
    MutexLock hold(lock);
    remove(read);
  }
}

}  // namespace tarnel
