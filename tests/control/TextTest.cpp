#include <gtest/gtest.h>
#include <utf8proc.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "control/Text.h"

namespace tarnel::test {
namespace {

TEST(Text, composedAndDecomposedTextsAreEqual) {
  EXPECT_TRUE(textEqual("caf\u00e9", "cafe\u0301"));
  EXPECT_TRUE(textEqual("\uac00", "\u1100\u1161"));          // a Hangul syllable
  EXPECT_TRUE(textEqual("K", "\u212a"));                     // the Kelvin sign is the letter
  EXPECT_TRUE(textEqual("a\u0323\u0307", "a\u0307\u0323"));  // marks in another order
}

TEST(Text, compatibilityFormsAndCasesAreDifferent) {
  EXPECT_FALSE(textEqual("\ufb01", "fi"));
  EXPECT_FALSE(textEqual("\u00b2", "2"));
  EXPECT_FALSE(textEqual("a", "A"));
  EXPECT_FALSE(textEqual("", "\u200b"));
}

TEST(Text, orderIsThatOfTheComposedCodePoints) {
  EXPECT_TRUE(textLess("a", "b"));
  EXPECT_TRUE(textLess("Z", "a"));
  EXPECT_TRUE(textLess("", "a"));
  EXPECT_FALSE(textLess("a", "a"));
  EXPECT_TRUE(textLess("z", "e\u0301"));  // composed, it is U+00E9
  EXPECT_TRUE(textLess("\uffee", "\U00010000"));
  EXPECT_FALSE(textLess("\u00e9", "e\u0301"));
  EXPECT_FALSE(textLess("e\u0301", "\u00e9"));
}

TEST(Text, nulIsACharacterLikeAnyOther) {
  EXPECT_FALSE(textEqual(std::string("a\0\u00e9", 4), "a"));
  EXPECT_TRUE(textEqual(std::string("a\0\u00e9", 4), std::string("a\0e\u0301", 5)));
}

TEST(Text, whatIsNotUtf8IsComparedByItsBytes) {
  EXPECT_TRUE(textEqual("\xff", "\xff"));
  EXPECT_FALSE(textEqual("\xff", "\xfe"));
  EXPECT_TRUE(textLess("\xfe", "\xff"));
  EXPECT_EQ(composed("e\u0301\xff"), "e\u0301\xff");
}

TEST(Text, validUtf8IsThatOfTheStandard) {
  for (const char* good : {"", "a", "\u0080", "\u07ff", "\u0800", "\xed\x9f\xbf", "\xee\x80\x80",
                           "\uffff", "\U00010000", "\U0010ffff"}) {
    EXPECT_TRUE(isValidUtf8(good)) << good;
  }
  for (const char* bad : {"\x80", "\xc0\x80", "\xc1\xbf", "\xc3", "\xc3(", "\xe0\x9f\xbf",
                          "\xed\xa0\x80", "\xed\xbf\xbf", "\xe2\x82", "\xf0\x8f\xbf\xbf",
                          "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff", "a\xf0\x9f\x98"}) {
    EXPECT_FALSE(isValidUtf8(bad)) << bad;
  }
}

TEST(Text, asciiIsToldAtEveryPlace) {
  for (std::size_t length = 0; length < 40; ++length) {
    std::string text(length, '\x7f');
    EXPECT_TRUE(isAscii(text));
    for (std::size_t at = 0; at < length; ++at) {
      text[at] = '\x80';
      EXPECT_FALSE(isAscii(text)) << length << " " << at;
      text[at] = '\x7f';
    }
  }
}

TEST(Text, foldedTextsAreWhatAFileSystemWithoutCaseReads) {
  EXPECT_EQ(caseFolded(""), "");
  EXPECT_EQ(caseFolded("A.Key"), "a.key");
  EXPECT_EQ(caseFolded("\u017f\u212a"), "sk");      // long s, Kelvin
  EXPECT_EQ(caseFolded(".\u00dfh"), ".ssh");        // sharp s
  EXPECT_EQ(caseFolded("s\u200bs\u00adh"), "ssh");  // without appearance
  EXPECT_EQ(caseFolded("\u00c9"), "e\u0301");       // decomposed: no "e"
  EXPECT_EQ(caseFolded("A\xff"), "A\xff");
}

TEST(Text, composedFormIsReachedInOneStep) {
  EXPECT_EQ(composed("e\u0301"), "\u00e9");
  EXPECT_EQ(composed(composed("a\u0307\u0323")), composed("a\u0307\u0323"));
}

// The library's own composition, for texts short enough for it.
std::string composedByTheLibrary(const std::string& text) {
  utf8proc_uint8_t* made = nullptr;
  const auto length =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &made,
                   static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
  EXPECT_GE(length, 0);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(made, &std::free);
  return std::string(reinterpret_cast<const char*>(made), static_cast<std::size_t>(length));
}

// A character of a kind that composition treats in its own way.
char32_t randomCharacter(std::mt19937& random) {
  switch (random() % 6) {
    case 0:
      return 'a' + random() % 26;
    case 1:
      return 0x300 + random() % 0x70;  // marks
    case 2:
      return 0xAC00 + random() % 11'172;  // Hangul syllables
    case 3:
      return 0x1100 + random() % 0x100;  // their parts
    case 4:
      return 0x80 + random() % 0x2F80;
    default:
      const char32_t any = random() % 0x110000;
      return any >= 0xD800 && any < 0xE000 ? 0 : any;
  }
}

TEST(Text, composedFormIsTheLibrarys) {
  std::mt19937 random(3);
  for (int round = 0; round < 50'000; ++round) {
    std::string text;
    for (unsigned left = random() % 12; left > 0; --left) {
      std::array<utf8proc_uint8_t, 4> bytes;
      const auto length = utf8proc_encode_char(
          static_cast<utf8proc_int32_t>(randomCharacter(random)), bytes.data());
      text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
    }
    ASSERT_EQ(composed(text), composedByTheLibrary(text)) << text;
  }
}

TEST(Text, aNameOfManyMarksCostsLittleMoreThanItsLength) {
  constexpr std::size_t marks = 250'000;
  std::string text = "a";
  std::string ordered = "a";
  for (std::size_t i = 0; i < marks; ++i) text += "\u0301";
  for (std::size_t i = 0; i < marks; ++i) text += "\u0316";  // of a lower class
  for (std::size_t i = 0; i < marks; ++i) ordered += "\u0316";
  for (std::size_t i = 0; i < marks; ++i) ordered += "\u0301";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(textEqual(text, ordered));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

struct Entry {
  std::string name;
  int place;
  bool operator==(const Entry&) const = default;
};

std::vector<Entry> sorted(std::vector<Entry> entries) {
  sortByText(entries, [](const Entry& entry) -> const std::string& { return entry.name; });
  return entries;
}

TEST(Text, sortingKeepsTheOrderOfEqualNames) {
  EXPECT_EQ(sorted({{"b", 1}, {"a", 2}, {"b", 3}, {"a", 4}}),
            (std::vector<Entry>{{"a", 2}, {"a", 4}, {"b", 1}, {"b", 3}}));
  EXPECT_EQ(sorted({{"e\u0301", 1}, {"z", 2}, {"\u00e9", 3}, {"a", 4}}),
            (std::vector<Entry>{{"a", 4}, {"z", 2}, {"e\u0301", 1}, {"\u00e9", 3}}));
  EXPECT_TRUE(sorted({}).empty());
}

TEST(Text, repairKeepsWhatIsValidAndMarksEachMaximalPartOnce) {
  EXPECT_EQ(repairedUtf8(""), "");
  EXPECT_EQ(repairedUtf8("a\u00e9\u20ac\U0001F600"), "a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(repairedUtf8("\xFF\x41"), "\uFFFDA");
  EXPECT_EQ(repairedUtf8("\xE2\x82\x41"), "\uFFFDA");             // a sequence that was cut
  EXPECT_EQ(repairedUtf8("\xF0\x9F\x98"), "\uFFFD");              // the same at the end
  EXPECT_EQ(repairedUtf8("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");  // no surrogate starts one
  EXPECT_EQ(repairedUtf8("\xC0\x80"), "\uFFFD\uFFFD");            // nor does an overlong form
  EXPECT_EQ(repairedUtf8("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

}  // namespace
}  // namespace tarnel::test
