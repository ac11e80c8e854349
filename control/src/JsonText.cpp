// The strings of JSON that are read, with their escapes (RFC 8259, section 7).
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>

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

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// One escape, p at its backslash: the UTF-16 unit that it stands for, and p past it. nullopt for
// what is no escape.
std::optional<std::uint32_t> escapedUnit(const char*& p, const char* end) {
  if (end - p < 2) return std::nullopt;
  const char kind = p[1];
  p += 2;
  switch (kind) {
    case '"':
    case '\\':
    case '/':
      return static_cast<unsigned char>(kind);
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'u': {
      const auto unit = hex4(p, end);
      if (unit) p += 4;
      return unit;
    }
    default:
      return std::nullopt;
  }
}

// The character of one escape, or of the two of a surrogate pair ("\uD83D\uDE00"), p at the
// backslash. False for half a pair, which stands for no character.
bool escape(const char*& p, const char* end, char*& to) {
  auto unit = escapedUnit(p, end);
  if (!unit || isLowSurrogate(*unit)) return false;
  if (isHighSurrogate(*unit)) {
    if (p == end || *p != '\\') return false;
    const auto low = escapedUnit(p, end);
    if (!low || !isLowSurrogate(*low)) return false;
    unit = 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00);
  }
  to = writeUtf8(*unit, to);
  return true;
}

// Half surrogate pairs pass: only a string that is read has to be text.
bool escapesAreWellFormed(std::string_view raw) {
  const char* p = raw.data();
  const char* const end = p + raw.size();
  while ((p = std::find(p, end, '\\')) != end) {
    if (!escapedUnit(p, end)) return false;
  }
  return true;
}

}  // namespace

void JsonReader::skipString() {
  const auto raw = rawString();
  if (raw && raw->hasEscape && !escapesAreWellFormed(raw->text)) corrupted("bad escape");
}

// Plain bytes are copied as they are looked at. The room is taken up to the next quote, which ends
// the string unless a backslash stands before it: a listing keeps its many short strings for as
// long as it is used, so none may hold more than it needs. A string that is not short is read once
// only, into room for a whole chunk of a file.
bool JsonReader::text(std::string& out) {
  constexpr std::ptrdiff_t shortBytes = 4096;
  constexpr std::ptrdiff_t longBytes = 384 * 1024;
  constexpr std::size_t spareBytes = 64 * 1024;
  const char* p = at + 1;  // past the quote
  bool nonAscii = false;
  bool good = true;
  bool closed = false;
  std::size_t written = 0;
  while (good && !closed && p < end) {
    const auto near = static_cast<std::size_t>(std::min(end - p, shortBytes));
    const void* const quote = std::memchr(p, '"', near);
    const char* const limit =
        quote != nullptr ? static_cast<const char*>(quote) : p + std::min(end - p, longBytes);
    const std::size_t most = written + static_cast<std::size_t>(limit - p);
    // The output never outgrows the input.
    out.resize_and_overwrite(most, [&](char* const data, std::size_t) {
      char* to = data + written;
      while (good && p < limit && *p != '"') {
        p = copyPlain(p, limit, to, nonAscii);
        if (p < limit && *p != '"') good = *p == '\\' && escape(p, end, to);
      }
      written = static_cast<std::size_t>(to - data);
      return written;
    });
    closed = p < end && *p == '"';  // a quote that was escaped lies behind p
  }
  at = p;
  if (!good || !closed) {
    corrupted("bad or unterminated string");
    return false;
  }
  ++at;
  if (out.capacity() > out.size() + spareBytes) out.shrink_to_fit();
  // An escape never completes a sequence that raw bytes began, so the outcome can be checked whole.
  if (nonAscii && !isValidUtf8(out)) {
    corrupted("text is not UTF-8");
    return false;
  }
  return true;
}

}  // namespace tarnel
