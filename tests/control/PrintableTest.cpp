#include <gtest/gtest.h>

#include "control/Printable.h"

namespace tarnel {
namespace {

TEST(Printable, leavesTextAsItIs) {
  EXPECT_EQ(printable("a b\\c \u00e9\u4e2d\U0001F600"), "a b\\c \u00e9\u4e2d\U0001F600");
  EXPECT_EQ(printable(""), "");
}

TEST(Printable, escapesWhatControlsATerminal) {
  EXPECT_EQ(printable("a\nb\x1b[31m\x7f"), "a\\x0ab\\x1b[31m\\x7f");
  EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(printable("\xc2\x9b"
                      "31m\xc2\x80\xc2\xa0"),
            "\\xc2\\x9b31m\\xc2\\x80\xc2\xa0");
}

TEST(Printable, escapesEveryHighByteOfWhatIsNotUtf8) {
  EXPECT_EQ(printable("a\xff\xc3\xa9"), "a\\xff\\xc3\\xa9");
  EXPECT_EQ(printable("\xc2"), "\\xc2");
}

}  // namespace
}  // namespace tarnel
