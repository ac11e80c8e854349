#include <gtest/gtest.h>

#include <algorithm>

#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlWire.h"

namespace tarnel::test {
namespace {

TEST(ControlWire, aFrameEndsWithItsOnlyLineFeed) {
  const auto frame = ControlWire::encode(
      ControlRequest{.op = ControlOp::stat, .name = "two\nlines\r\n", .label = "\n"});
  ASSERT_TRUE(frame.has_value());
  EXPECT_EQ(std::count(frame->begin(), frame->end(), '\n'), 1);
  EXPECT_EQ(frame->back(), '\n');
  EXPECT_EQ(*frame, "{\"op\":\"stat\",\"name\":\"two\\nlines\\r\\n\",\"label\":\"\\n\"}\n");
}

TEST(ControlWire, aSlashTravelsEscapedAndIsReadInBothForms) {
  EXPECT_EQ(ControlWire::encode(ControlRequest{.op = ControlOp::list, .name = "a/b"}),
            "{\"op\":\"list\",\"name\":\"a\\/b\"}\n");
  for (const char* line : {R"({"op":"list","name":"a\/b"})", R"({"op":"list","name":"a/b"})"}) {
    EXPECT_EQ(ControlWire::decode<ControlRequest>(line)->name, "a/b");
  }
}

TEST(ControlWire, aTextThatIsNotUtf8IsTheEncodersFailure) {
  EXPECT_FALSE(ControlWire::encode(ControlResponse::error("\xff")).has_value());
}

TEST(ControlWire, aReaderHoldsSixteenMebibytes) {
  EXPECT_EQ(ControlWire::maxFrameBytes, 16U * 1024 * 1024);
}

}  // namespace
}  // namespace tarnel::test
