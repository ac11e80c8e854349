// Folders offered and withdrawn while the host runs.
#include <sys/socket.h>

#include <atomic>
#include <thread>

#include "SharingFixture.h"
#include "support/OpenDescriptors.h"

namespace tarnel::test {
namespace {

TEST_F(SharingTest, aFolderWithoutSecretsIsSharedAtOnce) {
  temp.file("music/song", "la");
  EXPECT_EQ(share("Music", "music"), ControlResponse::ok());
  EXPECT_EQ(sharedNames(), (Names{"Docs", "Music"}));
  EXPECT_EQ(bytes("me/Music/song"), "la");
}

TEST_F(SharingTest, aWithdrawnShareIsGone) {
  temp.file("music/song", "la");
  (void)share("Music", "music");
  EXPECT_EQ(owner->ask({.op = ControlOp::unshare, .name = "Music"}), ControlResponse::ok());
  EXPECT_EQ(sharedNames(), Names{"Docs"});
  expectMissing("me/Music/song");
  expectMissing("me/Music");
  EXPECT_EQ(share("Music", "docs"), ControlResponse::ok()) << "the name is free again";
}

TEST_F(SharingTest, aShareOfTheBeginningCanBeWithdrawnToo) {
  EXPECT_EQ(owner->ask({.op = ControlOp::unshare, .name = "Docs"}), ControlResponse::ok());
  EXPECT_EQ(sharedNames(), Names{});
}

TEST_F(SharingTest, allOfTheHostsOwnCanBeWithdrawnTogether) {
  auto chosen = options();
  chosen.socketPath = temp / "s2";
  chosen.shares.push_back({.name = "More", .folder = temp / "docs"});
  chosen.shares.push_back({.peer = "bob", .name = "Films", .folder = temp / "docs"});
  host.reset();
  owner.reset();
  startHost(chosen);
  Owner other(chosen.socketPath);
  EXPECT_EQ(other.ask({.op = ControlOp::unshare, .all = true}), ControlResponse::ok());
  const auto left = other.ask({.op = ControlOp::shares});
  EXPECT_EQ(left.shares, std::vector<SourceShare>{});
  EXPECT_EQ(left.remoteShares, (std::vector<RemoteShareInfo>{{"bob", "Films", true}}));
}

TEST_F(SharingTest, onlyTheHostsOwnSharesCanBeWithdrawn) {
  expectRefused(owner->ask({.op = ControlOp::unshare}), "no such share");
  for (const auto* name : {"Music", "", "bob/Docs", "me/Docs"}) {
    expectRefused(owner->ask({.op = ControlOp::unshare, .name = name}), "no such share");
  }
  EXPECT_EQ(sharedNames(), Names{"Docs"});
}

TEST_F(SharingTest, aNameMustBeUsableAndFree) {
  for (const auto& name : {std::string(), std::string("."), std::string(".."), std::string("a/b"),
                           std::string("a\0b", 3), std::string(256, 'x')}) {
    expectRefused(share(name, "docs"), "not a usable share name");
  }
  expectRefused(owner->ask({.op = ControlOp::share, .folder = temp / "docs"}),
                "not a usable share name");
  expectRefused(share("Docs", "docs"), "another share has this name");
  EXPECT_EQ(share(std::string(255, 'x'), "docs"), ControlResponse::ok());
}

TEST_F(SharingTest, theFolderMustBeAbsoluteAndThere) {
  temp.file("file");
  for (const auto* folder : {"", "docs", "./docs", "~"}) {
    expectRefused(owner->ask(shareOf("New", folder)), "the folder's path must be absolute");
  }
  expectRefused(owner->ask({.op = ControlOp::share, .name = "New"}),
                "the folder's path must be absolute");
  expectRefused(share("New", "missing"), "no such file");
  expectRefused(share("New", "file"), "not a directory");
  expectRefused(owner->ask(shareOf("New", (temp / "docs") + std::string("\0x", 2))),
                "no such file");
  EXPECT_EQ(sharedNames(), Names{"Docs"});
}

TEST_F(SharingTest, aFolderWithSecretsIsReviewedAndNotYetShared) {
  temp.file("home/.ssh/id_rsa");
  temp.file("home/work/.env");
  temp.file("home/work/text");
  const auto answer = share("Home", "home");
  EXPECT_EQ(answer.status, Status::review);
  EXPECT_EQ(answer.review, (ReviewSummary{.sharedCount = 2,
                                          .excludedCount = 2,
                                          .secrets = {".ssh", "work/.env"},
                                          .caps = {},
                                          .isRemote = false}));
  EXPECT_EQ(sharedNames(), Names{"Docs"});
  expectMissing("me/Home");
}

TEST_F(SharingTest, aConfirmedReviewSharesTheFolderWithoutItsSecrets) {
  temp.file("home/.ssh/id_rsa");
  temp.file("home/work/.env");
  temp.file("home/work/text", "words");
  EXPECT_EQ(share("Home", "home", SharePolicy::interactive).status, Status::review);
  EXPECT_EQ(owner->confirm("Home"), ControlResponse::ok());
  EXPECT_EQ(bytes("me/Home/work/text"), "words");
  EXPECT_EQ(names("me/Home"), Names{"work"});
  EXPECT_EQ(names("me/Home/work"), Names{"text"});
  for (const auto* secret : {".ssh", ".ssh/id_rsa", ".ssh/other", "work/.env", "work/.env/x"}) {
    expectMissing(std::string("me/Home/") + secret);
  }
  expectRefused(owner->confirm("Home"), "no review waits under this name");
}

TEST_F(SharingTest, aCancelledReviewIsOver) {
  temp.file("home/.env");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  EXPECT_EQ(owner->cancel("Home"), ControlResponse::ok());
  expectRefused(owner->cancel("Home"), "no review waits under this name");
  expectRefused(owner->confirm("Home"), "no review waits under this name");
  EXPECT_EQ(sharedNames(), Names{"Docs"});
}

TEST_F(SharingTest, aReviewBelongsToItsConnectionAndItsName) {
  temp.file("home/.env");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  Owner other(socketPath());
  expectRefused(other.confirm("Home"), "no review waits under this name");
  expectRefused(other.cancel("Home"), "no review waits under this name");
  expectRefused(owner->confirm("Other"), "no review waits under this name");
  expectRefused(owner->ask({.op = ControlOp::confirm}), "no review waits under this name");
  EXPECT_EQ(owner->confirm("Home"), ControlResponse::ok());
}

TEST_F(SharingTest, aReviewGoesWithItsConnection) {
  temp.file("home/.env");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  owner.reset();
  owner.emplace(socketPath());
  expectRefused(owner->confirm("Home"), "no review waits under this name");
}

TEST_F(SharingTest, whoIsFirstGetsTheName) {
  temp.file("home/.env");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  Owner other(socketPath());
  EXPECT_EQ(other.ask(shareOf("Home", temp / "docs")), ControlResponse::ok());
  expectRefused(owner->confirm("Home"), "another share has this name");
  EXPECT_EQ(names("me/Home"), Names{});
}

TEST_F(SharingTest, aSecondOfferUnderTheNameTakesThePlaceOfTheFirst) {
  temp.file("home/.env");
  temp.file("clean/text");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  EXPECT_EQ(share("Home", "clean"), ControlResponse::ok());
  expectRefused(owner->confirm("Home"), "no review waits under this name");
  EXPECT_EQ(names("me/Home"), Names{"text"});
}

TEST_F(SharingTest, onlySoManyReviewsWait) {
  temp.file("home/.env");
  for (const auto* name : {"a", "b", "c", "d"}) {
    EXPECT_EQ(share(name, "home").status, Status::review);
  }
  expectRefused(share("e", "home"), "too many reviews in waiting: confirm or cancel one");
  EXPECT_EQ(owner->cancel("a"), ControlResponse::ok());
  EXPECT_EQ(share("e", "home").status, Status::review);
}

TEST_F(SharingTest, aReviewCanBeConfirmedWithForce) {
  temp.file("home/.env", "env");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  EXPECT_EQ(owner->ask({.op = ControlOp::confirm, .name = "Home", .policy = SharePolicy::force}),
            ControlResponse::ok());
  EXPECT_EQ(bytes("me/Home/.env"), "env");
}

TEST_F(SharingTest, aScanThatMetABoundIsReviewedAndAcknowledged) {
  auto chosen = options();
  chosen.socketPath = temp / "s2";
  chosen.secretScan.names = 3;
  host.reset();
  startHost(chosen);
  for (int i = 0; i < 5; ++i) temp.file("many/" + std::to_string(i));
  Owner other(chosen.socketPath);
  const auto answer = other.ask(shareOf("Many", temp / "many"));
  EXPECT_EQ(answer.status, Status::review);
  EXPECT_EQ(answer.review->caps, Names{"more than 3 names: the rest was not looked at"});
  expectRefused(other.confirm("Many"), "the review is not complete: confirm it with ackCaps");
  EXPECT_EQ(other.ask({.op = ControlOp::confirm, .name = "Many", .ackCaps = true}),
            ControlResponse::ok());
  EXPECT_EQ(other.ask(shareOf("Again", temp / "many", SharePolicy::yes)).status, Status::ok);
}

TEST_F(SharingTest, offersAndWithdrawalsAreLogged) {
  temp.folder("new");
  (void)share("N\x1bw", "new");
  (void)owner->ask({.op = ControlOp::unshare, .name = "N\x1bw"});
  EXPECT_EQ(log(), (Names{"sharing N\\x1bw", "no longer sharing N\\x1bw"}));
}

TEST_F(SharingTest, onlySoManySharesAreTaken) {
  for (std::size_t i = 0; i < ShareTable::maxAdded; ++i) {
    ASSERT_EQ(share("s" + std::to_string(i), "docs", SharePolicy::force), ControlResponse::ok());
  }
  expectRefused(share("more", "docs"), "too many shares");
  (void)owner->ask({.op = ControlOp::unshare, .name = "s7"});
  EXPECT_EQ(share("more", "docs"), ControlResponse::ok());
}

TEST_F(SharingTest, noDescriptorIsLeftOpen) {
  temp.file("home/.env");
  (void)owner->ask({.op = ControlOp::shares});  // the host holds the connection by now
  const auto before = openDescriptors();
  EXPECT_EQ(share("Home", "home").status, Status::review);
  (void)owner->confirm("Home");
  (void)owner->ask({.op = ControlOp::unshare, .name = "Home"});
  EXPECT_EQ(share("Other", "home").status, Status::review);
  (void)owner->cancel("Other");
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SharingTest, anOfferWhoseOwnerHasGoneIsNone) {
  temp.file("home/text");
  std::atomic<int> connection{-1};
  std::atomic<bool> isCut{false};
  auto chosen = options();
  chosen.isOwnMount = [&](dev_t) {  // asked about the folder, before it is looked through
    isCut = connection >= 0 && ::shutdown(connection, SHUT_RDWR) == 0;
    return false;
  };
  owner.reset();
  host.reset();
  startHost(std::move(chosen));
  const auto before = openDescriptors();
  const UniqueFd client(RawClient(socketPath()).release());
  connection = client.get();
  ASSERT_GT(writeWithoutSignal(client.get(), R"({"op":"share","name":"Home","folder":")" +
                                                 temp / "home" + "\"}\n"),
            0);
  EXPECT_TRUE(eventually([&] { return isCut.load(); }));
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before + 1; }));  // the client's own
  EXPECT_EQ(sharedNames(), Names{"Docs"});
}

TEST_F(SharingTest, sharesComeAndGoWhileOthersAreServed) {
  temp.file(docs("text"), "words");
  temp.file("new/text", "new");
  std::atomic<bool> stop{false};
  std::thread reader([&] {
    Owner other(socketPath());
    while (!stop) {
      const auto old = other.ask({.op = ControlOp::read, .name = "me/Docs/text"});
      EXPECT_EQ(old.dataBase64, base64::encode("words"));
      const auto fresh = other.ask({.op = ControlOp::read, .name = "me/New/text"});
      EXPECT_TRUE(fresh.dataBase64 == base64::encode("new") || fresh.message == "no such file");
    }
  });
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(share("New", "new"), ControlResponse::ok());
    EXPECT_EQ(owner->ask({.op = ControlOp::unshare, .name = "New"}), ControlResponse::ok());
  }
  stop = true;
  reader.join();
}

}  // namespace
}  // namespace tarnel::test
