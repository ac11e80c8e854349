#include "control/ControlStreamFrame.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace tarnel {

std::string description(const ControlStreamError& error) {
  return "oversized(" + std::to_string(error.length) + ")";
}

ControlStreamFrame::Head ControlStreamFrame::readHead(BytesView bytes) {
  const auto byte = [&](std::size_t i) {
    return std::uint32_t{static_cast<std::uint8_t>(bytes[i])};
  };
  return {.tag = static_cast<std::uint8_t>(bytes[0]),
          .length = byte(1) << 24 | byte(2) << 16 | byte(3) << 8 | byte(4)};
}

void ControlStreamFrame::writeHead(const Head& head, char* to) {
  *to++ = static_cast<char>(head.tag);
  for (const int shift : {24, 16, 8, 0}) *to++ = static_cast<char>(head.length >> shift);
}

bool ControlStreamFrame::beginsLine(char first) {
  return std::string_view("{ \t\r\n").contains(first);
}

Bytes ControlStreamFrame::encode(std::uint8_t tag, BytesView payload) {
  if (payload.size() > std::numeric_limits<std::uint32_t>::max()) std::abort();
  Bytes frame;
  frame.reserve(headBytes + payload.size());
  frame.resize(headBytes);
  writeHead({.tag = tag, .length = static_cast<std::uint32_t>(payload.size())}, frame.data());
  frame.append(payload);
  return frame;
}

std::expected<std::optional<StreamFrame>, ControlStreamError> ControlStreamFrame::parse(
    ReceiveBuffer& buffer) {
  const BytesView bytes = buffer.view();
  if (bytes.size() < headBytes) return std::nullopt;
  const Head head = readHead(bytes);
  if (head.length > maxBodyBytes) return std::unexpected(ControlStreamError{.length = head.length});
  if (bytes.size() < headBytes + head.length) return std::nullopt;
  StreamFrame frame{.tag = head.tag, .payload = Bytes(bytes.substr(headBytes, head.length))};
  buffer.consume(headBytes + head.length);
  return frame;
}

}  // namespace tarnel
