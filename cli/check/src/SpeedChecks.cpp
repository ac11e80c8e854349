// 9xx: speed. The limits are wide, since machines are busy; the figures are what is wanted.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "CheckGroups.h"
#include "FileBytes.h"
#include "HostProbe.h"

namespace tarnel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

CheckVerdict roundTripsAreShort(HostProbe& host) {
  constexpr std::size_t rounds = 51;
  const Material& material = host.material();
  if (material.shares.empty()) return skipped("share a folder");
  const std::string& location = material.file ? material.file->location : material.shares.front();
  auto talk = host.talk();
  if (!talk) return talk.error();
  std::vector<microseconds> times;
  const Deadline late = host.in(host.limits().answer);
  while (times.size() < rounds && (times.empty() || Clock::now() < late)) {
    const auto start = Clock::now();
    if (const auto answer = talk->ask(statRequest(location)); !answer) return answer.error();
    times.push_back(std::chrono::duration_cast<microseconds>(Clock::now() - start));
  }
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  const std::string figure = "a `stat` takes " + std::to_string(middle->count()) + " us";
  if (*middle <= host.limits().roundTrip) return passed(figure);
  return failedCheck(figure + ": answer at once, every look at a file waits for it");
}

CheckVerdict readsAreFast(HostProbe& host) {
  constexpr std::int64_t most = 8 * 1'024 * 1'024;
  const auto& file = host.material().largeFile;
  if (!file) return skipped("share a file of more than 256 KiB");
  auto talk = host.talk();
  if (!talk) return talk.error();
  const auto start = Clock::now();
  const Deadline late = host.in(host.limits().answer);
  std::int64_t bytes = 0;
  while (bytes < most && (bytes == 0 || Clock::now() < late)) {
    const std::int64_t offset = bytes % std::max<std::int64_t>(1, file->stat.size);
    const auto answer = talk->ask(readRequest(file->location, offset, Material::windowBytes));
    if (!answer) return answer.error();
    const std::size_t characters = answer->response.dataBase64.value_or("").size();
    if (characters == 0) break;
    bytes += static_cast<std::int64_t>(characters / 4 * 3);
  }
  const auto time =
      std::max(microseconds(1), std::chrono::duration_cast<microseconds>(Clock::now() - start));
  const std::int64_t rate = bytes * 1'000'000 / time.count();
  const std::string figure = "reads run at " + std::to_string(rate / 1'000'000) + "." +
                             std::to_string(rate / 100'000 % 10) + " MB/s";
  if (rate >= host.limits().bytesPerSecond) return passed(figure);
  return failedCheck(figure + ": read whole ranges and write each answer in one piece");
}

constexpr std::array checks = {HostCheck{901, "a round trip is short", roundTripsAreShort},
                               HostCheck{902, "reads are fast", readsAreFast}};

}  // namespace

std::span<const HostCheck> speedChecks() { return checks; }

}  // namespace tarnel
