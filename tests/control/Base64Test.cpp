#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Base64Avx2.h"
#include "Base64Pieces.h"
#include "Base64Plain.h"
#include "control/Base64.h"

namespace tarnel::test {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

Bytes randomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// The definition, bit by bit.
std::string plainEncode(BytesView bytes) {
  std::string out;
  for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
    std::size_t sextet = 0;
    for (std::size_t k = bit; k < bit + 6; ++k) {
      const bool set =
          k / 8 < bytes.size() && (static_cast<std::uint8_t>(bytes[k / 8]) >> (7 - k % 8) & 1) != 0;
      sextet = sextet << 1 | static_cast<std::size_t>(set);
    }
    out.push_back(alphabet[sextet]);
  }
  while (out.size() % 4 != 0) out.push_back('=');
  return out;
}

std::string withEscapedSlashes(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '/') out.push_back('\\');
    out.push_back(c);
  }
  return out;
}

std::string encodedEscaped(BytesView bytes) {
  std::string out = "before";
  base64::encodeEscapedTo(bytes, out);
  return out;
}

TEST(Base64, encodesTheVectorsOfTheStandard) {
  EXPECT_EQ(base64::encode(""), "");
  EXPECT_EQ(base64::encode("f"), "Zg==");
  EXPECT_EQ(base64::encode("fo"), "Zm8=");
  EXPECT_EQ(base64::encode("foo"), "Zm9v");
  EXPECT_EQ(base64::encode("foob"), "Zm9vYg==");
  EXPECT_EQ(base64::encode("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64::encode("foobar"), "Zm9vYmFy");
}

// The lengths cross every border between whole vectors and the bytes left over.
TEST(Base64, everyLengthEncodesByTheDefinitionAndDecodesBack) {
  for (std::size_t length = 0; length <= 300; ++length) {
    for (unsigned seed = 0; seed < 8; ++seed) {
      const Bytes bytes = randomBytes(length, seed);
      const std::string text = base64::encode(bytes);
      ASSERT_EQ(text, plainEncode(bytes)) << length;
      ASSERT_EQ(base64::decode(text), bytes) << length;
      ASSERT_EQ(base64::decodeInPlace(text), bytes) << length;
    }
  }
}

// The code for processors without vectors, which on others sees the ends of texts only. Outputs are
// exactly as large as they must be.
TEST(Base64, thePlainCodeIsTheSame) {
  for (const std::size_t length : {0U, 1U, 2U, 3U, 100U, 12'287U, 12'288U, 300'000U}) {
    const Bytes bytes = randomBytes(length, 7);
    std::vector<char> text((length + 2) / 3 * 4);
    EXPECT_EQ(base64::plain::encode(bytes, text.data()), text.data() + text.size());
    EXPECT_EQ(std::string(text.begin(), text.end()), plainEncode(bytes)) << length;

    text.resize(length / 3 * 4);  // whole quanta
    std::vector<char> back(length / 3 * 3);
    EXPECT_TRUE(base64::plain::decode({text.data(), text.size()}, back.data()));
    EXPECT_EQ(Bytes(back.begin(), back.end()), bytes.substr(0, back.size())) << length;
    if (text.empty()) continue;
    text.back() = '-';
    EXPECT_FALSE(base64::plain::decode({text.data(), text.size()}, back.data())) << length;
  }
}

// The code for processors with narrower vectors, which on others sees next to nothing.
TEST(Base64, theNarrowerVectorsAreTheSame) {
  for (const std::size_t length : {0U, 23U, 24U, 28U, 100U, 12'288U, 300'000U}) {
    const Bytes bytes = randomBytes(length, 7);
    const std::string expected = plainEncode(bytes);
    std::vector<char> text(expected.size());
    std::size_t done = 0;
    char* end = base64::avx2::encode(bytes, done, text.data());
    ASSERT_EQ(done % 3, 0U);
    EXPECT_EQ(std::string(text.data(), end), expected.substr(0, done / 3 * 4)) << length;

    std::string inPlace = expected.substr(0, length / 3 * 4);
    done = 0;
    end = base64::avx2::decode(inPlace, done, inPlace.data());
    ASSERT_EQ(done % 4, 0U);
    EXPECT_EQ(std::string(inPlace.data(), end), bytes.substr(0, done / 4 * 3)) << length;
  }
}

// What processors without the widest vectors do, and others with the ends of texts only.
TEST(Base64, escapedEncodingInPiecesIsTheSame) {
  for (const std::size_t length : {0U, 1U, 63U, 6'143U, 6'144U, 6'145U, 12'288U, 48'000U}) {
    for (const Bytes& bytes : {Bytes(length, '\xff'), randomBytes(length, 11)}) {
      const std::string expected = withEscapedSlashes(plainEncode(bytes));
      std::vector<char> text((length + 2) / 3 * 8);
      const char* const end = base64::encodeEscapedInPieces(bytes, text.data());
      ASSERT_EQ(std::string(static_cast<const char*>(text.data()), end), expected) << length;
    }
  }
}

TEST(Base64, everyByteAndEveryPairOfSextetsSurvives) {
  for (int high = 0; high < 64; ++high) {
    std::string text;
    for (const char low : alphabet)
      text += {alphabet[static_cast<std::size_t>(high)], low, low,
               alphabet[static_cast<std::size_t>(high)]};
    const auto bytes = base64::decode(text);
    ASSERT_TRUE(bytes.has_value());
    EXPECT_EQ(base64::encode(*bytes), text);
  }
}

TEST(Base64, anInvalidCharacterAtAnyPlaceFails) {
  for (const std::size_t length : {4U, 28U, 32U, 36U, 64U, 100U, 132U, 300U}) {
    const std::string good = base64::encode(randomBytes(length / 4 * 3, 1));
    ASSERT_EQ(good.size(), length);
    for (std::size_t at = 0; at < length; ++at) {
      for (int c = 0; c < 256; ++c) {
        if (alphabet.find(static_cast<char>(c)) != std::string_view::npos) continue;
        if (c == '=' && at + 1 == length) continue;  // that is padding
        std::string bad = good;
        bad[at] = static_cast<char>(c);
        ASSERT_EQ(base64::decode(bad), std::nullopt) << "character " << c << " at " << at;
      }
    }
  }
}

TEST(Base64, whiteSpaceAndLineBreaksFail) {
  for (const char* text : {"Zm9v\n", "Zm9v\nZm9", " Zm9", "Zm 9", "Zm9v\r\n\r\n"}) {
    EXPECT_EQ(base64::decode(text), std::nullopt) << text;
  }
}

TEST(Base64, aLengthThatIsNoMultipleOfFourFails) {
  for (const char* text : {"Z", "Zm", "Zm9", "Zm9vY", "Zg=", "Zm8"}) {
    EXPECT_EQ(base64::decode(text), std::nullopt) << text;
  }
}

TEST(Base64, paddingStandsOnlyAtTheEnd) {
  for (const char* text :
       {"=", "====", "Z===", "=m9v", "Z=9v", "Zg==Zg==", "Zm8=Zm8=", "Zm9v===="}) {
    EXPECT_EQ(base64::decode(text), std::nullopt) << text;
  }
}

TEST(Base64, bitsLeftOverBeforeThePaddingAreIgnored) {
  EXPECT_EQ(base64::decode("AB=="), Bytes(1, '\0'));
  EXPECT_EQ(base64::decode("AAD="), Bytes(2, '\0'));
  EXPECT_EQ(base64::decode("//=="), Bytes(1, '\xff'));
}

TEST(Base64, theEmptyTextIsEmptyData) { EXPECT_EQ(base64::decode(""), Bytes()); }

TEST(Base64, theUrlAlphabetFails) {
  EXPECT_EQ(base64::decode("-_-_"), std::nullopt);
  EXPECT_EQ(base64::decode(std::string(64, '-')), std::nullopt);
  EXPECT_EQ(base64::decode(std::string(64, '_')), std::nullopt);
}

TEST(Base64, escapedEncodingPutsEverySlashBehindABackslash) {
  for (std::size_t length = 0; length <= 300; ++length) {
    const Bytes bytes = randomBytes(length, 3);
    ASSERT_EQ(encodedEscaped(bytes), "before" + withEscapedSlashes(plainEncode(bytes))) << length;
  }
}

TEST(Base64, escapedEncodingHoldsWhenNothingButSlashesCome) {
  for (std::size_t length = 0; length <= 300; ++length) {
    const Bytes bytes(length, '\xff');
    ASSERT_EQ(encodedEscaped(bytes), "before" + withEscapedSlashes(plainEncode(bytes))) << length;
  }
}

// Each pattern of slashes within a vector, and the lengths of real answers.
TEST(Base64, escapedEncodingHoldsForSlashesMixedIn) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::string text(4 * (random() % 40 + 1), 'A');
    for (char& c : text) c = random() % 3 == 0 ? '/' : alphabet[random() % 64];
    const Bytes bytes = base64::decode(text).value();
    ASSERT_EQ(encodedEscaped(bytes), "before" + withEscapedSlashes(text));
  }
  for (const std::size_t length : {12'287U, 12'288U, 12'289U, 24'576U, 262'144U, 300'001U}) {
    for (const Bytes& bytes : {Bytes(length, '\xff'), randomBytes(length, 9)}) {
      ASSERT_EQ(encodedEscaped(bytes), "before" + withEscapedSlashes(base64::encode(bytes)));
      ASSERT_EQ(base64::decode(base64::encode(bytes)), bytes);
    }
  }
}

}  // namespace
}  // namespace tarnel::test
