// The escapes of a JSON string that is read (RFC 8259, section 7).
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

#include "JsonScan.h"
#include "control/JsonReader.h"

namespace tarnel {
namespace {

std::optional<std::uint32_t> hex4(const char* p, const char* end) {
  if (end - p < 4) return std::nullopt;
  std::uint32_t value = 0;
  const auto [rest, error] = std::from_chars(p, p + 4, value, 16);
  if (error != std::errc() || rest != p + 4) return std::nullopt;
  return value;
}

char* writeUtf8(std::uint32_t code, char* to) {
  const auto put = [&](std::uint32_t byte) { *to++ = static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
  return to;
}

// A \u escape, p after the "u"; joins a surrogate pair (RFC 8259: "\uD83D\uDE00"). False for half a
// pair, which stands for no character.
bool unicodeEscape(const char*& p, const char* end, char*& to) {
  auto code = hex4(p, end);
  if (!code) return false;
  p += 4;
  if (*code >= 0xD800 && *code < 0xE000) {
    if (*code >= 0xDC00 || end - p < 6 || p[0] != '\\' || p[1] != 'u') return false;
    const auto low = hex4(p + 2, end);
    if (!low || *low < 0xDC00 || *low >= 0xE000) return false;
    p += 6;
    code = 0x10000 + ((*code - 0xD800) << 10) + (*low - 0xDC00);
  }
  to = writeUtf8(*code, to);
  return true;
}

// One escape, p at the backslash.
bool escape(const char*& p, const char* end, char*& to) {
  const char kind = p[1];  // a raw string never ends in a lone backslash
  p += 2;
  switch (kind) {
    case '"':
    case '\\':
    case '/':
      *to++ = kind;
      return true;
    case 'b':
      *to++ = '\b';
      return true;
    case 'f':
      *to++ = '\f';
      return true;
    case 'n':
      *to++ = '\n';
      return true;
    case 'r':
      *to++ = '\r';
      return true;
    case 't':
      *to++ = '\t';
      return true;
    case 'u':
      return unicodeEscape(p, end, to);
    default:
      return false;
  }
}

}  // namespace

bool JsonReader::unescape(std::string_view raw, std::string& out) {
  bool good = true;
  // What is written is never longer than what is read.
  out.resize_and_overwrite(raw.size(), [&](char* const data, std::size_t) {
    const char* p = raw.data();
    const char* const last = p + raw.size();
    char* to = data;
    while (p != last && good) {
      bool nonAscii = false;
      const char* const special = scanString(p, last, nonAscii);
      const auto plain = static_cast<std::size_t>(special - p);
      std::memcpy(to, p, plain);
      to += plain;
      p = special;
      if (p != last) good = escape(p, last, to);
    }
    return static_cast<std::size_t>(to - data);
  });
  return good;
}

}  // namespace tarnel
