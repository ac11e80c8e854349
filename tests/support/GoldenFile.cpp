#include "support/GoldenFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>

namespace tarnel::test {
namespace {

// Bit by bit: slow and plain.
std::string fromBase64(std::string_view text) {
  constexpr std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::uint32_t bits = 0;
  int held = 0;
  for (const char c : text) {
    if (c == '=') break;
    const std::size_t value = alphabet.find(c);
    if (value == std::string_view::npos) ADD_FAILURE() << "not base64: " << text;
    bits = bits << 6 | static_cast<std::uint32_t>(value & 63);
    held += 6;
    if (held >= 8) {
      held -= 8;
      out.push_back(static_cast<char>(bits >> held));
    }
  }
  return out;
}

// "..." without the quotes, [...] with its brackets, or a bare word; moved off the front.
std::string takeValue(std::string_view& rest) {
  const char closing = rest.starts_with('"') ? '"' : rest.starts_with('[') ? ']' : '\0';
  if (closing == '\0') {
    const std::string word(rest.substr(0, rest.find_first_of(",}]")));
    rest.remove_prefix(word.size());
    return word;
  }
  const std::size_t end = std::min(rest.find(closing, 1), rest.size() - 1);
  const std::string_view value = closing == ']' ? rest.substr(0, end + 1) : rest.substr(1, end - 1);
  rest.remove_prefix(end + 1);
  return std::string(value);
}

bool take(std::string_view& rest, char c) {
  if (!rest.starts_with(c)) return false;
  rest.remove_prefix(1);
  return true;
}

}  // namespace

GoldenLine::GoldenLine(std::string_view json, std::size_t number) : lineNumber(number) {
  std::string_view rest = json;
  bool good = take(rest, '{') && json.find('\\') == std::string_view::npos;
  while (good) {
    const std::string key = takeValue(rest);
    good = take(rest, ':');
    values[key] = takeValue(rest);
    if (!take(rest, ',')) break;
  }
  if (!good || rest != "}") ADD_FAILURE() << "not a golden line: " << json;
}

const std::string& GoldenLine::text(const std::string& key) const {
  static const std::string none;
  const auto found = values.find(key);
  if (found != values.end()) return found->second;
  ADD_FAILURE() << "line " << lineNumber << " has no " << key;
  return none;
}

std::string GoldenLine::bytes(const std::string& key) const { return fromBase64(text(key)); }

std::vector<std::string> GoldenLine::list(const std::string& key) const {
  std::vector<std::string> all;
  std::string_view rest = text(key);
  take(rest, '[');
  while (rest.starts_with('"')) {
    all.push_back(fromBase64(takeValue(rest)));
    take(rest, ',');
  }
  return all;
}

std::vector<GoldenLine> readGolden(const std::string& fileName) {
  const char* const chosen = std::getenv("TARNEL_GOLDEN_DIR");
  const std::string path =
      std::string(chosen != nullptr ? chosen : TARNEL_GOLDEN_SOURCE_DIR) + "/" + fileName;
  std::ifstream file(path);
  std::vector<GoldenLine> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty()) lines.emplace_back(line, lines.size() + 1);
  }
  if (lines.empty()) ADD_FAILURE() << "no golden cases in " << path;
  return lines;
}

std::string readable(std::string_view bytes) {
  constexpr std::string_view hex = "0123456789abcdef";
  std::string out;
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte >= 0x20 && byte < 0x7f) {
      out.push_back(c);
    } else {
      out += {'\\', 'x', hex[byte >> 4], hex[byte & 15]};
    }
  }
  return out;
}

}  // namespace tarnel::test
