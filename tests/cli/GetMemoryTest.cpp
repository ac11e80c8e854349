// Memory stays flat, whatever a host sends.
#include <fstream>

#include "GetFixture.h"
#include "support/Eventually.h"
#include "support/Sanitized.h"

namespace tarnel::test {
namespace {

class GetMemoryTest : public GetFixture {
 protected:
  // Peak resident memory of the copy, looked at while the host keeps it waiting at the end, when
  // the folder "end" is there.
  std::int64_t peakKib(StreamBytes stream) {
    host.answer({.op = ControlOp::readTreeStream, .path = docs},
                stream.folder("end").reply().stall());
    host.folder("me/Docs/end");
    const Program program({tarnelProgram(), "get", "--socket", host.path(), docs, dest.path()});
    EXPECT_TRUE(eventually([&] { return exists("Docs/end"); }));
    std::ifstream status("/proc/" + std::to_string(program.pid()) + "/status");
    std::int64_t kib = 0;
    for (std::string word; status >> word;) {
      if (word == "VmHWM:") status >> kib;
    }
    EXPECT_GT(kib, 0);
    return kib;
  }
  static constexpr std::int64_t bound = 64 * 1024;
};

TEST_F(GetMemoryTest, theLargestListingFits) {
  if (builtWithSanitizer) GTEST_SKIP() << "SKIPPED: a sanitizer has memory of its own";
  std::string line = R"({"status":"ok","entries":[)";
  for (int i = 0; line.size() < 16'700'000; ++i) {
    if (i > 0) line += ',';
    line +=
        R"({"name":")" + std::to_string(i) +
        R"(","size":0,"mtimeMs":0,"isDirectory":false,"mode":0,"nlink":0,"owner":"","group":""})";
  }
  host.answer({.op = ControlOp::list, .path = docs}, HostReply().answer(line + "]}"));
  EXPECT_LT(peakKib(StreamBytes().file("z", "last").file("100000", "x")), bound);
}

}  // namespace
}  // namespace tarnel::test
