// Both what uses vectors where it can and the plain code under it, whatever the processor: outputs
// are exactly as large as the contracts ask for.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "SlashEscape.h"

namespace tarnel::test {
namespace {

using Copy = const char* (*)(const char*, const char*, char*&, bool&);

class SlashEscape : public testing::TestWithParam<Copy> {
 protected:
  [[nodiscard]] static std::string escaped(const std::string& text) {
    const std::vector<char> in(text.begin(), text.end());  // exactly so long, for the sanitizer
    std::vector<char> out(2 * in.size());
    const char* const end = escapeSlashes({in.data(), in.size()}, out.data());
    return std::string(out.data(), static_cast<std::size_t>(end - out.data()));
  }
  struct Copied {
    std::string text;
    std::size_t taken;
    bool nonAscii;
  };
  [[nodiscard]] Copied copied(const std::string& inside) const {
    const std::vector<char> in(inside.begin(), inside.end());
    std::vector<char> out(in.size());
    char* to = out.data();
    bool nonAscii = false;
    const char* const end = in.data() + in.size();
    const char* const stopped = GetParam()(in.data(), end, to, nonAscii);
    return {.text = std::string(out.data(), static_cast<std::size_t>(to - out.data())),
            .taken = static_cast<std::size_t>(stopped - in.data()),
            .nonAscii = nonAscii};
  }
};

std::string byTheDefinition(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '/') out.push_back('\\');
    out.push_back(c);
  }
  return out;
}

// A text of which one in `often` characters is a slash.
std::string withSlashes(std::mt19937& random, std::size_t length, unsigned often) {
  std::string text(length, '\0');
  for (char& c : text) c = random() % often == 0 ? '/' : static_cast<char>('A' + random() % 26);
  return text;
}

TEST_P(SlashEscape, everyLengthIsEscapedByTheDefinitionAndCopiedBack) {
  std::mt19937 random(1);
  for (std::size_t length = 0; length <= 400; ++length) {
    for (const unsigned often : {1U, 2U, 3U, 7U, 64U, 1'000'000U}) {
      const std::string text = withSlashes(random, length, often);
      const std::string escapedText = escaped(text);
      ASSERT_EQ(escapedText, byTheDefinition(text)) << length;
      const Copied back = copied(escapedText);
      ASSERT_EQ(back.text, text) << length;
      ASSERT_EQ(back.taken, escapedText.size());
      ASSERT_FALSE(back.nonAscii);
    }
  }
}

TEST_P(SlashEscape, aLongTextIsEscapedAndCopiedBack) {
  std::mt19937 random(2);
  const std::string text = withSlashes(random, 1'000'001, 64);
  const std::string escapedText = escaped(text);
  EXPECT_EQ(escapedText, byTheDefinition(text));
  EXPECT_EQ(copied(escapedText).text, text);
}

TEST_P(SlashEscape, copyingStopsAtWhatIsNotPlainAtEveryPlace) {
  for (const char* what : {"\"", "\\n", "\\\"", "\\\\/", "\x1f", "\\"}) {
    for (std::size_t at = 0; at <= 200; ++at) {
      const std::string before(at, 'x');
      const bool atTheEnd = std::string_view(what) == "\\";
      const Copied found = copied(before + what + (atTheEnd ? "" : std::string(100, 'y')));
      ASSERT_EQ(found.text, before) << what << " at " << at;
      ASSERT_EQ(found.taken, at);
    }
  }
}

TEST_P(SlashEscape, copyingTellsOfBytesThatAreNotAscii) {
  for (std::size_t at = 0; at <= 200; ++at) {
    std::string text(201, 'x');
    text[at] = '\x80';
    const Copied found = copied(text);
    ASSERT_TRUE(found.nonAscii) << at;
    ASSERT_EQ(found.text, text);
  }
}

INSTANTIATE_TEST_SUITE_P(All, SlashEscape, testing::Values(copyPlain, plain::copyPlain),
                         [](const auto& way) {
                           return way.index == 0 ? "asTheProcessorCan" : "plain";
                         });

}  // namespace
}  // namespace tarnel::test
