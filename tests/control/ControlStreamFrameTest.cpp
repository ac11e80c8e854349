#include <gtest/gtest.h>

#include <string>

#include "control/ControlStreamFrame.h"

namespace tarnel::test {
namespace {

Bytes bytesOf(std::initializer_list<int> values) {
  Bytes bytes;
  for (const int value : values) bytes.push_back(static_cast<char>(value));
  return bytes;
}

ReceiveBuffer bufferOf(BytesView bytes) {
  ReceiveBuffer buffer;
  buffer.append(bytes);
  return buffer;
}

using Parsed = std::expected<std::optional<StreamFrame>, ControlStreamError>;
const Parsed incomplete = std::optional<StreamFrame>();

TEST(ControlStreamFrame, anEmptyPayloadIsFiveBytes) {
  EXPECT_EQ(ControlStreamFrame::encode(0x45, ""), bytesOf({0x45, 0, 0, 0, 0}));
}

TEST(ControlStreamFrame, theLengthIsBigEndian) {
  const Bytes payload(300, 'p');
  EXPECT_EQ(ControlStreamFrame::encode(0x44, payload),
            bytesOf({0x44, 0x00, 0x00, 0x01, 0x2C}) + payload);
}

TEST(ControlStreamFrame, anIncompleteHeadIsAbsentAndLeavesTheBuffer) {
  for (const Bytes& bytes : {Bytes(), bytesOf({0x44, 0, 0, 0})}) {
    ReceiveBuffer buffer = bufferOf(bytes);
    EXPECT_EQ(ControlStreamFrame::parse(buffer), incomplete);
    EXPECT_EQ(buffer.view(), bytes);
  }
}

TEST(ControlStreamFrame, anIncompletePayloadIsAbsentUntilItsLastByte) {
  const Bytes start = bytesOf({0x44, 0, 0, 0, 3, 0x41, 0x42});
  ReceiveBuffer buffer = bufferOf(start);
  EXPECT_EQ(ControlStreamFrame::parse(buffer), incomplete);
  EXPECT_EQ(buffer.view(), start);
  buffer.append(bytesOf({0x43, 0x45}));
  EXPECT_EQ(ControlStreamFrame::parse(buffer),
            (Parsed(StreamFrame{.tag = 0x44, .payload = "ABC"})));
  EXPECT_EQ(buffer.view(), "\x45");
}

TEST(ControlStreamFrame, aHeadOverTheBoundIsRefusedBeforeItsPayload) {
  const Bytes over = bytesOf({0x44, 0x00, 0x80, 0x00, 0x01});
  ReceiveBuffer buffer = bufferOf(over);
  EXPECT_EQ(ControlStreamFrame::parse(buffer),
            Parsed(std::unexpected(ControlStreamError{.length = 8'388'609})));
  EXPECT_EQ(buffer.view(), over);
}

TEST(ControlStreamFrame, exactlyTheBoundIsAccepted) {
  ReceiveBuffer buffer = bufferOf(bytesOf({0x44, 0x00, 0x80, 0x00, 0x00}));
  EXPECT_EQ(ControlStreamFrame::parse(buffer), incomplete);
  buffer.append(Bytes(8'388'607, 'x'));
  EXPECT_EQ(ControlStreamFrame::parse(buffer), incomplete);
  buffer.append("x");
  const auto frame = ControlStreamFrame::parse(buffer);
  ASSERT_TRUE(frame.has_value() && frame->has_value());
  EXPECT_EQ((*frame)->payload.size(), 8'388'608U);
  EXPECT_EQ(buffer.size(), 0U);
}

TEST(ControlStreamFrame, theLengthIsUnsigned) {
  ReceiveBuffer buffer = bufferOf(bytesOf({0x44, 0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(ControlStreamFrame::parse(buffer),
            Parsed(std::unexpected(ControlStreamError{.length = 4'294'967'295})));
  EXPECT_EQ(description(ControlStreamError{.length = 4'294'967'295}), "oversized(4294967295)");
}

TEST(ControlStreamFrame, twoFramesComeOutInOrder) {
  ReceiveBuffer buffer = bufferOf(ControlStreamFrame::encode(ControlStreamFrame::data, "one") +
                                  ControlStreamFrame::encode(ControlStreamFrame::eof, ""));
  EXPECT_EQ(ControlStreamFrame::parse(buffer),
            (Parsed(StreamFrame{.tag = 0x44, .payload = "one"})));
  EXPECT_EQ(ControlStreamFrame::parse(buffer), (Parsed(StreamFrame{.tag = 0x45, .payload = ""})));
  EXPECT_EQ(ControlStreamFrame::parse(buffer), incomplete);
}

TEST(ControlStreamFrame, anUnknownTagIsReturnedLikeAnyOther) {
  ReceiveBuffer buffer = bufferOf(ControlStreamFrame::encode(0, "z"));
  EXPECT_EQ(ControlStreamFrame::parse(buffer), (Parsed(StreamFrame{.tag = 0, .payload = "z"})));
}

TEST(ControlStreamFrame, theTwoErrorTagsDifferOnlyInCase) {
  EXPECT_EQ(ControlStreamFrame::error, 'X');
  EXPECT_EQ(ControlStreamFrame::fileError, 'x');
  EXPECT_EQ(ControlStreamFrame::header, 'H');
  EXPECT_EQ(ControlStreamFrame::window, 262'144);
}

TEST(ControlStreamFrame, aHeadInABufferOfTheCallersIsThatOfTheFrame) {
  const Bytes frame = ControlStreamFrame::encode(0xF8, Bytes(0x10203, 'x'));
  const ControlStreamFrame::Head head = ControlStreamFrame::readHead(frame);
  EXPECT_EQ(head.tag, 0xF8);
  EXPECT_EQ(head.length, 0x10203U);
  Bytes written(ControlStreamFrame::headBytes, '\0');
  ControlStreamFrame::writeHead(head, written.data());
  EXPECT_EQ(written, frame.substr(0, written.size()));
}

TEST(ControlStreamFrame, noTagBeginsALineOfJson) {
  for (const char first : {'{', ' ', '\t', '\r', '\n'}) {
    EXPECT_TRUE(ControlStreamFrame::beginsLine(first)) << int{first};
  }
  for (const std::uint8_t tag :
       {ControlStreamFrame::data, ControlStreamFrame::eof, ControlStreamFrame::error,
        ControlStreamFrame::header, ControlStreamFrame::fileError}) {
    EXPECT_FALSE(ControlStreamFrame::beginsLine(static_cast<char>(tag))) << tag;
  }
}

TEST(ControlStreamFrame, aWriterIsNotHeldToTheReadersBound) {
  EXPECT_EQ(ControlStreamFrame::encode(0x44, Bytes(8'388'609, 'x')).size(), 8'388'614U);
}

}  // namespace
}  // namespace tarnel::test
