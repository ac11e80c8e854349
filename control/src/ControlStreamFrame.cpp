#include "control/ControlStreamFrame.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace tarnel {
namespace {

constexpr std::size_t headBytes = 5;

std::uint32_t lengthOf(BytesView head) {
  const auto byte = [&](std::size_t i) {
    return std::uint32_t{static_cast<std::uint8_t>(head[i])};
  };
  return byte(1) << 24 | byte(2) << 16 | byte(3) << 8 | byte(4);
}

}  // namespace

std::string description(const ControlStreamError& error) {
  return "oversized(" + std::to_string(error.length) + ")";
}

Bytes ControlStreamFrame::encode(std::uint8_t tag, BytesView payload) {
  if (payload.size() > std::numeric_limits<std::uint32_t>::max()) std::abort();
  const auto length = static_cast<std::uint32_t>(payload.size());
  Bytes frame;
  frame.reserve(headBytes + payload.size());
  frame.push_back(static_cast<char>(tag));
  for (const int shift : {24, 16, 8, 0}) frame.push_back(static_cast<char>(length >> shift));
  frame.append(payload);
  return frame;
}

std::expected<std::optional<StreamFrame>, ControlStreamError> ControlStreamFrame::parse(
    ReceiveBuffer& buffer) {
  const BytesView bytes = buffer.view();
  if (bytes.size() < headBytes) return std::nullopt;
  const std::uint32_t length = lengthOf(bytes);
  if (length > maxBodyBytes) return std::unexpected(ControlStreamError{.length = length});
  if (bytes.size() < headBytes + length) return std::nullopt;
  StreamFrame frame{.tag = static_cast<std::uint8_t>(bytes[0]),
                    .payload = Bytes(bytes.substr(headBytes, length))};
  buffer.consume(headBytes + length);
  return frame;
}

}  // namespace tarnel
