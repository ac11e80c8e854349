// File bytes, chunk by chunk, straight into the system's buffer. Nothing is cached.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Bridge.h"
#include "fs/FabricVolume.h"
#include "seam/VolumeLog.h"

namespace tarnel {
namespace {

// One read under way: asks for the next chunk until the wanted count is there or a chunk is empty.
// A chunk that is shorter than asked is not the end. A failure discards what has been copied.
class Fill : public std::enable_shared_from_this<Fill> {
 public:
  using Reply = FabricSource::Reply<std::int64_t>;

  using Cancellations = std::shared_ptr<std::atomic<std::uint64_t>>;

  Fill(std::shared_ptr<FabricSource> asked, Cancellations ended,
       std::shared_ptr<MutableFileBuffer> target, std::string where, std::int64_t start,
       std::int64_t count, Reply done)
      : source(std::move(asked)),
        cancellations(std::move(ended)),
        startedAt(*cancellations),
        buffer(std::move(target)),
        address(std::move(where)),
        offset(start),
        wanted(count),
        reply(std::move(done)) {}

  void next() {
    // The next chunk would connect anew, for a reader who has been told that it is over.
    if (*cancellations != startedAt) {
      return reply(std::unexpected(FabricSourceError{FabricSourceError::Kind::disconnected}));
    }
    std::int64_t position = 0;
    if (__builtin_add_overflow(offset, total, &position)) std::abort();
    const std::int64_t length = std::min(wanted - total, FabricVolume::maximumReadBytes);
    source->read(address, position, length,
                 [self = shared_from_this()](FabricSource::Result<Bytes> chunk) {
                   self->take(std::move(chunk));
                 });
  }

 private:
  void take(FabricSource::Result<Bytes> chunk) {
    if (!chunk) return reply(std::unexpected(std::move(chunk.error())));
    if (chunk->empty()) return reply(total);
    total += buffer->put(total, std::move(*chunk));  // never past its end, however much came
    if (total >= wanted) return reply(total);
    next();
  }

  const std::shared_ptr<FabricSource> source;
  const Cancellations cancellations;
  const std::uint64_t startedAt;
  const std::shared_ptr<MutableFileBuffer> buffer;
  const std::string address;
  const std::int64_t offset;
  const std::int64_t wanted;
  const Reply reply;
  std::int64_t total = 0;  // one chunk at a time: the thread that brings it
};

}  // namespace

void FabricVolume::read(const ItemRef& item, std::int64_t offset, std::int64_t length,
                        std::shared_ptr<MutableFileBuffer> buffer, CountReply reply) {
  readBytes(item, offset, length, std::move(buffer), std::move(reply));
}

void FabricVolume::readBytes(const ItemRef& item, std::int64_t offset, std::int64_t length,
                             std::shared_ptr<MutableFileBuffer> buffer, CountReply reply) {
  const auto own = std::dynamic_pointer_cast<FabricItem>(item);
  if (!own) return reply(0, posixError(darwin::inputOutput));
  FabricLocation location = FabricLocation::parse(own->relpath);
  auto* const inShare = std::get_if<FabricLocation::InShare>(&location.value);
  if (inShare == nullptr) return reply(0, posixError(darwin::isADirectory));
  const auto last = own->lastStat();
  if (last && last->isDirectory) return reply(0, posixError(darwin::isADirectory));
  if (offset < 0) return reply(0, posixError(darwin::invalidArgument));
  const std::int64_t wanted = std::min(buffer->length(), length);
  if (wanted < 1) return reply(0, std::nullopt);
  if (log().isDebugEnabled()) {
    log().readBytes(own->relpath, offset, wanted, last ? last->size : -1);
  }

  on<std::int64_t>(
      [&](Fill::Reply next) {
        std::make_shared<Fill>(source, cancellations, std::move(buffer),
                               std::move(inShare->address), offset, wanted, std::move(next))
            ->next();
      },
      [reply = std::move(reply)](FabricSource::Result<std::int64_t> count) {
        if (!count) return reply(0, volumeError(count.error()));
        reply(*count, std::nullopt);
      });
}

}  // namespace tarnel
