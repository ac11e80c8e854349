// Copies that are interrupted, and what is shown on a terminal meanwhile.
#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>

#include "GetFixture.h"
#include "control/UniqueFd.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;

class GetSignalTest : public GetFixture {
 protected:
  [[nodiscard]] std::vector<std::string> command(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {tarnelProgram(), "get", "--socket", host.path()});
    return arguments;
  }
  // Ends the copy by the signal; everything in the destination then.
  std::vector<std::string> interrupt(Program& program, int number) {
    program.signal(number);
    const ProgramOutcome outcome = program.wait();  // far less than the host's deadline
    EXPECT_EQ(outcome.status, 128 + number);
    EXPECT_EQ(outcome.err, "tarnel: interrupted\n");
    return copied();
  }
  [[nodiscard]] bool isPending() const {
    const auto all = copied();
    return std::any_of(all.begin(), all.end(), [](const std::string& path) {
      return path.find(".tarnel-get-") != std::string::npos;
    });
  }
  // The command's output on a terminal of this many columns.
  ProgramOutcome onTerminal(int columns) {
    const std::string line = "stty cols " + std::to_string(columns) + "; \"$T\" get me/Docs \"$D\"";
    return runProgram(
        {"script", "-qec", line, "/dev/null"},
        {.environment = {
             {"TARNEL_SOCKET", host.path()}, {"T", tarnelProgram()}, {"D", dest.path()}}});
  }
  static bool hasTerminals() {
    return runProgram({"sh", "-c", "command -v script && command -v stty"}).status == 0;
  }
};

TEST_F(GetSignalTest, aSignalEndsACopyWhileTheHostIsSilent) {
  host.file("me/Docs/whole", "whole");
  host.file("me/Docs/part", "0123456789");
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    host.answer(
        {.op = ControlOp::readTreeStream, .path = docs},
        StreamBytes().file("whole", "whole").announce("part", 10).data("01234").reply().stall());
    Program program(command({docs, dest.path()}));
    ASSERT_TRUE(eventually([&] { return isPending() && exists("Docs/whole"); }));
    EXPECT_THAT(interrupt(program, number), ElementsAre("Docs", "Docs/whole"));
    std::filesystem::remove_all(dest / "Docs");
  }
}

TEST_F(GetSignalTest, aSignalEndsACopyThatWaitsForAnAnswer) {
  host.answer({.op = ControlOp::readTreeStream, .path = docs}, HostReply().stall());
  Program program(command({docs, dest.path()}));
  ASSERT_TRUE(host.waitUntilAsked({.op = ControlOp::readTreeStream, .path = docs}));
  EXPECT_THAT(interrupt(program, SIGINT), ElementsAre("Docs"));
}

TEST_F(GetSignalTest, anInterruptedCopyIsNotTakenForAWholeOne) {
  host.folder("me/Docs/sub");
  host.file("me/Docs/sub/part", "0123456789");
  host.answer({.op = ControlOp::readTreeStream, .path = docs},
              StreamBytes().folder("sub").reply().stall());
  {
    Program program(command({docs, dest.path()}));
    ASSERT_TRUE(eventually([&] { return exists("Docs/sub"); }));
    EXPECT_THAT(interrupt(program, SIGINT), ElementsAre("Docs", "Docs/sub"));
  }
  host.answer({.op = ControlOp::readTreeStream, .path = "me/Docs/sub"},
              StreamBytes().file("part", "0123456789").eof().reply());
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/sub/part"), "0123456789");
}

TEST_F(GetSignalTest, aResumedCopyThatIsInterruptedIsNotTakenForAWholeOne) {
  host.folder("me/Docs/one");
  host.file("me/Docs/one/f", "hello");
  host.folder("me/Docs/two");
  host.file("me/Docs/two/g", "world");
  std::filesystem::create_directories(dest / "Docs/one");
  std::ofstream(dest / "Docs/one/mine") << "stays";
  host.answer({.op = ControlOp::readStream, .path = "me/Docs/one/f"}, HostReply().stall());
  {
    Program program(command({"--resume", docs, dest.path()}));
    ASSERT_TRUE(host.waitUntilAsked({.op = ControlOp::readStream, .path = "me/Docs/one/f"}));
    interrupt(program, SIGINT);
  }
  streamFile("me/Docs/one/f", StreamBytes().data("hello").eof());
  host.answer({.op = ControlOp::readTreeStream, .path = "me/Docs/two"},
              StreamBytes().file("g", "world").eof().reply());
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/one/f"), "hello");
  EXPECT_EQ(content("Docs/two/g"), "world");
}

TEST_F(GetSignalTest, aSignalEndsAReportThatNobodyReads) {
  StreamBytes stream;
  for (int i = 0; i < 100; ++i) stream.folder("../" + std::string(4'000, 'n'));
  streamDocs(stream.eof());
  const std::string pipe = dest / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const UniqueFd reader(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  ASSERT_TRUE(reader.valid());
  Program program(
      {"sh", "-c", "exec \"$T\" get --json me/Docs \"$D\" > \"$D/pipe\""},
      {.environment = {
           {"TARNEL_SOCKET", host.path()}, {"T", tarnelProgram()}, {"D", dest.path()}}});
  const auto waiting = [&] {
    int bytes = 0;
    return ::ioctl(reader.get(), FIONREAD, &bytes) == 0 ? bytes : -1;
  };
  constexpr int muchOfAPipe = 60'000;  // of 65,536; the rest needs another write
  ASSERT_TRUE(eventually([&] { return waiting() > muchOfAPipe; }));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait().status, 128 + SIGINT);
}

TEST_F(GetSignalTest, aTerminalShowsALineThatIsGoneInTheEnd) {
  if (!hasTerminals()) GTEST_SKIP() << "SKIPPED: no script(1)";
  host.file("me/Docs/a", std::string(2'048, 'x'));
  streamDocs(StreamBytes().file("a", std::string(2'048, 'x')).eof());
  const ProgramOutcome shown = onTerminal(80);
  EXPECT_EQ(shown.status, 0);
  EXPECT_THAT(shown.out, HasSubstr("\r2.0 KiB of 2.0 KiB, 0 of 1 file, "));
  EXPECT_EQ(shown.out.find('\n'), std::string::npos);
  EXPECT_TRUE(shown.out.ends_with(" \r")) << shown.out;
}

TEST_F(GetSignalTest, theLineIsNarrowerThanTheTerminal) {
  if (!hasTerminals()) GTEST_SKIP() << "SKIPPED: no script(1)";
  host.file("me/Docs/a", std::string(2'048, 'x'));
  streamDocs(StreamBytes().file("a", std::string(2'048, 'x')).eof());
  const ProgramOutcome shown = onTerminal(12);
  EXPECT_EQ(shown.status, 0);
  for (std::size_t at = 0; at < shown.out.size();) {
    const std::size_t end = std::min(shown.out.find('\r', at), shown.out.size());
    EXPECT_LT(end - at, 12U) << shown.out;
    at = end + 1;
  }
}

TEST_F(GetSignalTest, failuresAreListedBelowTheLine) {
  if (!hasTerminals()) GTEST_SKIP() << "SKIPPED: no script(1)";
  host.file("me/Docs/a", "hello");
  streamDocs(StreamBytes().announce("a", 5).data("hell").eof());
  EXPECT_THAT(onTerminal(80).out, HasSubstr(" \rtarnel: me/Docs/a: EIO (fewer bytes"));
}

}  // namespace
}  // namespace tarnel::test
