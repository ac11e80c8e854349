#include "FileBytes.h"

#include "Statuses.h"
#include "control/Base64.h"

namespace tarnel {
namespace {

Checked<Bytes> bytesOf(const Answer& answer, const std::string& asked, std::int64_t length) {
  if (!answer.response.dataBase64) {
    return failing(asked + " was answered without dataBase64, with " + quoted(answer.line) +
                   ": answer the bytes that are there, an empty text where none are");
  }
  auto bytes = base64::decode(*answer.response.dataBase64);
  if (!bytes) {
    return failing("the answer to " + asked +
                   " is no base64: use the alphabet with + and /, with "
                   "padding, without line breaks");
  }
  if (static_cast<std::int64_t>(bytes->size()) > length) {
    return failing(asked + " was answered with " + std::to_string(bytes->size()) +
                   " bytes: never send more than length");
  }
  return std::move(*bytes);
}

Checked<Bytes> readWith(Talk& talk, const std::string& location, std::int64_t offset,
                        std::int64_t length) {
  const ControlRequest request = readRequest(location, offset, length);
  const auto answer = talk.ask(request);
  if (!answer) return std::unexpected(answer.error());
  return bytesOf(*answer, quoted(textOf(request)), length);
}

}  // namespace

Checked<Bytes> readOnce(const HostProbe& host, const std::string& location, std::int64_t offset,
                        std::int64_t length) {
  auto talk = host.talk();
  if (!talk) return std::unexpected(talk.error());
  return readWith(*talk, location, offset, length);
}

Checked<Bytes> readOn(const HostProbe& host, const std::string& location, std::int64_t offset,
                      std::int64_t length, std::size_t most) {
  auto talk = host.talk();
  if (!talk) return std::unexpected(talk.error());
  Bytes all;
  while (all.size() <= most && !host.isOver()) {
    const auto at = offset + static_cast<std::int64_t>(all.size());
    const auto piece = readWith(*talk, location, at, length);
    if (!piece) return piece;
    if (piece->empty()) break;
    all.append(*piece);
  }
  return all;
}

Checked<std::int64_t> sizeOf(const HostProbe& host, const std::string& location) {
  const auto stat = statOf(host, location);
  if (!stat) return std::unexpected(stat.error());
  return stat->size;
}

}  // namespace tarnel
