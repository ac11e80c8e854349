#include "RecordFuzz.h"
#include "control/ControlRequest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnel::fuzz::decodeEncodeDecode<tarnel::ControlRequest>(tarnel::fuzz::inputOf(data, size));
  return 0;
}
