#include "SlashEscape.h"

#include <algorithm>
#include <cstring>

#include "JsonScan.h"
#include "SlashEscapeVbmi2.h"

namespace tarnel {

char* escapeSlashes(std::string_view text, char* to) {
  std::size_t i = 0;
  to = vbmi2::escapeSlashes(text, i, to);
  while (i < text.size()) {
    const std::size_t slash = std::min(text.find('/', i), text.size());
    std::memcpy(to, text.data() + i, slash - i);
    to += slash - i;
    i = slash;
    if (i == text.size()) break;
    *to++ = '\\';
    *to++ = '/';
    ++i;
  }
  return to;
}

const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii) {
  p = vbmi2::copyPlain(p, end, to, nonAscii);
  while (true) {
    const char* const special = scanString(p, end, nonAscii);
    const auto plain = static_cast<std::size_t>(special - p);
    if (plain > 0) std::memcpy(to, p, plain);
    to += plain;
    p = special;
    if (end - p < 2 || p[0] != '\\' || p[1] != '/') return p;
    *to++ = '/';
    p += 2;
  }
}

}  // namespace tarnel
