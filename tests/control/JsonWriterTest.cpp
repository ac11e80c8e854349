#include <gtest/gtest.h>

#include <limits>

#include "control/Base64.h"
#include "control/JsonWriter.h"

namespace tarnel::test {
namespace {

template <class T>
std::string written(const T& value) {
  JsonWriter json;
  json.value(value);
  return json.finish().value_or("cannot be encoded");
}

TEST(JsonWriter, escapesEverySlash) {
  EXPECT_EQ(written("a/b"), R"("a\/b")");
  EXPECT_EQ(written("//"), R"("\/\/")");
}

TEST(JsonWriter, escapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(written("\"\\\b\f\n\r\t"), R"("\"\\\b\f\n\r\t")");
  EXPECT_EQ(written(std::string("\0\x01\x0b\x1f", 4)), R"("\u0000\u0001\u000b\u001f")");
}

TEST(JsonWriter, writesEverythingElseAsItIs) {
  EXPECT_EQ(written("\x7f\u00e9\u2028\U0001F600 '<>&"), "\"\x7f\u00e9\u2028\U0001F600 '<>&\"");
}

TEST(JsonWriter, neverWritesARawLineFeed) {
  for (int c = 0; c < 0x80; ++c) {
    const std::string json = written(std::string(1, static_cast<char>(c)));
    EXPECT_EQ(json.find('\n'), std::string::npos) << c;
  }
}

TEST(JsonWriter, writesNumbersOverAllSixtyFourBits) {
  EXPECT_EQ(written(std::int64_t{0}), "0");
  EXPECT_EQ(written(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
  EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(written(std::numeric_limits<std::uint32_t>::max()), "4294967295");
}

TEST(JsonWriter, separatesWithCommasWhereTheyBelong) {
  JsonWriter json;
  json.beginObject();
  json.field("a", std::vector<std::string>{});
  json.field("b", std::vector<std::string>{"x", "y"});
  json.field("none", std::optional<bool>());
  json.field("c", std::optional<bool>(false));
  json.key("d");
  json.beginObject();
  json.endObject();
  json.field("e", std::int64_t{1});
  json.endObject();
  EXPECT_EQ(json.finish(), R"({"a":[],"b":["x","y"],"c":false,"d":{},"e":1})");
}

TEST(JsonWriter, aTextThatIsNotUtf8FailsTheWhole) {
  JsonWriter json;
  json.beginArray();
  json.value("good");
  json.value("\xc3");
  json.value("good");
  json.endArray();
  EXPECT_FALSE(json.finish().has_value());
}

TEST(JsonWriter, base64ValueIsTheStringOfTheEncoding) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) {
    JsonWriter direct;
    direct.base64Value(bytes);
    EXPECT_EQ(direct.finish(), written(base64::encode(bytes))) << i;
    bytes.push_back(static_cast<char>(i % 3 == 0 ? 0xff : i * 7));
  }
}

}  // namespace
}  // namespace tarnel::test
