#include <gtest/gtest.h>

#include <string>

#include "control/TreeRecord.h"

namespace tarnel::test {
namespace {

using namespace std::string_literals;

TreeHeader fileHeader() {
  return {.relpath = "a/b", .kind = TreeHeader::Kind::file, .mode = 420, .size = 3};
}

// What a reader makes of a record's frame.
std::optional<TreeFrame> readBack(const TreeRecord& record) {
  ReceiveBuffer buffer;
  buffer.append(record.frame());
  auto cut = ControlStreamFrame::parse(buffer);
  if (!cut || !*cut || buffer.size() != 0) return std::nullopt;
  return TreeFrame::of((*cut)->tag, std::move((*cut)->payload));
}

TEST(TreeRecord, anEntryIsAHeaderFrameWithItsJson) {
  const std::string json = R"({"relpath":"a\/b","kind":"file","mode":420,"size":3})";
  EXPECT_EQ(TreeRecord::entry(fileHeader()).frame(), ControlStreamFrame::encode('H', json));
}

TEST(TreeRecord, bytesAreADataFrameAlsoWhenEmpty) {
  EXPECT_EQ(TreeRecord::bytes("").frame(), "\x44\0\0\0\0"s);
  EXPECT_EQ(TreeRecord::bytes("a\0\xFF"s).frame(), "\x44\0\0\0\x03"s + "a\0\xFF"s);
}

TEST(TreeRecord, aFailedFileIsAFileErrorFrameWithItsMessage) {
  EXPECT_EQ(TreeRecord::fileFailed("no").frame(), "\x78\0\0\0\x02no"s);
}

TEST(TreeRecord, aHeaderThatCannotBeEncodedIsAnEmptyFrameThatItsReaderRefuses) {
  TreeHeader header = fileHeader();
  header.relpath = "\xFF";
  EXPECT_EQ(TreeRecord::entry(header).frame(), "\x48\0\0\0\0"s);
  EXPECT_EQ(readBack(TreeRecord::entry(header)), std::nullopt);
}

TEST(TreeRecord, everyRecordIsReadBackAsItWas) {
  TreeHeader failed = fileHeader();
  failed.error = "permission denied";
  for (const TreeRecord& record :
       {TreeRecord::entry(fileHeader()), TreeRecord::entry(failed), TreeRecord::bytes(""),
        TreeRecord::bytes("\xFF\0\n"s), TreeRecord::fileFailed(""), TreeRecord::fileFailed("no")}) {
    EXPECT_EQ(readBack(record), TreeFrame{record});
  }
}

TEST(TreeRecord, areEqualByCaseAndPayload) {
  EXPECT_EQ(TreeRecord::fileFailed("\u00e9"), TreeRecord::fileFailed("e\u0301"));
  EXPECT_NE(TreeRecord::bytes("\u00e9"), TreeRecord::bytes("e\u0301"));
  EXPECT_NE(TreeRecord::bytes("no"), TreeRecord::fileFailed("no"));
  EXPECT_EQ(TreeFrame{TreeError{"\u00e9"}}, TreeFrame{TreeError{"e\u0301"}});
  EXPECT_NE(TreeFrame{TreeError{"a"}}, TreeFrame{TreeError{"b"}});
  EXPECT_NE(TreeFrame{TreeError{""}}, TreeFrame{TreeEof{}});
}

TEST(TreeFrame, anEndIsAnEndAlsoWithAPayload) {
  EXPECT_EQ(TreeFrame::of('E', ""), TreeFrame{TreeEof{}});
  EXPECT_EQ(TreeFrame::of('E', "more"), TreeFrame{TreeEof{}});
}

TEST(TreeFrame, theMessagesOfBothErrorsAreRepaired) {
  EXPECT_EQ(TreeFrame::of('x', "\xFF\x41"), TreeFrame{TreeRecord::fileFailed("\uFFFDA")});
  EXPECT_EQ(TreeFrame::of('X', "\xFF\x41"), TreeFrame{TreeError{"\uFFFDA"}});
}

TEST(TreeFrame, aHeaderThatDoesNotDecodeGivesNone) {
  for (const char* bad : {
           "",
           "{}",
           "not json",
           R"({"relpath":"a","kind":"dir"})",
           R"({"relpath":"a","kind":"link","mode":0,"size":0})",
           R"({"relpath":"a","kind":"dir","mode":0,"size":0} x)",
       }) {
    EXPECT_EQ(TreeFrame::of('H', bad), std::nullopt) << bad;
  }
}

TEST(TreeFrame, anUnknownTagGivesNone) {
  for (const int tag : {0x5A, 0x00, 0xFF, 0x64, 0x65, 0x68}) {
    EXPECT_EQ(TreeFrame::of(static_cast<std::uint8_t>(tag), ""), std::nullopt) << tag;
  }
}

}  // namespace
}  // namespace tarnel::test
