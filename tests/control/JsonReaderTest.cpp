#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "MemoryLeft.h"
#include "control/JsonReader.h"
#include "support/Sanitized.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

template <class T>
std::optional<T> valueOf(std::string_view text) {
  JsonReader json(text);
  T value{};
  json.read(value);
  json.finish();
  if (json.failed()) return std::nullopt;
  return value;
}

std::optional<std::string> text(std::string_view json) { return valueOf<std::string>(json); }
std::optional<std::int64_t> number(std::string_view json) { return valueOf<std::int64_t>(json); }

bool skips(std::string_view text) {
  JsonReader json(text);
  json.skipValue();
  json.finish();
  return !json.failed();
}

std::string nested(int levels, const char* open, const char* close, const char* inner = "") {
  std::string out;
  for (int i = 0; i < levels; ++i) out += open;
  out += inner;
  for (int i = 0; i < levels; ++i) out += close;
  return out;
}

TEST(JsonReader, readsNumbersByValueNotBySpelling) {
  EXPECT_EQ(number("1.0"), 1);
  EXPECT_EQ(number("1e2"), 100);
  EXPECT_EQ(number("1E+2"), 100);
  EXPECT_EQ(number("10e-1"), 1);
  EXPECT_EQ(number("12.50e1"), 125);
  EXPECT_EQ(number("-0"), 0);
  EXPECT_EQ(number("-0.0e5"), 0);
  EXPECT_EQ(number("0e99999999999999999999"), 0);
  EXPECT_EQ(number("-0e99"), 0);
  EXPECT_EQ(number("-0.00e-5"), 0);
  EXPECT_EQ(number("9e18"), 9'000'000'000'000'000'000);
  EXPECT_EQ(valueOf<std::uint32_t>("-0"), 0U);
  EXPECT_EQ(number("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(number("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(JsonReader, refusesNumbersThatAreNoIntegersOrDoNotFit) {
  for (const char* json : {"1.5", "1e-1", "9223372036854775808", "-9223372036854775809", "1e19",
                           "1e99999999999999999999", "1e-99999999999999999999",
                           "10e9223372036854775807", "1.5e-9223372036854775808"}) {
    EXPECT_EQ(number(json), std::nullopt) << json;
  }
  EXPECT_EQ(valueOf<std::uint32_t>("-1"), std::nullopt);
  EXPECT_EQ(valueOf<std::uint32_t>("4294967296"), std::nullopt);
}

TEST(JsonReader, refusesNumbersOutsideTheGrammar) {
  for (const char* json : {"01", "+1", ".5", "1.", "1e", "1e+", "-", "--1", "0x10", "NaN",
                           "Infinity", "1_0", "1 2", "\"1\""}) {
    EXPECT_EQ(number(json), std::nullopt) << json;
    EXPECT_EQ(skips(json), *json == '"') << json;
  }
}

TEST(JsonReader, longNumbersCostNoMoreThanTheirLength) {
  const std::string zeros(1'000'000, '0');
  EXPECT_EQ(number("1" + zeros + "e-1000000"), 1);
  EXPECT_EQ(number("1" + zeros), std::nullopt);
}

TEST(JsonReader, onlyTrueAndFalseAreBooleans) {
  EXPECT_EQ(valueOf<bool>("true"), true);
  EXPECT_EQ(valueOf<bool>(" false "), false);
  for (const char* json : {"0", "1", "\"true\"", "True", "tru", "truex", "null", ""}) {
    EXPECT_EQ(valueOf<bool>(json), std::nullopt) << json;
  }
}

TEST(JsonReader, decodesEveryEscape) {
  EXPECT_EQ(text(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
  EXPECT_EQ(text(R"("\u0041\u00e9\u20AC\uD83D\uDE00")"), "A\u00e9\u20ac\U0001F600");
  EXPECT_EQ(text(R"("a\u0000b")"), std::string("a\0b", 3));
  // The first and the last character of each length in UTF-8.
  EXPECT_EQ(text(R"("\u007f\u0080\u07ff\u0800\ud7ff\ue000\uffff\ud800\udc00\udbff\udfff")"),
            "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf"
            "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
}

TEST(JsonReader, aStringMayEndInAnEscapedBackslash) {
  EXPECT_EQ(text(R"("a\\")"), "a\\");
  EXPECT_TRUE(skips(R"(["\\","\\\\",{"a\\":"\\\""}])"));
  EXPECT_FALSE(skips(R"(["\\\"])"));
}

TEST(JsonReader, refusesEscapesOutsideTheGrammar) {
  for (const char* json : {R"("\x")", R"("\u12")", R"("\u12g4")", R"("\u-123")", R"("\")", "\"\\",
                           "\"\\u12", R"("\é")"}) {
    EXPECT_EQ(text(json), std::nullopt) << json;
    EXPECT_FALSE(skips(json)) << json;
  }
}

TEST(JsonReader, halfASurrogatePairFailsWhereItIsReadAndPassesWhereItIsNot) {
  for (const char* json : {R"("\uD83D")", R"("\uDE00")", R"("\uDE00\uD83D")", R"("\uD83Dx")",
                           R"("\uD83D\n")", R"("\uD83D\uD83D")", R"("\uD83D/uDE00")"}) {
    EXPECT_EQ(text(json), std::nullopt) << json;
    EXPECT_TRUE(skips(json)) << json;
  }
  EXPECT_FALSE(skips(R"({"\uD83D":1})"));  // every key is read
}

TEST(JsonReader, refusesRawControlCharactersAndUnterminatedStrings) {
  for (const std::string& json : {std::string("\"a\nb\""), std::string("\"a\0b\"", 5),
                                  std::string("\"abc"), std::string("\"")}) {
    EXPECT_EQ(text(json), std::nullopt);
    EXPECT_FALSE(skips(json));
  }
}

TEST(JsonReader, aStringThatIsReadMustBeUtf8) {
  EXPECT_EQ(text("\"gr\u00fc\u00df\""), "gr\u00fc\u00df");
  for (const char* bytes : {"\xff", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82",
                            "\xc3\\u00a9", "\\u00c3\xa9"}) {
    EXPECT_EQ(text("\"" + std::string(bytes) + "\""), std::nullopt) << bytes;
  }
  EXPECT_FALSE(skips("{\"\xff\":1}"));
}

// Whatever the place within the blocks that the scan works on.
TEST(JsonReader, findsEscapesQuotesAndBadBytesAtEveryPlace) {
  for (std::size_t length = 0; length <= 70; ++length) {
    const std::string plain(length, 'x');
    EXPECT_EQ(text('"' + plain + '"'), plain);
    for (std::size_t at = 0; at <= length; ++at) {
      const auto planted = [&](std::string_view what) {
        return '"' + std::string(plain).insert(at, what) + '"';
      };
      EXPECT_EQ(text(planted("\\/")), std::string(plain).insert(at, "/"));
      EXPECT_EQ(text(planted("\u00e9")), std::string(plain).insert(at, "\u00e9"));
      EXPECT_EQ(text(planted("\"")), std::nullopt);
      EXPECT_EQ(text(planted("\x1f")), std::nullopt);
      EXPECT_EQ(text(planted("\xff")), std::nullopt);
    }
  }
}

TEST(JsonReader, nestsFiveHundredAndTwelveLevelsAndNoMore) {
  EXPECT_TRUE(skips(nested(512, "[", "]")));
  EXPECT_FALSE(skips(nested(513, "[", "]")));
  EXPECT_TRUE(skips(nested(512, R"({"a":)", "}", "1")));
  EXPECT_FALSE(skips(nested(513, R"({"a":)", "}", "1")));
  EXPECT_FALSE(skips(nested(1'000'000, "[", "]")));
  EXPECT_FALSE(skips(std::string(1'000'000, '[')));
}

TEST(JsonReader, siblingsDoNotCountAsDepth) {
  std::string many = "[";
  for (int i = 0; i < 2000; ++i) many += "[{}],";
  EXPECT_TRUE(skips(many + "[]]"));
}

TEST(JsonReader, whatIsSkippedMustBeJson) {
  for (const char* json : {"nul",
                           ".5",
                           "[1,,2]",
                           "[1,]",
                           "[,1]",
                           "{1:2}",
                           R"({"a" 1})",
                           R"({"a":})",
                           R"({"a":1,})",
                           R"({,"a":1})",
                           "[1}",
                           "{]",
                           "tru",
                           "",
                           "[1 2]",
                           "'a'",
                           "{\"a\":1 \"b\":2}",
                           "[",
                           "{",
                           "]",
                           ","}) {
    EXPECT_FALSE(skips(json)) << json;
  }
  EXPECT_TRUE(
      skips(" { \"a\" : [ 1 , -2.5e+3 , true , false , null , \"\" , { } , [ ] ] } \r\n\t"));
}

TEST(JsonReader, nothingButWhiteSpaceFollowsTheValue) {
  EXPECT_EQ(number("1 \n"), 1);
  EXPECT_EQ(number("1 x"), std::nullopt);
  EXPECT_EQ(number(std::string_view("1\0", 2)), std::nullopt);
  EXPECT_EQ(number("\xef\xbb\xbf"
                   "1"),
            std::nullopt);
  EXPECT_EQ(number("1\v"), std::nullopt);
}

// In memory of exactly their length, so that the address sanitizer sees a look behind the end.
TEST(JsonReader, looksAtNothingBehindItsText) {
  const std::string_view whole =
      R"({"k\"":["a\\","\u0041\/\uD83D\uDE00","plain, and longer than a block of a scan"],)"
      R"("n":[-12.5e+3,0,true,false,null]})";
  ASSERT_TRUE(skips(whole));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const std::vector<char> part(whole.begin(),
                                 whole.begin() + static_cast<std::ptrdiff_t>(length));
    const std::string_view json(part.data(), length);
    EXPECT_FALSE(skips(json)) << json;
    for (std::size_t from = 0; from < length; ++from) {
      JsonReader reader(json.substr(from));
      std::string read;
      reader.read(read);
      std::string_view key;
      JsonReader(json.substr(from)).skipValue();
      if (JsonReader object(json.substr(from)); object.enterObject()) (void)object.nextKey(key);
    }
  }
}

TEST(JsonReader, keysAreComparedAfterTheirEscapes) {
  JsonReader json(R"({"\u006eame":1,"é":2})");
  std::string_view key;
  std::int64_t value = 0;
  ASSERT_TRUE(json.enterObject());
  ASSERT_TRUE(json.nextKey(key));
  EXPECT_EQ(key, "name");
  json.read(value);
  EXPECT_EQ(value, 1);
  ASSERT_TRUE(json.nextKey(key));
  EXPECT_EQ(key, "é");
  json.skipValue();
  EXPECT_FALSE(json.nextKey(key));
  json.finish();
  EXPECT_FALSE(json.failed());
}

TEST(JsonReader, theFirstFailureSticks) {
  JsonReader json("[x,1]");
  std::int64_t value = 7;
  ASSERT_TRUE(json.enterArray());
  ASSERT_TRUE(json.nextElement());
  json.read(value);
  ASSERT_TRUE(json.failed());
  const DecodingError first = json.error();
  json.fail(Kind::keyNotFound, "later");
  json.skipValue();
  json.finish();
  EXPECT_FALSE(json.nextElement());
  EXPECT_FALSE(json.takeNull());
  EXPECT_EQ(json.error(), first);
  EXPECT_EQ(value, 7);
  JsonReader null("null");
  EXPECT_FALSE(null.enterArray());
  EXPECT_FALSE(null.takeNull());
}

// A record of one list and one number, both required.
struct Pair {
  std::vector<std::string> list;
  std::int64_t number;
  [[nodiscard]] static std::expected<Pair, DecodingError> decode(JsonReader& json) {
    Pair pair{};
    std::string_view key;
    json.enterObject();
    while (json.nextKey(key)) {
      if (key == "list") {
        json.read(pair.list);
      } else {
        json.read(pair.number);
      }
    }
    if (json.failed()) return std::unexpected(json.error());
    return pair;
  }
};

TEST(JsonReader, aTextThatIsNoJsonIsCorruptedWhateverItWouldSay) {
  for (const char* json :
       {"", "x", "nul", "7x", "\"", "[", "[1", R"({"list":)", R"({"list":x})", R"({"list":[nul]})",
        R"({"number":"\x"})", R"({"number":"7)", R"({"number":"7"]})", R"({"number":[}})",
        R"({"list":7,"a":.5})", R"({"list":7} x)", R"({"list":7,"list":)"}) {
    EXPECT_EQ(readJson<Pair>(json).error().kind, Kind::dataCorrupted) << json;
  }
  for (const char* json : {"7", "null", "[]", "\"x\"", R"({"list":7})", R"({"list":[null]})",
                           R"({"number":"7"})", R"({"number":[]})", R"({"number":true})"}) {
    EXPECT_EQ(readJson<Pair>(json).error().kind, Kind::typeMismatch) << json;
  }
}

// As a read's data is: base64 with its slashes escaped, at any place within the blocks that are
// copied.
TEST(JsonReader, slashesMixedInAreReadInBothForms) {
  std::mt19937 random(11);
  for (int round = 0; round < 500; ++round) {
    std::string plain;
    std::string json = "\"";
    for (std::size_t left = random() % 400; left > 0; --left) {
      const unsigned kind = random() % 12;
      plain += kind < 2 ? '/' : static_cast<char>('A' + random() % 26);
      if (kind == 0) json += '\\';
      json += plain.back();
    }
    ASSERT_EQ(text(json + "\""), plain);
    ASSERT_EQ(text(json), std::nullopt);
  }
}

// A listing holds its texts for as long as it is used.
TEST(JsonReader, aTextKeepsNoMoreRoomThanItNeeds) {
  for (const int count : {10, 1000, 100'000}) {
    std::string json = "[";
    for (int i = 0; i < count; ++i) json += R"("a name\/of a file",)";
    const auto texts = valueOf<std::vector<std::string>>(json + "\"\"]");
    ASSERT_TRUE(texts.has_value());
    for (const std::string& text : *texts) ASSERT_LT(text.capacity(), 512U) << count;
  }
  std::string json = "[";
  for (int i = 0; i < 100; ++i) json += '"' + std::string(5000, 'x') + "\",";
  const auto longer = valueOf<std::vector<std::string>>(json + "\"\"]");
  ASSERT_TRUE(longer.has_value());
  for (const std::string& text : *longer) ASSERT_LT(text.capacity(), 80'000U);
}

#if defined(__linux__)
TEST(JsonReader, aRecordThatHasNoRoomInMemoryFailsAndEndsNothing) {
  if (builtWithSanitizer) GTEST_SKIP() << "a sanitizer has the memory";
  std::string json = R"({"list":[)";
  for (int i = 0; i < 3'000'000; ++i) json += R"("",)";  // as texts they take over 96 MiB
  json += R"(""]})";
  const MemoryLeft little(16 << 20);
  const auto pair = readJson<Pair>(json);
  ASSERT_FALSE(pair.has_value());
  EXPECT_EQ(pair.error().kind, Kind::dataCorrupted);
}
#endif

TEST(JsonReader, readsListsOfTexts) {
  EXPECT_EQ(valueOf<std::vector<std::string>>(R"(["a", "b"])"),
            (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(valueOf<std::vector<std::string>>("[]"), std::vector<std::string>());
  EXPECT_EQ(valueOf<std::vector<std::string>>(R"(["a",null])"), std::nullopt);
}

}  // namespace
}  // namespace tarnel::test
