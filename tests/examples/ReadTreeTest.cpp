#include <gmock/gmock.h>

#include "ExampleProgram.h"
#include "control/TreeRecord.h"
#include "support/FileTree.h"
#include "support/ScriptedHost.h"
#include "support/TestHost.h"

namespace tarnel::test {
namespace {

using testing::HasSubstr;

constexpr const char* request = R"({"op":"readTreeStream","name":"me\/Docs"})";

Bytes dir(const std::string& relpath) {
  return TreeRecord::entry({.relpath = relpath, .kind = TreeHeader::Kind::dir}).frame();
}
Bytes file(const std::string& relpath, const std::string& content) {
  return TreeRecord::entry({.relpath = relpath,
                            .kind = TreeHeader::Kind::file,
                            .size = static_cast<std::int64_t>(content.size())})
             .frame() +
         TreeRecord::bytes(content).frame();
}
Bytes end() { return ControlStreamFrame::encode(ControlStreamFrame::eof, ""); }

TEST(ReadTree, printsEveryEntryAndTheTotals) {
  ScriptedHost host;
  host.expect(request,
              HostReply().send(file("a.txt", "hello") + dir("sub") + file("sub/b", "") + end()));
  const ProgramOutcome read = readTree(host.path(), "me/Docs");
  EXPECT_EQ(read.status, 0) << read.err;
  EXPECT_EQ(read.out, "a.txt\nsub/\nsub/b\n3 entries, 5 bytes, 0 failed\n");
}

TEST(ReadTree, whatFailedIsNamedAndTheRestIsRead) {
  ScriptedHost host;
  host.expect(request, HostReply().send(TreeRecord::entry({.relpath = "closed",
                                                           .kind = TreeHeader::Kind::dir,
                                                           .error = "no way in"})
                                            .frame() +
                                        file("a", "x") + TreeRecord::fileFailed("gone").frame() +
                                        file("b", "yz") + end()));
  const ProgramOutcome read = readTree(host.path(), "me/Docs");
  EXPECT_EQ(read.status, 1);
  EXPECT_EQ(read.out, "closed/\na\nb\n3 entries, 3 bytes, 2 failed\n");
  EXPECT_EQ(read.err, "read-tree: closed: no way in\nread-tree: a: gone\n");
}

TEST(ReadTree, aStreamThatFailsOrMeansNothingIsAFailure) {
  ScriptedHost host;
  host.expect(request, HostReply().send(dir("a") + ControlStreamFrame::encode(
                                                       ControlStreamFrame::error, "disk lost")));
  host.expect(request, HostReply().send(ControlStreamFrame::encode('?', "")));
  host.expect(request, HostReply().send(dir("a")).hangUp());
  EXPECT_EQ(readTree(host.path(), "me/Docs").err, "read-tree: disk lost\n");
  EXPECT_THAT(readTree(host.path(), "me/Docs").err, HasSubstr("means nothing"));
  const ProgramOutcome cut = readTree(host.path(), "me/Docs");
  EXPECT_EQ(cut.status, 1);
  EXPECT_THAT(cut.err, HasSubstr("connection to Tarnel closed"));
}

TEST(ReadTree, aHostThatStreamsNoTreesSaysSo) {
  ScriptedHost host;
  host.expect(request,
              HostReply().answer(R"({"status":"error","message":"operation not served"})"));
  const ProgramOutcome read = readTree(host.path(), "me/Docs");
  EXPECT_EQ(read.status, 1);
  EXPECT_EQ(read.err, "read-tree: operation not served\n");
}

TEST(ReadTree, readsAShareOfTheReferenceHost) {
  const FileTree share;
  share.file("a.txt", "hello");
  share.file("sub/b.txt", "more");
  share.file("sub/.DS_Store", "noise");
  const TempDir sockets;
  const TestHost host(sockets / "s", {"--share", "Docs=" + share.path()});
  const ProgramOutcome read = readTree(sockets / "s", "me/Docs");
  EXPECT_EQ(read.status, 0) << read.err;
  EXPECT_EQ(read.out, "a.txt\nsub/\nsub/b.txt\n3 entries, 9 bytes, 0 failed\n");
}

}  // namespace
}  // namespace tarnel::test
