#include "RecordFuzz.h"
#include "control/ControlResponse.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnel::fuzz::decodeEncodeDecode<tarnel::ControlResponse>(tarnel::fuzz::inputOf(data, size));
  return 0;
}
