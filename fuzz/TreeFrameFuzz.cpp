// The first byte is the frame's tag, the rest its payload.
#include <string>

#include "Fuzz.h"
#include "control/Text.h"
#include "control/TreeRecord.h"

namespace {

using namespace tarnel;

// What a reader makes of the one frame that `frame` is.
std::optional<TreeFrame> readBack(const Bytes& frame) {
  ReceiveBuffer buffer;
  buffer.append(frame);
  auto cut = ControlStreamFrame::parse(buffer);
  fuzz::check(cut && *cut && buffer.size() == 0, "a record is one frame");
  return TreeFrame::of((*cut)->tag, std::move((*cut)->payload));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using fuzz::check;
  const std::string_view input = fuzz::inputOf(data, size);
  if (input.empty()) return 0;
  const auto tag = static_cast<std::uint8_t>(input[0]);
  const auto frame = TreeFrame::of(tag, Bytes(input.substr(1)));
  if (!frame) return 0;
  if (const auto* record = std::get_if<TreeRecord>(&frame->content)) {
    const Bytes again = record->frame();
    check(static_cast<std::uint8_t>(again[0]) == tag, "a record goes back under its own tag");
    check(readBack(again) == frame, "a record is read back as it was");
  } else if (const auto* error = std::get_if<TreeError>(&frame->content)) {
    check(isValidUtf8(error->message), "a message can be shown");
  }
  return 0;
}
