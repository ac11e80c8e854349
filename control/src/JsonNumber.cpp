#include "JsonNumber.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace tarnel::json {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t digitsAt(std::string_view text, std::size_t from) {
  std::size_t i = from;
  while (i < text.size() && isDigit(text[i])) ++i;
  return i - from;
}

std::optional<std::int64_t> parse(std::string_view digits) {
  std::int64_t value = 0;
  const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || rest != digits.data() + digits.size()) return std::nullopt;
  return value;
}

// A power of ten that no 64-bit value reaches; keeps the arithmetic on exponents small.
constexpr std::int64_t hugeExponent = 1'000'000'000'000;

std::int64_t exponentOf(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto value = parse(text);
  if (!value) return text.front() == '-' ? -hugeExponent : hugeExponent;
  return std::clamp(*value, -hugeExponent, hugeExponent);
}

}  // namespace

std::size_t numberLength(std::string_view text) {
  std::size_t i = !text.empty() && text[0] == '-' ? 1 : 0;
  const std::size_t whole = digitsAt(text, i);
  if (whole == 0 || (whole > 1 && text[i] == '0')) return 0;
  i += whole;
  if (i < text.size() && text[i] == '.') {
    const std::size_t fraction = digitsAt(text, i + 1);
    if (fraction == 0) return 0;
    i += 1 + fraction;
  }
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    const std::size_t exponent = digitsAt(text, i);
    if (exponent == 0) return 0;
    i += exponent;
  }
  return i;
}

std::optional<std::int64_t> integerValue(std::string_view number) {
  const std::size_t special = number.find_first_of(".eE");
  if (special == std::string_view::npos) return parse(number);

  // mantissa digits times a power of ten: 12.50e1 is 1250 times 10^-1
  const std::size_t e = std::min(number.find_first_of("eE"), number.size());
  std::int64_t exponent = e < number.size() ? exponentOf(number.substr(e + 1)) : 0;
  std::string digits(number.substr(0, e));
  if (const std::size_t point = digits.find('.'); point != std::string::npos) {
    exponent -= static_cast<std::int64_t>(digits.size() - point - 1);
    digits.erase(point, 1);
  }
  while (!digits.empty() && digits.back() == '0') {
    digits.pop_back();
    ++exponent;
  }
  if (digits.empty() || digits == "-") return 0;
  constexpr std::int64_t moreThanAnInteger = 20;
  if (exponent < 0 || exponent > moreThanAnInteger) return std::nullopt;
  digits.append(static_cast<std::size_t>(exponent), '0');
  return parse(digits);
}

}  // namespace tarnel::json
