// What does one `stat` through a channel cost, beside the same bytes there and back on the same
// kind of socket? Both ask the same host; bytes per second are of request and answer together.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <semaphore>
#include <string>
#include <utility>

#include "AnsweringHost.h"
#include "Require.h"
#include "control/ControlChannel.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlWire.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"
#include "control/UnixSocket.h"

namespace tarnel::bench {
namespace {

const ControlRequest& question() {
  static const ControlRequest request{.op = ControlOp::stat, .name = "me/Pictures/photograph.jpeg"};
  return request;
}

ControlResponse answer() {
  ControlResponse response = ControlResponse::ok();
  ControlStat& stat = response.stat.emplace();
  stat.name = "photograph.jpeg";
  stat.size = 1'000'000;
  stat.mtimeMs = 1'700'000'000'000;
  stat.mode = 0100644;
  stat.nlink = 1;
  stat.owner = "somebody";
  stat.group = "everybody";
  return response;
}

template <class Record>
std::string frame(const Record& record) {
  auto line = ControlWire::encode(record);
  require(line.has_value(), "a record was not encoded");
  return std::move(*line);
}

void countTrips(benchmark::State& state) {
  const auto bytes = static_cast<std::int64_t>(frame(question()).size() + frame(answer()).size());
  state.SetBytesProcessed(state.iterations() * bytes);
  state.SetItemsProcessed(state.iterations());
}

void statThroughChannel(benchmark::State& state) {
  const AnsweringHost host(frame(answer()));
  const ControlResponse expected = answer();
  const auto channel = ControlChannel::make(host.socketPath(), "tarnel.bench.channel");
  for (auto _ : state) {
    std::binary_semaphore replied(0);
    bool isRight = false;
    channel->request(question(), 5, [&](const ControlChannelResult& result) {
      isRight = result && *result == expected;
      replied.release();
    });
    replied.acquire();
    require(isRight, "a stat brought another answer");
  }
  countTrips(state);
  channel->cancelAll();
}
BENCHMARK(statThroughChannel)->UseRealTime()->Unit(benchmark::kMicrosecond);

void statFloorRawSocket(benchmark::State& state) {
  const std::string request = frame(question()), expected = frame(answer());
  const AnsweringHost host(expected);
  const auto connected = connectUnixSocket(host.socketPath());
  require(connected.has_value(), "no connection");
  const UniqueFd fd(*connected);
  std::string received(expected.size(), '\0');
  for (auto _ : state) {
    require(writeWithoutSignal(fd.get(), request) == static_cast<ssize_t>(request.size()),
            "a request was not written");
    for (std::size_t got = 0; got < received.size();) {
      const ssize_t count = ::read(fd.get(), received.data() + got, received.size() - got);
      require(count > 0, "an answer was not read");
      got += static_cast<std::size_t>(count);
    }
    require(received == expected, "an answer differs");
  }
  countTrips(state);
}
BENCHMARK(statFloorRawSocket)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tarnel::bench
