// What a control source asks, and what it makes of the answer.
#include "ControlSourceTest.h"

namespace tarnel::test {
namespace {

class ControlFabricSourceOperations : public ControlSourceTest {};

TEST_F(ControlFabricSourceOperations, sharesAreTheLocalOnesThenTheRemoteOnes) {
  host.expect(R"({"op":"shares"})")
      .answer(R"({"status":"ok",)"
              R"("shares":[{"name":"Docs","isRemote":false},{"name":"Music","isRemote":true}],)"
              R"("remoteShares":[{"peer":"p","name":"Films","isRemote":true}]})");
  const std::vector<FabricShare> expected = {{.peer = "me", .name = "Docs"},
                                             {.peer = "me", .name = "Music", .isRemote = true},
                                             {.peer = "p", .name = "Films", .isRemote = true}};
  EXPECT_EQ(shareListing(), expected);
}

TEST_F(ControlFabricSourceOperations, sharesAreNeitherSortedNorMerged) {
  host.expect(R"({"op":"shares"})")
      .answer(R"({"status":"ok",)"
              R"("shares":[{"name":"b","isRemote":false},{"name":"a","isRemote":false},)"
              R"({"name":"b","isRemote":false},{"name":"x\/y","isRemote":false}]})");
  const auto shares = shareListing();
  ASSERT_TRUE(shares);
  ASSERT_EQ(shares->size(), 4u);
  EXPECT_EQ(shares->at(0).name, "b");
  EXPECT_EQ(shares->at(1).name, "a");
  EXPECT_EQ(shares->at(2).name, "b");
  EXPECT_EQ(shares->at(3).name, "x/y");
}

TEST_F(ControlFabricSourceOperations, remoteSharesAloneAreAListing) {
  host.expect(R"({"op":"shares"})")
      .answer(R"({"status":"ok","remoteShares":[{"peer":"p","name":"n","isRemote":false}]})");
  EXPECT_EQ(shareListing(), (std::vector<FabricShare>{{.peer = "p", .name = "n"}}));
}

TEST_F(ControlFabricSourceOperations, sharesWithNeitherListAreAnEmptyListing) {
  host.expect(R"({"op":"shares"})").answer(R"({"status":"ok"})");
  EXPECT_EQ(shareListing(), std::vector<FabricShare>{});
  host.expect(R"({"op":"shares"})").answer(R"({"status":"error","message":"not a file"})");
  EXPECT_EQ(shareListing(), std::vector<FabricShare>{});
}

TEST_F(ControlFabricSourceOperations, statCopiesTheStatusAndIsNeverALink) {
  host.expect(R"({"op":"stat","name":"me\/Docs\/a"})")
      .answer(R"({"status":"ok","stat":{"name":"a","size":5000,"mtimeMs":-7,"isDirectory":false,)"
              R"("mode":33188,"nlink":2,"owner":"o","group":"g","isSymlink":true}})");
  const FileStat expected{.name = "a",
                          .size = 5000,
                          .mtimeMs = -7,
                          .isDirectory = false,
                          .mode = 33188,
                          .nlink = 2,
                          .owner = "o",
                          .group = "g",
                          .isSymlink = false};
  EXPECT_EQ(stat("me/Docs/a"), expected);
}

TEST_F(ControlFabricSourceOperations, listKeepsTheHostsOrder) {
  host.expect(R"({"op":"list","name":"me\/Docs"})")
      .answer(R"({"status":"ok","entries":[)"
              R"({"name":"b","size":1,"mtimeMs":2,"isDirectory":false,"mode":3,"nlink":4,)"
              R"("owner":"o","group":"g"},)"
              R"({"name":"a\/b","size":0,"mtimeMs":0,"isDirectory":true,"mode":0,"nlink":0,)"
              R"("owner":"","group":""}]})");
  const auto entries = list("me/Docs");
  ASSERT_TRUE(entries);
  const FileStat first{.name = "b",
                       .size = 1,
                       .mtimeMs = 2,
                       .isDirectory = false,
                       .mode = 3,
                       .nlink = 4,
                       .owner = "o",
                       .group = "g"};
  EXPECT_EQ(*entries, (std::vector<FileStat>{first, {.name = "a/b", .isDirectory = true}}));
}

TEST_F(ControlFabricSourceOperations, anEmptyListOfEntriesIsAnEmptyDirectory) {
  host.expect(R"({"op":"list","name":"me\/Docs"})").answer(R"({"status":"ok","entries":[]})");
  EXPECT_EQ(list("me/Docs"), std::vector<FileStat>{});
}

TEST_F(ControlFabricSourceOperations, readDecodesTheBytes) {
  host.expect(R"({"op":"read","name":"me\/Docs\/a","offset":7,"length":262144})")
      .answer(R"({"status":"ok","dataBase64":"aGVsbG8="})");
  EXPECT_EQ(read("me/Docs/a", 7, 262'144), "hello");
}

TEST_F(ControlFabricSourceOperations, readDecodesEscapedSlashesAndBareOnes) {
  const Bytes bytes("\xff\xff\xff\x00\x3f", 5);
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":5})")
      .answer(R"({"status":"ok","dataBase64":"\/\/\/\/AD8="})");
  EXPECT_EQ(read("p/s", 0, 5), bytes);
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":5})")
      .answer(R"({"status":"ok","dataBase64":"////AD8="})");
  EXPECT_EQ(read("p/s", 0, 5), bytes);
}

TEST_F(ControlFabricSourceOperations, anEmptyDataTextIsNoBytesAndNoError) {
  host.expect(R"({"op":"read","name":"p\/s","offset":9,"length":5})")
      .answer(R"({"status":"ok","dataBase64":""})");
  EXPECT_EQ(read("p/s", 9, 5), Bytes());
}

TEST_F(ControlFabricSourceOperations, successIsThePayloadWhateverTheStatusSays) {
  host.expect(R"({"op":"stat","name":"p\/s"})")
      .answer(R"({"status":"error","message":"is a directory","stat":{"name":"s","size":1,)"
              R"("mtimeMs":2,"isDirectory":false,"mode":0,"nlink":0,"owner":"","group":""}})");
  EXPECT_EQ(stat("p/s"), (FileStat{.name = "s", .size = 1, .mtimeMs = 2}));
  host.expect(R"({"op":"list","name":"p\/s"})")
      .answer(R"({"status":"review","message":"no","entries":[]})");
  EXPECT_EQ(list("p/s"), std::vector<FileStat>{});
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})")
      .answer(R"({"status":"error","dataBase64":"eA=="})");
  EXPECT_EQ(read("p/s", 0, 1), "x");
}

TEST_F(ControlFabricSourceOperations, readsGoByAConnectionOfTheirOwn) {
  host.answerWith([](const std::string& line) {
    HostReply reply;
    if (line.find("read") != std::string::npos) return reply.stall().answer(R"({"status":"ok"})");
    return reply.answer(R"({"status":"ok","entries":[]})");
  });
  Awaited<FabricSource::Reply<Bytes>> stalled;
  source->read("p/s", 0, 1, stalled.reply());
  ASSERT_TRUE(host.waitForRequests(1));
  EXPECT_EQ(list("p/s"), std::vector<FileStat>{});
  EXPECT_FALSE(stalled.hasCome());
  host.release();
  (void)stalled.wait();
  EXPECT_EQ(host.connections(), 2u);
}

TEST_F(ControlFabricSourceOperations, repliesFromAThreadOfItsOwn) {
  host.expect(R"({"op":"shares"})").answer(R"({"status":"ok"})");
  Awaited<FabricSource::Reply<std::vector<FabricShare>>> reply;
  source->shareListing(reply.reply());
  (void)reply.wait();
  EXPECT_NE(reply.replier(), std::this_thread::get_id());
}

}  // namespace
}  // namespace tarnel::test
