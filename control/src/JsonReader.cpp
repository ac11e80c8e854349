#include "control/JsonReader.h"

#include <cstring>
#include <limits>

#include "JsonNumber.h"
#include "JsonScan.h"

namespace tarnel {

using Kind = DecodingError::Kind;

void JsonReader::fail(Kind kind, std::string detail) {
  if (!failure) failure = DecodingError{.kind = kind, .detail = std::move(detail)};
}

void JsonReader::corrupted(const char* what) {
  fail(Kind::dataCorrupted, std::string(what) + " at byte " + std::to_string(at - begin));
}

char JsonReader::peek() {
  while (at != end && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) ++at;
  return at == end ? '\0' : *at;
}

bool JsonReader::take(char expected) {
  if (failed()) return false;
  if (peek() != expected) {
    corrupted("unexpected character");
    return false;
  }
  ++at;
  return true;
}

bool JsonReader::enter(char open) {
  if (failed()) return false;
  if (peek() != open) {
    fail(Kind::typeMismatch, open == '{' ? "an object was expected" : "an array was expected");
    return false;
  }
  if (++depth > maxDepth) {
    corrupted("nested too deeply");
    return false;
  }
  ++at;
  fresh = true;
  return true;
}

bool JsonReader::next(char close) {
  if (failed()) return false;
  const bool first = fresh;
  fresh = false;
  if (peek() == close) {
    ++at;
    --depth;
    return false;
  }
  return first || take(',');
}

bool JsonReader::enterObject() { return enter('{'); }
bool JsonReader::enterArray() { return enter('['); }
bool JsonReader::nextElement() { return next(']'); }

bool JsonReader::nextKey(std::string_view& key) {
  if (!next('}')) return false;
  if (peek() != '"') {
    corrupted("a key was expected");
    return false;
  }
  const char* const quote = at;
  const auto raw = rawString();
  if (!raw) return false;
  if (!raw->hasEscape && raw->isAscii) {
    key = raw->text;
  } else {
    at = quote;
    if (!text(scratch)) return false;
    key = scratch;
  }
  return take(':');
}

bool JsonReader::literal(std::string_view word) {
  if (static_cast<std::size_t>(end - at) < word.size() ||
      std::memcmp(at, word.data(), word.size()) != 0) {
    return false;
  }
  at += word.size();
  return true;
}

bool JsonReader::takeNull() { return !failed() && peek() == 'n' && literal("null"); }

void JsonReader::finish() {
  if (!failed() && (peek() != '\0' || at != end)) corrupted("text after the value");
}

std::optional<JsonReader::RawString> JsonReader::rawString() {
  const char* const from = ++at;  // past the quote
  bool nonAscii = false;
  bool hasEscape = false;
  while (true) {
    at = scanString(at, end, nonAscii);
    if (at == end || static_cast<unsigned char>(*at) < 0x20) {
      corrupted("unterminated string");
      return std::nullopt;
    }
    if (*at == '"') break;
    hasEscape = true;
    if (end - at < 2) {
      corrupted("unterminated string");
      return std::nullopt;
    }
    if (at[1] == '"' || at[1] == '\\' || at[1] == '/') {
      at += 2;  // the common escapes, checked whole; the others by text or by skipString
    } else {
      ++at;
    }
  }
  const std::string_view text(from, static_cast<std::size_t>(at - from));
  ++at;
  return RawString{.text = text, .hasEscape = hasEscape, .isAscii = !nonAscii};
}

void JsonReader::read(std::string& out) {
  if (failed()) return;
  if (peek() != '"') return fail(Kind::typeMismatch, "a string was expected");
  (void)text(out);
}

void JsonReader::read(bool& out) {
  if (failed()) return;
  (void)peek();
  if (literal("true")) {
    out = true;
  } else if (literal("false")) {
    out = false;
  } else {
    fail(Kind::typeMismatch, "a boolean was expected");
  }
}

std::optional<std::string_view> JsonReader::number() {
  const std::size_t length = json::numberLength(std::string_view(at, std::size_t(end - at)));
  if (length == 0) return std::nullopt;
  const std::string_view token(at, length);
  at += length;
  return token;
}

std::optional<std::int64_t> JsonReader::integer() {
  if (failed()) return std::nullopt;
  const char first = peek();
  if (first != '-' && (first < '0' || first > '9')) {
    fail(Kind::typeMismatch, "a number was expected");
    return std::nullopt;
  }
  const auto token = number();
  if (!token) {
    corrupted("bad number");
    return std::nullopt;
  }
  const auto value = json::integerValue(*token);
  if (!value) fail(Kind::dataCorrupted, "number out of range");
  return value;
}

void JsonReader::read(std::int64_t& out) {
  if (const auto value = integer()) out = *value;
}

void JsonReader::read(std::uint32_t& out) {
  const auto value = integer();
  if (!value) return;
  if (*value < 0 || *value > std::numeric_limits<std::uint32_t>::max()) {
    return fail(Kind::dataCorrupted, "number out of range");
  }
  out = static_cast<std::uint32_t>(*value);
}

void JsonReader::skipValue() {
  if (failed()) return;
  std::string_view key;
  switch (peek()) {
    case '{':
      if (!enterObject()) return;
      while (nextKey(key)) skipValue();
      return;
    case '[':
      if (!enterArray()) return;
      while (nextElement()) skipValue();
      return;
    case '"':
      return skipString();
    case 't':
    case 'f':
    case 'n':
      if (!literal("true") && !literal("false") && !literal("null")) corrupted("bad literal");
      return;
    default:
      if (!number()) corrupted("a value was expected");
  }
}

DecodingError firstFault(std::string_view text, const DecodingError& failure) {
  JsonReader whole(text);
  whole.skipValue();
  whole.finish();
  return whole.failed() ? whole.error() : failure;
}

}  // namespace tarnel
