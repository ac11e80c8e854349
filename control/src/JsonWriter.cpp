#include "control/JsonWriter.h"

#include <array>
#include <charconv>

#include "control/Base64.h"
#include "control/Text.h"

namespace tarnel {
namespace {

bool isPlain(unsigned char c) { return c >= 0x20 && c != '"' && c != '\\' && c != '/'; }

void appendEscaped(std::string& out, unsigned char c) {
  constexpr std::string_view hex = "0123456789abcdef";
  out.push_back('\\');
  switch (c) {
    case '\b':
      out.push_back('b');
      return;
    case '\f':
      out.push_back('f');
      return;
    case '\n':
      out.push_back('n');
      return;
    case '\r':
      out.push_back('r');
      return;
    case '\t':
      out.push_back('t');
      return;
    case '"':
    case '\\':
    case '/':
      out.push_back(static_cast<char>(c));
      return;
    default:
      out.append("u00");
      out.push_back(hex[c >> 4]);
      out.push_back(hex[c & 15]);
  }
}

void appendString(std::string& out, std::string_view text) {
  out.push_back('"');
  const char* const end = text.data() + text.size();
  for (const char* p = text.data(); p != end;) {
    const char* plain = p;
    while (plain != end && isPlain(static_cast<unsigned char>(*plain))) ++plain;
    out.append(p, plain);
    if (plain == end) break;
    appendEscaped(out, static_cast<unsigned char>(*plain));
    p = plain + 1;
  }
  out.push_back('"');
}

}  // namespace

void JsonWriter::separate() {
  if (needsComma) out.push_back(',');
  needsComma = true;
}

void JsonWriter::beginObject() {
  separate();
  out.push_back('{');
  needsComma = false;
}

void JsonWriter::endObject() {
  out.push_back('}');
  needsComma = true;
}

void JsonWriter::beginArray() {
  separate();
  out.push_back('[');
  needsComma = false;
}

void JsonWriter::endArray() {
  out.push_back(']');
  needsComma = true;
}

void JsonWriter::key(std::string_view name) {
  value(name);
  out.push_back(':');
  needsComma = false;
}

void JsonWriter::value(std::string_view text) {
  if (!isAscii(text) && !isValidUtf8(text) && !failure) {
    failure = EncodingError{.detail = "a text is not valid UTF-8"};
  }
  separate();
  appendString(out, text);
}

void JsonWriter::value(bool flag) {
  separate();
  out.append(flag ? "true" : "false");
}

void JsonWriter::value(std::int64_t number) {
  separate();
  std::array<char, 24> digits;
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out.append(digits.data(), written.ptr);
}

void JsonWriter::base64Value(std::string_view bytes) {
  separate();
  out.push_back('"');
  base64::encodeEscapedTo(bytes, out);
  out.push_back('"');
}

std::expected<std::string, EncodingError> JsonWriter::finish() {
  if (failure) return std::unexpected(*failure);
  return std::move(out);
}

}  // namespace tarnel
