// A source in memory: answers from a tree that the test makes, and fails, stalls or answers late
// when the test says so.
//
//   FakeSource source;
//   source.put("me/Docs/a.txt", "hello");
//   source.failNext(FabricSourceError{FabricSourceError::Kind::timedOut});
//
// What an operation answers is settled when it is called; when the answer goes out is another
// matter (stall). Replies come from threads of the source's own, one after another on each.
// Threads: every operation from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "control/Mutex.h"
#include "control/SerialQueue.h"
#include "fs/FabricSource.h"

namespace tarnel::test {

struct SourceCall {
  enum class Kind { shareListing, stat, list, read };
  Kind kind;
  std::string path = {};
  std::int64_t offset = 0;  // read only
  std::int64_t length = 0;  // read only

  friend bool operator==(const SourceCall&, const SourceCall&) = default;
  friend void PrintTo(const SourceCall& call, std::ostream* out);
};

class FakeSource final : public FabricSource {
 public:
  using Call = SourceCall;

  // Several threads let several replies run at once.
  explicit FakeSource(std::size_t threads = 1);

  // The tree. A file's folders come with it, and so does the share that its first two names make.
  void put(const std::string& path, Bytes content);
  void putDirectory(const std::string& path);
  // The status that this path answers with, whatever it is; its folder lists it.
  void putStat(const std::string& path, FileStat stat);
  void remove(const std::string& path);  // with everything below it
  // Shares are listed in the order given, as often as given.
  void putShare(std::string peer, std::string name, bool isRemote = false);
  // What `list` of this path answers from now on, in this order, in the place of the tree's
  // children.
  void putListing(const std::string& path, std::vector<FileStat> entries);

  // Failures. One for each coming call, once `after` more calls have gone as usual.
  void failNext(FabricFailure failure, std::size_t after = 0);
  void failWith(FabricFailure failure);  // every call, until succeed()
  void succeed();

  // Reads answer with at most this many bytes, like a host that likes small answers.
  void limitChunks(std::int64_t bytes);
  // The next read answers with these bytes, whatever was asked, as a bad host does.
  void answerNextRead(Bytes bytes);

  // Answers are held back from now on, until they are released, oldest first or newest first.
  // A cancelled one becomes `disconnected`.
  void stall();
  void release();
  void releaseNewestFirst();
  [[nodiscard]] bool waitForStalled(std::size_t count) const;

  [[nodiscard]] std::vector<Call> calls() const;
  [[nodiscard]] std::vector<Call> calls(Call::Kind kind) const;
  [[nodiscard]] std::size_t cancels() const;

  void shareListing(Reply<std::vector<FabricShare>> reply) override;
  void stat(const std::string& relpath, Reply<FileStat> reply) override;
  void list(const std::string& relpath, Reply<std::vector<FileStat>> reply) override;
  void read(const std::string& relpath, std::int64_t offset, std::int64_t length,
            Reply<Bytes> reply) override;
  void cancelAll() override;

 private:
  struct Node {
    FileStat status;
    Bytes content;
  };
  // An answer that only has to be sent: with this failure, or as it was settled.
  using Answer = std::function<void(std::optional<FabricFailure>)>;

  template <class T>
  void answer(Call call, Reply<T> reply, Result<T> (FakeSource::*settle)(const Call&));
  [[nodiscard]] Result<std::vector<FabricShare>> settleShares(const Call& call) REQUIRES(lock);
  [[nodiscard]] Result<FileStat> settleStat(const Call& call) REQUIRES(lock);
  [[nodiscard]] Result<std::vector<FileStat>> settleList(const Call& call) REQUIRES(lock);
  [[nodiscard]] Result<Bytes> settleRead(const Call& call) REQUIRES(lock);

  void addFolders(std::string_view path) REQUIRES(lock);
  Node& addNode(const std::string& path, FileStat status) REQUIRES(lock);
  [[nodiscard]] std::optional<FabricFailure> plannedFailure() REQUIRES(lock);
  void send(Answer answer, std::optional<FabricFailure> failure) REQUIRES(lock);
  void releaseAll(bool newestFirst);

  mutable Mutex lock;  // guards all below
  std::map<std::string, Node> nodes GUARDED_BY(lock);
  std::vector<std::string> order GUARDED_BY(lock);  // of the nodes, as they were put
  std::map<std::string, std::vector<FileStat>> listings GUARDED_BY(lock);
  std::vector<FabricShare> shareList GUARDED_BY(lock);
  std::deque<std::optional<FabricFailure>> planned GUARDED_BY(lock);
  std::optional<FabricFailure> always GUARDED_BY(lock);
  std::optional<std::int64_t> chunkLimit GUARDED_BY(lock);
  std::optional<Bytes> nextChunk GUARDED_BY(lock);
  bool stalling GUARDED_BY(lock) = false;
  std::deque<Answer> stalled GUARDED_BY(lock);
  std::vector<Call> made GUARDED_BY(lock);
  std::size_t cancelled GUARDED_BY(lock) = 0;
  std::size_t nextQueue GUARDED_BY(lock) = 0;
  std::list<SerialQueue> queues GUARDED_BY(lock);
};

// The failures by name.
[[nodiscard]] FabricFailure failure(FabricSourceError::Kind kind);
[[nodiscard]] FabricFailure ioFailure(std::string message);

}  // namespace tarnel::test
