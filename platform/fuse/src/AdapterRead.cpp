// open and read.
#include <fcntl.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "Adapter.h"
#include "PendingRequest.h"

namespace tarnel {
namespace {

// The bytes of one read. The chunk that fills it is taken as it came: no copy, no memory of its
// own.
class ReadBuffer final : public MutableFileBuffer {
 public:
  explicit ReadBuffer(std::size_t bytes) : size(bytes) {}

  [[nodiscard]] std::int64_t length() const override { return static_cast<std::int64_t>(size); }
  void withUnsafeMutableBytes(const std::function<void(std::span<char>)>& use) override {
    data.resize(size);
    use(data);
  }
  std::int64_t put(std::int64_t place, Bytes chunk) override {
    const std::size_t count = std::min(chunk.size(), size - static_cast<std::size_t>(place));
    if (place == 0) {
      data = std::move(chunk);
      data.resize(count);
    } else {
      data.append(chunk, 0, count);
    }
    return static_cast<std::int64_t>(count);
  }
  [[nodiscard]] const char* bytes() const { return data.data(); }

 private:
  Bytes data;
  const std::size_t size;
};

}  // namespace

void Adapter::open(fuse_req_t request, fuse_ino_t, const fuse_file_info& info) {
  if ((info.flags & O_ACCMODE) != O_RDONLY || (info.flags & O_TRUNC) != 0) {
    fuse_reply_err(request, systemErrno(posixError(darwin::readOnly)));
    return;
  }
  // Pages that an earlier open left in the cache go: a file that was replaced by one of the same
  // size and time must show its own bytes.
  fuse_reply_open(request, &info);
}

void Adapter::read(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset) {
  const auto item = itemOf(request, node);
  if (!item) return;
  const auto pending = PendingRequest::make(shared_from_this(), request);
  auto buffer = std::make_shared<ReadBuffer>(size);
  const ReadOrder::Read read = reads.begin(node, offset);
  volume->read(
      item, offset, static_cast<std::int64_t>(size), buffer,
      [self = shared_from_this(), pending, buffer, read](std::int64_t count, OptionalError error) {
        const auto answer = [pending, buffer, count, error] {
          if (error) return pending->fail(systemErrno(*error));
          if (!pending->claim()) return;
          fuse_reply_buf(pending->request(), buffer->bytes(), static_cast<std::size_t>(count));
        };
        if (!error && count < buffer->length()) return self->reads.endShort(read, answer);
        answer();
        self->reads.end(read);
      });
}

}  // namespace tarnel
