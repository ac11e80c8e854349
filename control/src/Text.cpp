#include "control/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace tarnel {
namespace {

constexpr std::uint64_t highBits = 0x8080808080808080u;

std::uint8_t byteAt(std::string_view text, std::size_t i) {
  return static_cast<std::uint8_t>(text[i]);
}

// What the bytes at a place of a text are: the length of the sequence that stands there or, when
// there is none (RFC 3629, section 4), of the longest start of one.
struct Sequence {
  std::size_t length;
  bool whole;
};

// Only the second byte's range depends on the lead: it excludes overlong forms, surrogates and what
// is past U+10FFFF.
bool continues(std::uint8_t lead, std::size_t position, std::uint8_t byte) {
  const bool second = position == 1;
  const std::uint8_t least = second && lead == 0xE0 ? 0xA0 : second && lead == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t most = second && lead == 0xED ? 0x9F : second && lead == 0xF4 ? 0x8F : 0xBF;
  return byte >= least && byte <= most;
}

Sequence sequenceAt(std::string_view text, std::size_t i) {
  const std::uint8_t lead = byteAt(text, i);
  if (lead < 0x80) return {.length = 1, .whole = true};
  const std::size_t wanted = lead >= 0xC2 && lead < 0xE0   ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (wanted == 0) return {.length = 1, .whole = false};
  for (std::size_t k = 1; k < wanted; ++k) {
    if (i + k == text.size() || !continues(lead, k, byteAt(text, i + k))) {
      return {.length = k, .whole = false};
    }
  }
  return {.length = wanted, .whole = true};
}

using CodePoints = std::vector<utf8proc_int32_t>;

constexpr auto composing = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);

constexpr auto folding = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE |
                                                        UTF8PROC_CASEFOLD | UTF8PROC_IGNORE);

// The canonical decomposition, its marks not yet in order; nullopt when the text is not UTF-8.
std::optional<CodePoints> decomposed(std::string_view text, utf8proc_option_t options) {
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
        utf8proc_decompose_char(point, parts.data(), parts.size(), options, &unused);
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

std::string encoded(CodePoints points, utf8proc_option_t options) {
  const auto count = static_cast<utf8proc_ssize_t>(points.size());
  points.push_back(0);  // room for the zero that ends the UTF-8, written in the points' own memory
  const utf8proc_ssize_t length = utf8proc_reencode(points.data(), count, options);
  return std::string(reinterpret_cast<const char*>(points.data()),
                     static_cast<std::size_t>(length));
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
    const Sequence sequence = sequenceAt(text, i);
    if (!sequence.whole) return false;
    i += sequence.length;
  }
  return true;
}

std::string repairedUtf8(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const Sequence sequence = sequenceAt(text, i);
    repaired += sequence.whole ? text.substr(i, sequence.length) : "\xEF\xBF\xBD";
    i += sequence.length;
  }
  return repaired;
}

// The library's own utf8proc_map exchanges marks pair by pair, so that the time for one hostile
// name grows with the square of its length; these are its steps, with a sort in place of that one.
std::string composed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  auto points = decomposed(text, composing);
  if (!points) return std::string(text);  // not UTF-8
  orderMarks(*points);
  return encoded(std::move(*points), composing);
}

std::string caseFolded(std::string_view text) {
  auto points = decomposed(text, folding);
  return points ? encoded(std::move(*points), folding) : std::string(text);
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
