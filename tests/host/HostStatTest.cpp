#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "HostFixture.h"
#include "host/AccountNames.h"

namespace tarnel::test {
namespace {

class HostStat : public HostFixture {
 protected:
  void setTime(const std::string& relative, timespec time) {
    const timespec both[2] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, (temp / relative).c_str(), both, 0), 0);
  }
};

TEST_F(HostStat, aFileIsDescribedAsTheSystemDescribesIt) {
  temp.file(docs("a/file.txt"), "hello");
  ASSERT_EQ(::chmod((temp / docs("a/file.txt")).c_str(), 0640), 0);
  ASSERT_EQ(::link((temp / docs("a/file.txt")).c_str(), (temp / docs("again")).c_str()), 0);
  setTime(docs("a/file.txt"), {.tv_sec = 1'700'000'000, .tv_nsec = 123'999'999});
  const auto answer = stat("me/Docs/a/file.txt");
  EXPECT_EQ(answer.status, ControlResponse::Status::ok);
  ASSERT_TRUE(answer.stat);
  EXPECT_EQ(answer.stat->name, "file.txt");
  EXPECT_EQ(answer.stat->size, 5);
  EXPECT_EQ(answer.stat->mtimeMs, 1'700'000'000'123);
  EXPECT_FALSE(answer.stat->isDirectory);
  EXPECT_EQ(answer.stat->mode, static_cast<std::uint32_t>(S_IFREG) | 0640U);
  EXPECT_EQ(answer.stat->nlink, 2U);
  AccountNames accounts;
  EXPECT_EQ(answer.stat->owner, accounts.owner(::geteuid()));
  EXPECT_FALSE(answer.stat->group.empty());
}

TEST_F(HostStat, timesBefore1970AreRoundedDown) {
  temp.file(docs("old"));
  setTime(docs("old"), {.tv_sec = -2, .tv_nsec = 500'900'000});
  EXPECT_EQ(stat("me/Docs/old").stat->mtimeMs, -1'500);
}

TEST_F(HostStat, theSharesOwnFolderHasTheSharesName) {
  const auto answer = stat("me/Docs");
  ASSERT_TRUE(answer.stat);
  EXPECT_EQ(answer.stat->name, "Docs");
  EXPECT_TRUE(answer.stat->isDirectory);
  EXPECT_EQ(answer.stat->mode & static_cast<std::uint32_t>(S_IFMT),
            static_cast<std::uint32_t>(S_IFDIR));
}

TEST_F(HostStat, aLinkIsWhatItLeadsToUnderItsOwnName) {
  temp.file(docs("target.txt"), "hello");
  temp.link(docs("link"), "target.txt");
  const auto answer = stat("me/Docs/link");
  ASSERT_TRUE(answer.stat);
  EXPECT_EQ(answer.stat->name, "link");
  EXPECT_EQ(answer.stat->size, 5);
}

TEST_F(HostStat, peersAndTheRootHaveNoStatus) {
  expectRefused(stat(""), "no such file");
  expectRefused(stat("me"), "no such file");
}

TEST_F(HostStat, unknownSharesAndPeersAreMissing) {
  expectRefused(stat("me/Other"), "no such file");
  expectRefused(stat("bob/Docs"), "no such file");
  expectRefused(stat("me/docs"), "no such file");
}

TEST_F(HostStat, unsafeLocationsAreMissing) {
  temp.file("outside.txt");
  temp.file(docs("a"));
  for (const auto& location :
       {std::string("me/Docs/../outside.txt"), std::string("me/Docs/.."),
        std::string("me/Docs/./a"), std::string("me/Docs//a"), std::string("me/Docs/a/"),
        std::string("/me/Docs/a"), std::string("me/Docs/a\0b", 11)}) {
    expectRefused(stat(location), "no such file");
  }
}

TEST_F(HostStat, aRefusalNeverHoldsTheName) {
  temp.file(docs("file"));
  expectRefused(stat("me/Docs/is a directory"), "no such file");
  expectRefused(stat("me/Docs/file/not a file"), "not a directory");
}

TEST_F(HostStat, aRequestWithoutALocationIsRefused) {
  expectRefused(ask({.op = ControlOp::stat}), "no location given");
  expectRefused(ask({.op = ControlOp::list}), "no location given");
  expectRefused(ask({.op = ControlOp::read}), "no location given");
}

TEST_F(HostStat, fifosAndLinksThatLeadOutAreMissing) {
  temp.fifo(docs("fifo"));
  temp.file("outside.txt");
  temp.link(docs("out"), "../outside.txt");
  expectRefused(stat("me/Docs/fifo"), "no such file");
  expectRefused(stat("me/Docs/out"), "no such file");
}

TEST_F(HostStat, aShareKeepsServingTheFolderThatWasShared) {
  temp.file(docs("mine"));
  startHost();
  std::filesystem::rename(temp / "docs", temp / "moved");
  temp.folder("docs");
  EXPECT_TRUE(stat("me/Docs/mine").stat);
}

}  // namespace
}  // namespace tarnel::test
