#include "control/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

namespace tarnel {
namespace {

constexpr std::uint64_t highBits = 0x8080808080808080u;

std::uint8_t byteAt(std::string_view text, std::size_t i) {
  return static_cast<std::uint8_t>(text[i]);
}

// The length of the well-formed sequence at i (RFC 3629, section 4), 0 if there is none.
std::size_t sequenceLength(std::string_view text, std::size_t i) {
  const std::uint8_t lead = byteAt(text, i);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (length == 0 || text.size() - i < length) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byteAt(text, i + k) & 0xC0) != 0x80) return 0;
  }
  const std::uint8_t second = byteAt(text, i + 1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool tooLarge = lead == 0xF4 && second >= 0x90;
  return overlong || surrogate || tooLarge ? 0 : length;
}

using CodePoints = std::vector<utf8proc_int32_t>;

constexpr auto composing = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);

// The canonical decomposition, its marks not yet in order; nullopt when the text is not UTF-8.
std::optional<CodePoints> decomposed(std::string_view text) {
  CodePoints points;
  points.reserve(text.size() + 1);
  const auto* at = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  const auto* const end = at + text.size();
  int unused = 0;
  while (at != end) {
    utf8proc_int32_t point = 0;
    const utf8proc_ssize_t read = utf8proc_iterate(at, end - at, &point);
    if (read < 0) return std::nullopt;
    at += read;
    std::array<utf8proc_int32_t, 16> parts;  // no character has more than four
    const utf8proc_ssize_t count =
        utf8proc_decompose_char(point, parts.data(), parts.size(), composing, &unused);
    points.insert(points.end(), parts.begin(), parts.begin() + count);
  }
  return points;
}

int combiningClass(utf8proc_int32_t point) { return utf8proc_get_property(point)->combining_class; }

bool isMark(utf8proc_int32_t point) { return combiningClass(point) > 0; }

// The canonical order: each run of marks by class, marks of one class as they came.
void orderMarks(CodePoints& points) {
  const auto end = points.end();
  for (auto at = std::find_if(points.begin(), end, isMark); at != end;) {
    const auto runEnd = std::find_if_not(at, end, isMark);
    if (runEnd - at > 1) {
      CodePoints run(at, runEnd);
      sortByKey(run, combiningClass);
      std::copy(run.begin(), run.end(), at);
    }
    at = std::find_if(runEnd, end, isMark);
  }
}

}  // namespace

bool isAscii(std::string_view text) {
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + i, 8);
    if ((word & highBits) != 0) return false;
  }
  for (; i < text.size(); ++i) {
    if (byteAt(text, i) >= 0x80) return false;
  }
  return true;
}

bool isValidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequenceLength(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

// The library's own utf8proc_map exchanges marks pair by pair, so that the time for one hostile
// name grows with the square of its length; these are its steps, with a sort in place of that one.
std::string composed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  auto points = decomposed(text);
  if (!points) return std::string(text);  // not UTF-8
  orderMarks(*points);
  const auto count = static_cast<utf8proc_ssize_t>(points->size());
  points->push_back(0);  // room for the zero that ends the UTF-8, written in the points' own memory
  const utf8proc_ssize_t length = utf8proc_reencode(points->data(), count, composing);
  return std::string(reinterpret_cast<const char*>(points->data()),
                     static_cast<std::size_t>(length));
}

bool textEqual(std::string_view a, std::string_view b) {
  if (a == b) return true;
  if (isAscii(a) && isAscii(b)) return false;
  return composed(a) == composed(b);
}

bool textLess(std::string_view a, std::string_view b) {
  if (isAscii(a) && isAscii(b)) return a < b;
  return composed(a) < composed(b);
}

}  // namespace tarnel
