// The strings of JSON that are read, with their escapes (RFC 8259, section 7).
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

#include "SlashEscape.h"
#include "control/JsonReader.h"
#include "control/Text.h"

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
  const char kind = p[1];  // there is one: a quote comes later
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

// Plain bytes are copied as they are looked at. The room is taken up to the next quote, which ends
// the string unless a backslash stands before it: a listing keeps its many short strings for as
// long as it is used, so none may hold more than it needs.
bool JsonReader::text(std::string& out) {
  constexpr std::size_t vectorBytes = 32;  // whole vectors are stored when there is one to read
  const char* p = at + 1;                  // past the quote
  bool nonAscii = false;
  bool good = true;
  bool closed = false;
  std::size_t written = 0;
  while (good && !closed) {
    const void* const quote = std::memchr(p, '"', static_cast<std::size_t>(end - p));
    if (quote == nullptr) break;
    const char* const limit = static_cast<const char*>(quote);
    const auto room = static_cast<std::size_t>(limit - p);
    const std::size_t most = written + room + (room >= vectorBytes ? vectorBytes : 0);
    // The output never outgrows the input.
    out.resize_and_overwrite(most, [&](char* const data, std::size_t) {
      char* to = data + written;
      while (good && p < limit) {
        p = copyPlain(p, limit, to, nonAscii);
        if (p < limit) good = *p == '\\' && escape(p, end, to);
      }
      written = static_cast<std::size_t>(to - data);
      return written;
    });
    closed = p == limit;  // one further when the quote was escaped
  }
  at = p;
  if (!good || !closed) {
    corrupted("bad or unterminated string");
    return false;
  }
  ++at;
  // An escape never completes a sequence that raw bytes began, so the outcome can be checked whole.
  if (nonAscii && !isValidUtf8(out)) {
    corrupted("text is not UTF-8");
    return false;
  }
  return true;
}

}  // namespace tarnel
