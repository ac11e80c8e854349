#include "SlashEscape.h"

#include <algorithm>
#include <cstddef>

#include "JsonScan.h"
#include "SlashEscapeVbmi2.h"

namespace tarnel {

char* escapeSlashes(std::string_view text, char* to) {
  while (true) {
    const std::size_t slash = std::min(text.find('/'), text.size());
    to = std::copy_n(text.data(), slash, to);
    if (slash == text.size()) return to;
    *to++ = '\\';
    *to++ = '/';
    text.remove_prefix(slash + 1);
  }
}

const char* copyPlain(const char* p, const char* end, char*& to, bool& nonAscii) {
  p = vbmi2::copyPlain(p, end, to, nonAscii);
  return plain::copyPlain(p, end, to, nonAscii);
}

const char* plain::copyPlain(const char* p, const char* end, char*& to, bool& nonAscii) {
  while (true) {
    const char* const special = scanString(p, end, nonAscii);
    to = std::copy(p, special, to);
    p = special;
    if (end - p < 2 || p[0] != '\\' || p[1] != '/') return p;
    *to++ = '/';
    p += 2;
  }
}

}  // namespace tarnel
