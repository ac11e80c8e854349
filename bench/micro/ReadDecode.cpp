// What does it cost to turn the answer to a read of 256 KiB into the file's bytes, beside copying
// them? Bytes per second are the file's.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "Require.h"
#include "control/Base64.h"
#include "control/Bytes.h"
#include "control/ControlResponse.h"
#include "control/ControlWire.h"

namespace tarnel::bench {
namespace {

constexpr std::size_t chunkBytes = 262'144;

// Every value among them and no short period, so that slashes are as frequent as in real files.
Bytes chunk() {
  Bytes bytes(chunkBytes, '\0');
  std::uint32_t state = 1;
  for (char& byte : bytes) {
    state = state * 1'664'525 + 1'013'904'223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

void countBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(chunkBytes));
}

void readAnswerDecoded(benchmark::State& state) {
  const Bytes expected = chunk();
  Bytes line = R"({"status":"ok","dataBase64":")";
  base64::encodeEscapedTo(expected, line);
  line += "\"}";
  Bytes last;
  for (auto _ : state) {
    auto response = ControlWire::decode<ControlResponse>(line);
    require(response && response->dataBase64, "the answer to a read was not decoded");
    auto bytes = base64::decodeInPlace(std::move(*response->dataBase64));
    require(bytes && bytes->size() == chunkBytes, "the bytes of a read were not decoded");
    last = std::move(*bytes);
  }
  require(last == expected, "a read brought other bytes");
  countBytes(state);
}
BENCHMARK(readAnswerDecoded);

void readAnswerFloorMemcpy(benchmark::State& state) {
  const Bytes source = chunk();
  Bytes copy(chunkBytes, '\0');
  for (auto _ : state) {
    std::memcpy(copy.data(), source.data(), chunkBytes);
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  require(copy == source, "a copy differs");
  countBytes(state);
}
BENCHMARK(readAnswerFloorMemcpy);

}  // namespace
}  // namespace tarnel::bench
