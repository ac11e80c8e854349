// What does it cost to decode a listing of 20,000 entries, beside looking at each of its bytes
// once? Bytes per second are the answer's line.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "Require.h"
#include "control/ControlResponse.h"
#include "control/ControlWire.h"

namespace tarnel::bench {
namespace {

constexpr int entryCount = 20'000;

ControlStat entry(int number) {
  ControlStat stat;
  stat.name = "photograph-" + std::to_string(number) + ".jpeg";
  stat.size = 1'000'000 + number;
  stat.mtimeMs = 1'700'000'000'000 + number;
  stat.mode = 0100644;
  stat.nlink = 1;
  stat.owner = "somebody";
  stat.group = "everybody";
  return stat;
}

ControlResponse listing() {
  ControlResponse response = ControlResponse::ok();
  auto& entries = response.entries.emplace();
  entries.reserve(entryCount);
  for (int i = 0; i < entryCount; ++i) entries.push_back(entry(i));
  return response;
}

// Without its line feed, as a reader hands it on.
std::string listingLine() {
  auto line = ControlWire::encode(listing());
  require(line && line->back() == '\n', "a listing was not encoded");
  line->pop_back();
  return std::move(*line);
}

void countBytes(benchmark::State& state, const std::string& line) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size()));
}

void listingDecoded(benchmark::State& state) {
  const std::string line = listingLine();
  ControlResponse last;
  for (auto _ : state) {
    auto response = ControlWire::decode<ControlResponse>(line);
    require(response && response->entries, "a listing was not decoded");
    last = std::move(*response);
  }
  require(last == listing(), "a listing brought other entries");
  countBytes(state, line);
  state.SetItemsProcessed(state.iterations() * entryCount);
}
BENCHMARK(listingDecoded)->Unit(benchmark::kMicrosecond);

void listingFloorByteScan(benchmark::State& state) {
  const std::string line = listingLine();
  for (auto _ : state) {
    const void* found = std::memchr(line.data(), '\n', line.size());
    benchmark::DoNotOptimize(found);
    require(found == nullptr, "a line feed inside a line");
  }
  countBytes(state, line);
}
BENCHMARK(listingFloorByteScan)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tarnel::bench
