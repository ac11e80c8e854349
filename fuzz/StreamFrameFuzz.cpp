#include <string>

#include "Fuzz.h"
#include "control/ControlStreamFrame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnel;
  using fuzz::check;
  const std::string_view input = fuzz::inputOf(data, size);
  ReceiveBuffer buffer;
  buffer.append(input);
  while (true) {
    const std::string before(buffer.view());
    const auto frame = ControlStreamFrame::parse(buffer);
    if (!frame || !*frame) {
      check(buffer.view() == before, "what is no frame leaves the buffer as it was");
      check(frame || frame.error().length > ControlStreamFrame::maxBodyBytes,
            "only a length past the bound is refused");
      return 0;
    }
    const std::string encoded = ControlStreamFrame::encode((*frame)->tag, (*frame)->payload);
    check(buffer.size() + encoded.size() == before.size(), "a frame consumes what it encodes to");
    check(before.starts_with(encoded), "a frame encodes to what it was cut from");
  }
}
