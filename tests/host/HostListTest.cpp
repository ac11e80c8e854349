#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <thread>

#include "HostFixture.h"
#include "host/DirectoryLister.h"

#if defined(__linux__)
#include <sys/fsuid.h>
#endif

namespace tarnel::test {
namespace {

using testing::Test;
using Names = std::vector<std::string>;

class HostList : public HostFixture {
 protected:
  // The answer's bytes, with the line feed.
  std::string rawList(const std::string& location) {
    RawClient client(socketPath());
    return client.ask(R"({"op":"list","name":")" + location + "\"}").value_or("") + "\n";
  }
  void startWithAnswerLimit(std::size_t bytes) {
    host = nullptr;
    auto chosen = options();
    chosen.maxAnswerBytes = bytes;
    startHost(std::move(chosen));
  }
};

TEST_F(HostList, anEmptyFolderIsAnEmptyListNotAnAbsentOne) {
  const auto answer = list("me/Docs");
  EXPECT_EQ(answer.status, ControlResponse::Status::ok);
  ASSERT_TRUE(answer.entries);
  EXPECT_TRUE(answer.entries->empty());
  EXPECT_FALSE(answer.names);
}

TEST_F(HostList, entriesAreWhatStatSaysOfEach) {
  temp.file(docs("d/one.txt"), "1");
  temp.file(docs("d/two.txt"), "22");
  temp.folder(docs("d/sub"));
  temp.link(docs("d/link"), "two.txt");
  const auto answer = list("me/Docs/d");
  ASSERT_TRUE(answer.entries);
  EXPECT_EQ(answer.entries->size(), 4U);
  for (const auto& entry : *answer.entries) {
    EXPECT_EQ(entry, stat("me/Docs/d/" + entry.name).stat) << entry.name;
  }
}

TEST_F(HostList, namesOnlyIsAnsweredInNames) {
  temp.file(docs("file"));
  temp.folder(docs("folder"));
  temp.link(docs("link"), "folder");
  const auto answer = ask({.op = ControlOp::list, .name = "me/Docs", .namesOnly = true});
  EXPECT_FALSE(answer.entries);
  ASSERT_TRUE(answer.names);
  std::map<std::string, bool> found;
  for (const auto& name : *answer.names) found[name.name] = name.isDirectory;
  EXPECT_EQ(found,
            (std::map<std::string, bool>{{"file", false}, {"folder", true}, {"link", true}}));
}

TEST_F(HostList, namesOnlySetToFalseIsAFullListing) {
  temp.file(docs("file"));
  const auto answer = ask({.op = ControlOp::list, .name = "me/Docs", .namesOnly = false});
  EXPECT_TRUE(answer.entries);
  EXPECT_FALSE(answer.names);
}

TEST_F(HostList, aLimitBoundsTheNumberOfEntries) {
  for (const auto* name : {"a", "b", "c", "d"}) temp.file(docs(name));
  for (const std::int64_t limit : {0, 1, 3, 4, 9}) {
    const auto answer = ask({.op = ControlOp::list, .name = "me/Docs", .limit = limit});
    ASSERT_TRUE(answer.entries);
    EXPECT_EQ(answer.entries->size(), static_cast<std::size_t>(std::min<std::int64_t>(limit, 4)));
  }
  expectRefused(ask({.op = ControlOp::list, .name = "me/Docs", .limit = -1}), "invalid limit");
}

TEST_F(HostList, linksThatAreNotFollowedAreLeftOut) {
  temp.file("outside.txt");
  temp.file(docs("a/file.txt"));
  temp.link(docs("a/good"), "file.txt");
  temp.link(docs("a/absolute"), temp / docs("a/file.txt"));
  temp.link(docs("a/out"), "../../outside.txt");
  temp.link(docs("a/dangling"), "nowhere");
  temp.link(docs("a/circle"), "circle");
  temp.link(docs("a/here"), ".");
  temp.link(docs("a/up"), "..");
  EXPECT_EQ(names("me/Docs/a"), (Names{"file.txt", "good"}));
}

TEST_F(HostList, aListingBehindALinkLeavesOutTheLinksBack) {
  temp.link(docs("a/l1"), "../b");
  temp.link(docs("b/l2"), "../a");
  temp.file(docs("b/file"));
  EXPECT_EQ(names("me/Docs/a"), (Names{"l1"}));
  EXPECT_EQ(names("me/Docs/b"), (Names{"file", "l2"}));
  EXPECT_EQ(names("me/Docs/a/l1"), (Names{"file"}));
}

TEST_F(HostList, aFolderThatIsReplacedMeanwhileIsListedWholeOrRefused) {
  for (int i = 0; i < 50; ++i) {
    temp.file(docs("a/f" + std::to_string(i)));
    temp.file(docs("b/g" + std::to_string(i)));
  }
  temp.link(docs("a/l"), "f0");
  temp.link(docs("b/m"), "g0");
  startHost();
  std::atomic<bool> enough = false;
  std::thread replacer([&] {
    const auto give = [&](const char* from, const char* to) {
      ::rename((temp / docs(from)).c_str(), (temp / docs(to)).c_str());
    };
    while (!enough) {
      for (const char* folder : {"a", "b"}) {
        give(folder, "d");
        give("d", folder);
      }
    }
  });
  const std::string gone = R"({"status":"error","message":"no such file"})";
  RawClient client(socketPath());
  for (int i = 0; i < 2'000; ++i) {
    const auto answer = client.ask(R"({"op":"list","namesOnly":true,"name":"me/Docs/d"})");
    const auto has = [&](const char* name) {
      return answer && answer->find(std::string("\"") + name + "\"") != std::string::npos;
    };
    EXPECT_TRUE(answer == gone || (has("f0") && has("l")) || (has("g0") && has("m")))
        << answer.value_or("hung up");
  }
  enough = true;
  replacer.join();
}

TEST_F(HostList, aTreeOfMutualLinksHasAnEnd) {
  for (const std::string from : {"a", "b", "c"}) {
    for (const std::string to : {"a", "b", "c"}) temp.link(docs(from + "/" + to), "../" + to);
  }
  int folders = 0;
  const std::function<void(const std::string&)> walk = [&](const std::string& location) {
    ASSERT_LT(++folders, 100);
    for (const auto& name : names(location)) walk(location + "/" + name);
  };
  walk("me/Docs");
  EXPECT_EQ(folders, 1 + 3 + 3 * 2 + 3 * 2 * 1);
}

TEST_F(HostList, everythingButFilesAndFoldersIsLeftOut) {
  temp.fifo(docs("fifo"));
  temp.link(docs("toFifo"), "fifo");
  temp.file(docs("file"));
  EXPECT_EQ(names("me/Docs"), (Names{"file"}));
}

TEST_F(HostList, namesThatAreNotUtf8AreLeftOutAndCountedInOneLogLine) {
  for (const auto* name : {"bad-\xff", "bad-\xc3", "bad-\xed\xa0\x80", "good-\xc3\xa9"}) {
    const UniqueFd made(::open((temp / docs(name)).c_str(), O_CREAT | O_WRONLY, 0644));
    if (!made.valid()) GTEST_SKIP() << "the file system takes only names in UTF-8";
  }
  EXPECT_EQ(names("me/Docs"), (Names{"good-\xc3\xa9"}));
  EXPECT_EQ(log(), (Names{"left out 3 names that are not valid UTF-8 in me/Docs"}));
}

TEST_F(HostList, nothingIsLoggedWhenNoNameIsLeftOut) {
  temp.file(docs("file"));
  EXPECT_EQ(names("me/Docs"), (Names{"file"}));
  EXPECT_TRUE(log().empty());
}

TEST_F(HostList, theLogShowsNoControlCharacters) {
  temp.folder(docs("line\nfeed\x1b"));
  const UniqueFd made(
      ::open((temp / docs("line\nfeed\x1b/\xff")).c_str(), O_CREAT | O_WRONLY, 0644));
  if (!made.valid()) GTEST_SKIP() << "the file system takes only names in UTF-8";
  EXPECT_EQ(names("me/Docs/line\nfeed\x1b"), Names{});
  EXPECT_EQ(log(),
            (Names{"left out 1 name that is not valid UTF-8 in me/Docs/line\\x0afeed\\x1b"}));
}

TEST_F(HostList, theLogShowsNoneOfTheSecondSetOfControlCharacters) {
  // U+0080, U+009B and U+009F; then what only looks like them: U+00A0, U+00DB and U+211B.
  const std::string name = "\xc2\x80-\xc2\x9b-\xc2\x9f|\xc2\xa0-\xc3\x9b-\xe2\x84\x9b";
  temp.folder(docs(name));
  const UniqueFd made(::open((temp / docs(name + "/\xff")).c_str(), O_CREAT | O_WRONLY, 0644));
  if (!made.valid()) GTEST_SKIP() << "the file system takes only names in UTF-8";
  EXPECT_EQ(names("me/Docs/" + name), Names{});
  EXPECT_EQ(log(), (Names{"left out 1 name that is not valid UTF-8 in me/Docs/"
                          "\\xc2\\x80-\\xc2\\x9b-\\xc2\\x9f|\xc2\xa0-\xc3\x9b-\xe2\x84\x9b"}));
}

TEST_F(HostList, namesWithQuotesBackslashesAndLineFeedsTravelUnchanged) {
  const Names strange{"a\nb", "a\"b", "a\\b", "\xf0\x9f\x98\x80", "\x01", "e\xcc\x81", "\xc3\xa9"};
  for (const auto& name : strange) temp.file(docs(name), name);
  auto expected = strange;
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(names("me/Docs"), expected);
  for (const auto& name : strange) EXPECT_EQ(bytes("me/Docs/" + name), name);
}

#if defined(__linux__)
TEST_F(HostList, aFolderThatMayBeReadButNotEnteredIsRefusedAndNotEmpty) {
  temp.file(docs("closed/file"));
  ASSERT_EQ(::chmod((temp / docs("closed")).c_str(), 0444), 0);
  const UniqueFd root(::open((temp / "docs").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const IsOwnMount none;
  const BeneathResolver resolver(root.get(), none);
  AccountNames accounts;
  std::thread asNobody([&] {
    if (::geteuid() == 0) ::setfsuid(65'534);  // this thread's alone
    const auto listed =
        DirectoryLister(resolver, accounts, "closed", {.maxAnswerBytes = 4'096}).run();
    ASSERT_FALSE(listed) << listed->line;
    EXPECT_EQ(listed.error(), Refusal::permissionDenied);
  });
  asNobody.join();
  ASSERT_EQ(::chmod((temp / docs("closed")).c_str(), 0755), 0);
}
#endif

TEST_F(HostList, aFileIsNotADirectory) {
  temp.file(docs("file"));
  expectRefused(list("me/Docs/file"), "not a directory");
  expectRefused(list("me/Docs/file/x"), "not a directory");
  expectRefused(list("me/Docs/nothing"), "no such file");
  expectRefused(list("me"), "no such file");
}

TEST_F(HostList, aLineOfExactlyTheLimitIsAnsweredAndOneByteMoreIsRefused) {
  for (int i = 0; i < 20; ++i) temp.file(docs("file" + std::to_string(i)));
  startHost();
  const std::size_t length = rawList(R"(me\/Docs)").size();
  ASSERT_GT(length, 1'000U);
  startWithAnswerLimit(length);
  EXPECT_EQ(names("me/Docs").size(), 20U);
  startWithAnswerLimit(length - 1);
  EXPECT_TRUE(log().empty());
  expectRefused(list("me/Docs"), "listing too large for one answer");
  EXPECT_EQ(log(), (Names{"me/Docs: listing too large for one answer"}));
  // The connection and smaller questions are as before.
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs", .limit = 19}).entries->size(), 19U);
}

TEST_F(HostList, aListingOverSixteenMebibytesIsRefused) {
  const std::string longName(240, 'n');
  const UniqueFd folder(::open((temp / "docs").c_str(), O_RDONLY | O_DIRECTORY));
  const UniqueFd first(::openat(folder.get(), "0", O_CREAT | O_WRONLY, 0644));
  constexpr int count = 50'000;  // of about 360 bytes
  for (int i = 1; i <= count; ++i) {
    const std::string name = longName + std::to_string(i);
    // Links to one file are the cheapest way to many names; a new file when it has enough of them.
    if (::linkat(folder.get(), "0", folder.get(), name.c_str(), 0) != 0) {
      const UniqueFd made(::openat(folder.get(), name.c_str(), O_CREAT | O_WRONLY, 0644));
      ASSERT_TRUE(made.valid());
    }
  }
  expectRefused(list("me/Docs"), "listing too large for one answer");
  const auto namesOnly = ask({.op = ControlOp::list, .name = "me/Docs", .namesOnly = true});
  ASSERT_TRUE(namesOnly.names);
  EXPECT_EQ(namesOnly.names->size(), static_cast<std::size_t>(count) + 1);
}

}  // namespace
}  // namespace tarnel::test
