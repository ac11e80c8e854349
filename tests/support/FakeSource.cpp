#include "support/FakeSource.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "support/Eventually.h"

namespace tarnel::test {
namespace {

using Kind = FabricSourceError::Kind;

std::string_view parentOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string nameOf(std::string_view path) { return std::string(path.substr(path.rfind('/') + 1)); }

}  // namespace

void PrintTo(const SourceCall& call, std::ostream* out) {
  constexpr std::string_view kinds[] = {"shareListing", "stat", "list", "read"};
  *out << kinds[static_cast<int>(call.kind)] << "(" << call.path << ", " << call.offset << ", "
       << call.length << ")";
}

FabricFailure failure(FabricSourceError::Kind kind) { return FabricSourceError{kind}; }

FabricFailure ioFailure(std::string message) {
  return FabricSourceError{Kind::io, std::move(message)};
}

FakeSource::FakeSource(std::size_t threads) {
  for (std::size_t i = 0; i < threads; ++i) queues.emplace_back("fake.source");
}

FakeSource::Node& FakeSource::addNode(const std::string& path, FileStat status) {
  addFolders(parentOf(path));
  const auto [entry, isNew] = nodes.try_emplace(path);
  if (isNew) order.push_back(path);
  entry->second.status = std::move(status);
  return entry->second;
}

void FakeSource::addFolders(std::string_view path) {
  if (std::count(path.begin(), path.end(), '/') < 1 || nodes.contains(std::string(path))) return;
  addFolders(parentOf(path));
  const std::string folder(path);
  nodes[folder].status = {.name = nameOf(path), .isDirectory = true};
  order.push_back(folder);
  if (parentOf(path).find('/') != std::string_view::npos) return;
  const FabricShare share{.peer = std::string(parentOf(path)), .name = nameOf(path)};
  if (std::find(shareList.begin(), shareList.end(), share) == shareList.end()) {
    shareList.push_back(share);
  }
}

void FakeSource::put(const std::string& path, Bytes content) {
  MutexLock hold(lock);
  Node& node = addNode(path, {.name = nameOf(path), .size = std::ssize(content)});
  node.content = std::move(content);
}

void FakeSource::putDirectory(const std::string& path) {
  MutexLock hold(lock);
  addFolders(path);
}

void FakeSource::putStat(const std::string& path, FileStat stat) {
  MutexLock hold(lock);
  addNode(path, std::move(stat));
}

void FakeSource::remove(const std::string& path) {
  MutexLock hold(lock);
  const auto isGone = [&](const std::string& other) {
    return other == path || other.starts_with(path + "/");
  };
  std::erase_if(order, isGone);
  std::erase_if(nodes, [&](const auto& node) { return isGone(node.first); });
  std::erase_if(listings, [&](const auto& listing) { return isGone(listing.first); });
}

void FakeSource::putShare(std::string peer, std::string name, bool isRemote) {
  MutexLock hold(lock);
  shareList.push_back({.peer = std::move(peer), .name = std::move(name), .isRemote = isRemote});
}

void FakeSource::putListing(const std::string& path, std::vector<FileStat> entries) {
  MutexLock hold(lock);
  addFolders(path);
  listings[path] = std::move(entries);
}

void FakeSource::failNext(FabricFailure failure, std::size_t after) {
  MutexLock hold(lock);
  planned.insert(planned.end(), after, std::nullopt);
  planned.emplace_back(std::move(failure));
}

void FakeSource::failWith(FabricFailure failure) {
  MutexLock hold(lock);
  always = std::move(failure);
}

void FakeSource::succeed() {
  MutexLock hold(lock);
  always.reset();
  planned.clear();
}

void FakeSource::limitChunks(std::int64_t bytes) {
  MutexLock hold(lock);
  chunkLimit = bytes;
}

void FakeSource::answerNextRead(Bytes bytes) {
  MutexLock hold(lock);
  nextChunk = std::move(bytes);
}

void FakeSource::stall() {
  MutexLock hold(lock);
  stalling = true;
}

void FakeSource::release() { releaseAll(false); }

void FakeSource::releaseNewestFirst() { releaseAll(true); }

void FakeSource::releaseAll(bool newestFirst) {
  MutexLock hold(lock);
  stalling = false;
  if (newestFirst) std::reverse(stalled.begin(), stalled.end());
  for (Answer& answer : stalled) send(std::move(answer), std::nullopt);
  stalled.clear();
}

bool FakeSource::waitForStalled(std::size_t count) const {
  return eventually([this, count] {
    MutexLock hold(lock);
    return stalled.size() >= count;
  });
}

std::vector<FakeSource::Call> FakeSource::calls() const {
  MutexLock hold(lock);
  return made;
}

std::vector<FakeSource::Call> FakeSource::calls(Call::Kind kind) const {
  std::vector<Call> some = calls();
  std::erase_if(some, [kind](const Call& call) { return call.kind != kind; });
  return some;
}

std::size_t FakeSource::cancels() const {
  MutexLock hold(lock);
  return cancelled;
}

std::optional<FabricFailure> FakeSource::plannedFailure() {
  if (planned.empty()) return always;
  auto next = std::move(planned.front());
  planned.pop_front();
  return next;
}

void FakeSource::send(Answer answer, std::optional<FabricFailure> failure) {
  auto queue = std::next(queues.begin(), static_cast<std::ptrdiff_t>(nextQueue));
  nextQueue = (nextQueue + 1) % queues.size();
  queue->post([answer = std::move(answer), failure = std::move(failure)] { answer(failure); });
}

template <class T>
void FakeSource::answer(Call call, Reply<T> reply, Result<T> (FakeSource::*settle)(const Call&)) {
  MutexLock hold(lock);
  made.push_back(call);
  auto failure = plannedFailure();
  Result<T> result = failure ? Result<T>(std::unexpected(*failure)) : (this->*settle)(call);
  Answer ready = [reply = std::move(reply),
                  result = std::move(result)](std::optional<FabricFailure> instead) {
    reply(instead ? Result<T>(std::unexpected(std::move(*instead))) : result);
  };
  if (stalling) {
    stalled.push_back(std::move(ready));
  } else {
    send(std::move(ready), std::nullopt);
  }
}

FakeSource::Result<std::vector<FabricShare>> FakeSource::settleShares(const Call&) {
  return shareList;
}

FakeSource::Result<FileStat> FakeSource::settleStat(const Call& call) {
  const auto found = nodes.find(call.path);
  if (found == nodes.end()) return std::unexpected(failure(Kind::notFound));
  return found->second.status;
}

FakeSource::Result<std::vector<FileStat>> FakeSource::settleList(const Call& call) {
  if (const auto given = listings.find(call.path); given != listings.end()) return given->second;
  const auto found = nodes.find(call.path);
  if (found == nodes.end()) return std::unexpected(failure(Kind::notFound));
  if (!found->second.status.isDirectory) return std::unexpected(failure(Kind::notADirectory));
  std::vector<FileStat> children;
  for (const std::string& path : order) {
    if (parentOf(path) == call.path) children.push_back(nodes.at(path).status);
  }
  return children;
}

FakeSource::Result<Bytes> FakeSource::settleRead(const Call& call) {
  if (nextChunk) return *std::exchange(nextChunk, std::nullopt);
  const auto found = nodes.find(call.path);
  if (found == nodes.end()) return std::unexpected(failure(Kind::notFound));
  if (found->second.status.isDirectory) return std::unexpected(failure(Kind::isDirectory));
  const Bytes& content = found->second.content;
  const auto start = static_cast<std::size_t>(std::min(call.offset, std::ssize(content)));
  return content.substr(
      start, static_cast<std::size_t>(std::min(call.length, chunkLimit.value_or(call.length))));
}

void FakeSource::shareListing(Reply<std::vector<FabricShare>> reply) {
  answer<std::vector<FabricShare>>({.kind = Call::Kind::shareListing}, std::move(reply),
                                   &FakeSource::settleShares);
}

void FakeSource::stat(const std::string& relpath, Reply<FileStat> reply) {
  answer<FileStat>({.kind = Call::Kind::stat, .path = relpath}, std::move(reply),
                   &FakeSource::settleStat);
}

void FakeSource::list(const std::string& relpath, Reply<std::vector<FileStat>> reply) {
  answer<std::vector<FileStat>>({.kind = Call::Kind::list, .path = relpath}, std::move(reply),
                                &FakeSource::settleList);
}

void FakeSource::read(const std::string& relpath, std::int64_t offset, std::int64_t length,
                      Reply<Bytes> reply) {
  answer<Bytes>({.kind = Call::Kind::read, .path = relpath, .offset = offset, .length = length},
                std::move(reply), &FakeSource::settleRead);
}

void FakeSource::cancelAll() {
  MutexLock hold(lock);
  ++cancelled;
  for (Answer& answer : stalled) send(std::move(answer), failure(Kind::disconnected));
  stalled.clear();
}

}  // namespace tarnel::test
