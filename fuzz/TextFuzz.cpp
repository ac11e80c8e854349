#include <string>

#include "Fuzz.h"
#include "control/Text.h"

// The first byte says where the input is cut in two texts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnel;
  using fuzz::check;
  if (size == 0) return 0;
  const std::string_view both = fuzz::inputOf(data + 1, size - 1);
  const std::string_view a = both.substr(0, data[0]);
  const std::string_view b = both.substr(a.size());

  const std::string composedA = composed(a);
  check(composed(composedA) == composedA, "composing a composed text changes nothing");
  check(isValidUtf8(composedA) == isValidUtf8(a),
        "composing keeps UTF-8 and nothing else becomes it");
  check(textEqual(a, composedA), "a text equals its composition");
  check(isValidUtf8(a) || composedA == a, "what is not UTF-8 is left alone");
  const std::string repairedA = repairedUtf8(a);
  check(isValidUtf8(repairedA), "a repaired text is UTF-8");
  check((repairedA == a) == isValidUtf8(a), "only what is not UTF-8 is repaired");
  check(textEqual(a, b) == textEqual(b, a), "equality is symmetric");
  const int outcomes = int{textEqual(a, b)} + int{textLess(a, b)} + int{textLess(b, a)};
  check(outcomes == 1, "two texts are equal, or one is less");
  return 0;
}
