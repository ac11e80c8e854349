#include <algorithm>
#include <string>
#include <vector>

#include "Fuzz.h"
#include "control/ReceiveBuffer.h"

namespace tarnel::fuzz {
namespace {

std::vector<std::string> linesByDefinition(std::string_view bytes) {
  std::vector<std::string> lines;
  for (std::size_t end = 0; (end = bytes.find('\n')) != std::string_view::npos;) {
    lines.emplace_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace
}  // namespace tarnel::fuzz

// The first byte says how long the pieces are, the second how rarely lines are taken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnel;
  if (size < 2) return 0;
  const std::size_t piece = data[0] + 1U;
  const std::size_t rarely = data[1] % 8U + 1U;
  const std::string_view all = fuzz::inputOf(data + 2, size - 2);

  ReceiveBuffer buffer;
  std::vector<std::string> lines;
  std::size_t round = 0;
  for (std::string_view rest = all; !rest.empty();
       rest.remove_prefix(std::min(piece, rest.size()))) {
    buffer.append(rest.substr(0, piece));
    if (++round % rarely != 0) continue;
    while (auto line = buffer.takeLine()) lines.push_back(std::move(*line));
  }
  while (auto line = buffer.takeLine()) lines.push_back(std::move(*line));
  fuzz::check(lines == fuzz::linesByDefinition(all), "any split gives the same lines");
  fuzz::check(buffer.view() == all.substr(all.rfind('\n') + 1), "what has no line feed stays");
  return 0;
}
