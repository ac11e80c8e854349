// The C surface: every reply is made exactly once, and what the core throws is EIO.
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fskit/CoreHandles.h"
#include "fskit/TarnelCore.h"
#include "support/Eventually.h"
#include "support/FakeSource.h"

namespace tarnel::test {
namespace {

// Counts the replies of one operation and keeps what the last one said.
struct Counted {
  Mutex lock;
  int replies GUARDED_BY(lock) = 0;
  TarnelError error GUARDED_BY(lock){};
  std::int64_t number GUARDED_BY(lock) = 0;
  TarnelCoreItem* item GUARDED_BY(lock) = nullptr;

  Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { tarnelItemRelease(item); }

  static void done(void* context, TarnelError error) { count(context, error, 0, nullptr); }
  static void numbered(void* context, TarnelError error, std::int64_t number) {
    count(context, error, number, nullptr);
  }
  static void verified(void* context, TarnelError error, std::uint64_t verifier) {
    count(context, error, static_cast<std::int64_t>(verifier), nullptr);
  }
  static void found(void* context, TarnelError error, TarnelCoreItem* item) {
    count(context, error, 0, item);
  }
  static void described(void* context, TarnelError error, const TarnelAttributes* attributes) {
    count(context, error, attributes != nullptr ? 1 : 0, nullptr);
  }

  // After the reply has come; "count of replies, domain, code".
  std::vector<int> wait() {
    EXPECT_TRUE(eventually([this] {
      MutexLock hold(lock);
      return replies > 0;
    }));
    MutexLock hold(lock);
    return {replies, error.domain, error.code};
  }

 private:
  static void count(void* context, TarnelError error, std::int64_t number, TarnelCoreItem* item) {
    auto& self = *static_cast<Counted*>(context);
    MutexLock hold(self.lock);
    ++self.replies;
    self.error = error;
    self.number = number;
    self.item = item;
  }
};

const std::vector<int> succeededOnce = {1, tarnelNoError, 0};
const std::vector<int> inputOutputOnce = {1, tarnelPosixError, darwin::inputOutput};
const std::vector<int> readOnlyOnce = {1, tarnelPosixError, darwin::readOnly};

// Throws from inside every call: before its reply, after it, or with the reply dropped.
class BadSource final : public FabricSource {
 public:
  enum class Way { throws, repliesAndThrows, drops, repliesTwice };
  explicit BadSource(Way how) : way(how) {}

  void shareListing(Reply<std::vector<FabricShare>> reply) override {
    misbehave(std::move(reply), {{.peer = "me", .name = "Docs"}});
  }
  void stat(const std::string&, Reply<FileStat> reply) override {
    misbehave(std::move(reply), {.name = "Docs", .isDirectory = true});
  }
  void list(const std::string&, Reply<std::vector<FileStat>> reply) override {
    misbehave(std::move(reply), {});
  }
  void read(const std::string&, std::int64_t, std::int64_t, Reply<Bytes> reply) override {
    misbehave(std::move(reply), {});
  }
  void cancelAll() override {
    if (way == Way::throws) throw std::runtime_error("bad source");
  }

 private:
  template <class T>
  void misbehave(Reply<T> reply, T value) const {
    if (way == Way::repliesAndThrows || way == Way::repliesTwice) reply(value);
    if (way == Way::repliesTwice) reply(value);
    if (way == Way::throws || way == Way::repliesAndThrows) {
      throw std::runtime_error("bad source");
    }
  }

  const Way way;
};

class Surface : public testing::Test {
 protected:
  static TarnelCoreVolume volumeOver(std::shared_ptr<FabricSource> source) {
    return {.volume = FabricVolume::make(Uuid{}, "Tarnel", std::move(source), 501, 20, 0)};
  }
  static TarnelCoreVolume bad(BadSource::Way way) {
    return volumeOver(std::make_shared<BadSource>(way));
  }

  // An item of the path in a volume that works; the volume under test takes it as its own.
  TarnelCoreItem item(const std::string& path) {
    const auto volume = volumeOver(source);
    TarnelCoreItem found;
    volume.volume->activate([&](ItemRef root, OptionalError) { found.item = std::move(root); });
    std::string rest = path;
    while (!rest.empty()) {
      const std::string name = rest.substr(0, rest.find('/'));
      rest.erase(0, name.size() + 1);
      Counted reply;
      tarnelVolumeLookupItem(const_cast<TarnelCoreVolume*>(&volume), {name.data(), name.size()},
                             true, &found, Counted::found, &reply);
      EXPECT_EQ(reply.wait(), succeededOnce);
      MutexLock hold(reply.lock);
      if (reply.item != nullptr) found.item = reply.item->item;
    }
    return found;
  }

  // Every operation that asks the host, once each, and what each replied.
  std::vector<std::vector<int>> askEverything(TarnelCoreVolume& volume) {
    Counted lookup, attributes, enumeration, read;
    const TarnelCoreItem docs = item("me/Docs");
    const TarnelCoreItem file = item("me/Docs/a.txt");
    char bytes[8];
    const TarnelBuffer buffer = {
        .context = bytes, .length = sizeof bytes, .mutableBytes = [](void* b) { return b; }};
    const TarnelPacker packer = {
        .context = nullptr,
        .packEntry = [](void*, TarnelText, std::int64_t, std::uint64_t, std::uint64_t,
                        const TarnelAttributes*) { return true; }};
    tarnelVolumeLookupItem(&volume, {"a.txt", 5}, true, &docs, Counted::found, &lookup);
    tarnelVolumeGetAttributes(&volume, allAttributes, &docs, Counted::described, &attributes);
    tarnelVolumeEnumerate(&volume, &docs, 0, 0, nullptr, packer, Counted::verified, &enumeration);
    tarnelVolumeRead(&volume, &file, 0, 8, buffer, Counted::numbered, &read);
    return {lookup.wait(), attributes.wait(), enumeration.wait(), read.wait()};
  }

  Surface() { source->put("me/Docs/a.txt", "hello"); }
  const std::shared_ptr<FakeSource> source = std::make_shared<FakeSource>();
};

TEST_F(Surface, aCoreThatThrowsIsInputOutputOnce) {
  auto volume = bad(BadSource::Way::throws);
  EXPECT_EQ(askEverything(volume), std::vector(4, inputOutputOnce));
}

TEST_F(Surface, aReplyThatTheCoreDropsIsInputOutputOnce) {
  auto volume = bad(BadSource::Way::drops);
  EXPECT_EQ(askEverything(volume), std::vector(4, inputOutputOnce));
}

TEST_F(Surface, aCoreThatThrowsAfterItsReplyHasReplied) {
  auto volume = bad(BadSource::Way::repliesAndThrows);
  EXPECT_EQ(askEverything(volume), std::vector(4, succeededOnce));
}

TEST_F(Surface, theSecondReplyOfACoreGoesNowhere) {
  auto volume = bad(BadSource::Way::repliesTwice);
  EXPECT_EQ(askEverything(volume), std::vector(4, succeededOnce));
}

TEST_F(Surface, aLifeCycleOperationThatThrowsIsInputOutputOnce) {
  auto volume = bad(BadSource::Way::throws);
  Counted unmount, deactivate;
  tarnelVolumeUnmount(&volume, Counted::done, &unmount);
  tarnelVolumeDeactivate(&volume, Counted::done, &deactivate);
  EXPECT_EQ(unmount.wait(), inputOutputOnce);
  EXPECT_EQ(deactivate.wait(), inputOutputOnce);
}

TEST_F(Surface, aCoreThatAnswersIsPassedOn) {
  auto volume = volumeOver(source);
  EXPECT_EQ(askEverything(volume), std::vector(4, succeededOnce));
}

TEST_F(Surface, handlesThatCouldNotBeMadeReplyInputOutput) {
  Counted activate, refused, unload;
  tarnelVolumeActivate(nullptr, Counted::found, &activate);
  tarnelVolumeRefuseWrite(nullptr, Counted::done, &refused);
  tarnelFileSystemUnload(nullptr, {"", 0}, {}, Counted::done, &unload);
  EXPECT_EQ(activate.wait(), inputOutputOnce);
  EXPECT_EQ(refused.wait(), inputOutputOnce);
  EXPECT_EQ(unload.wait(), inputOutputOnce);
}

TEST_F(Surface, aForeignItemIsInputOutputInEveryOperation) {
  auto volume = volumeOver(source);
  Counted lookup, attributes, enumeration, read, reclaim;
  tarnelVolumeLookupItem(&volume, {"a", 1}, true, nullptr, Counted::found, &lookup);
  tarnelVolumeGetAttributes(&volume, 1, nullptr, Counted::described, &attributes);
  tarnelVolumeEnumerate(&volume, nullptr, 0, 0, nullptr, {}, Counted::verified, &enumeration);
  tarnelVolumeRead(&volume, nullptr, 0, 8, {}, Counted::numbered, &read);
  tarnelVolumeReclaimItem(&volume, nullptr, Counted::done, &reclaim);
  for (Counted* reply : {&lookup, &attributes, &enumeration, &read, &reclaim}) {
    EXPECT_EQ(reply->wait(), inputOutputOnce);
  }
}

TEST_F(Surface, everyChangeIsRefusedReadOnlyAndALinkIsInvalid) {
  auto volume = volumeOver(source);
  for (const auto refuse :
       {tarnelVolumeRefuseCreateItem, tarnelVolumeRefuseCreateSymbolicLink,
        tarnelVolumeRefuseCreateLink, tarnelVolumeRefuseRemoveItem, tarnelVolumeRefuseRenameItem,
        tarnelVolumeRefuseSetAttributes, tarnelVolumeRefuseWrite}) {
    Counted reply;
    refuse(&volume, Counted::done, &reply);
    EXPECT_EQ(reply.wait(), readOnlyOnce);
  }
  Counted link;
  tarnelVolumeRefuseReadSymbolicLink(&volume, Counted::done, &link);
  EXPECT_EQ(link.wait(), (std::vector<int>{1, tarnelPosixError, darwin::invalidArgument}));
}

TEST_F(Surface, twoHandlesOfOneItemHaveOneIdentity) {
  auto volume = volumeOver(source);
  Counted first, second;
  tarnelVolumeActivate(&volume, Counted::found, &first);
  tarnelVolumeActivate(&volume, Counted::found, &second);
  MutexLock holdFirst(first.lock);
  MutexLock holdSecond(second.lock);
  EXPECT_NE(first.item, second.item);
  EXPECT_EQ(tarnelItemIdentity(first.item), tarnelItemIdentity(second.item));
  EXPECT_EQ(tarnelItemIdentity(nullptr), nullptr);
}

std::vector<std::int64_t> fieldsOf(const TarnelAttributes& given) {
  return {static_cast<std::int64_t>(given.valid),
          given.type,
          given.mode,
          given.linkCount,
          given.uid,
          given.gid,
          given.flags,
          static_cast<std::int64_t>(given.size),
          static_cast<std::int64_t>(given.allocSize),
          static_cast<std::int64_t>(given.fileID),
          static_cast<std::int64_t>(given.parentID)};
}

std::vector<std::int64_t> timesOf(const TarnelAttributes& given) {
  std::vector<std::int64_t> all;
  for (const TarnelTime time :
       {given.accessTime, given.modifyTime, given.changeTime, given.birthTime}) {
    all.push_back(time.seconds);
    all.push_back(time.nanoseconds);
  }
  return all;
}

TEST_F(Surface, attributesAndEntriesArePassedOnFieldByField) {
  source->putStat("me/Docs/b",
                  {.name = "b", .size = 5000, .mtimeMs = -1500, .mode = 0100751, .nlink = 3});
  source->remove("me/Docs/a.txt");
  auto volume = volumeOver(source);
  const TarnelCoreItem docs = item("me/Docs");  // ids: 3 for "me", 4 for "Docs"
  const TarnelCoreItem file = item("me/Docs/b");
  const std::vector<std::int64_t> fields = {allAttributes, 1,    0551, 3, 501, 20, 0,
                                            5000,          8192, 5,    4};
  const std::vector<std::int64_t> times = {-1, -500'000'000, -1, -500'000'000,
                                           -1, -500'000'000, -1, -500'000'000};

  std::promise<TarnelAttributes> answered;
  tarnelVolumeGetAttributes(
      &volume, allAttributes, &file,
      [](void* context, TarnelError, const TarnelAttributes* attributes) {
        static_cast<std::promise<TarnelAttributes>*>(context)->set_value(
            attributes != nullptr ? *attributes : TarnelAttributes{});
      },
      &answered);
  const TarnelAttributes seen = answered.get_future().get();
  EXPECT_EQ(fieldsOf(seen), fields);
  EXPECT_EQ(timesOf(seen), times);

  struct Entry {
    std::string name;
    std::vector<std::int64_t> numbers;
    TarnelAttributes attributes;
  };
  std::vector<Entry> entries;
  const TarnelPacker packer = {
      .context = &entries,
      .packEntry = [](void* context, TarnelText name, std::int64_t type, std::uint64_t id,
                      std::uint64_t next, const TarnelAttributes* attributes) {
        static_cast<std::vector<Entry>*>(context)->push_back(
            {.name = {name.bytes, name.length},
             .numbers = {type, static_cast<std::int64_t>(id), static_cast<std::int64_t>(next)},
             .attributes = attributes != nullptr ? *attributes : TarnelAttributes{}});
        return true;
      }};
  Counted listed;
  const std::uint64_t wanted = allAttributes;
  tarnelVolumeEnumerate(&volume, &docs, 0, 0, &wanted, packer, Counted::verified, &listed);
  EXPECT_EQ(listed.wait(), succeededOnce);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].name, "b");
  // A volume of its own: the first id that it gives is this child's.
  EXPECT_EQ(entries[0].numbers, (std::vector<std::int64_t>{1, 3, 1}));
  std::vector<std::int64_t> listedFields = fields;
  listedFields[9] = 3;
  EXPECT_EQ(fieldsOf(entries[0].attributes), listedFields);
  EXPECT_EQ(timesOf(entries[0].attributes), times);
}

TEST_F(Surface, loadingTellsWhenItBecameReadyBeforeItReplies) {
  std::vector<std::string> order;
  TarnelCoreFileSystem* const fileSystem = tarnelFileSystemMake(
      {"/nowhere", 8},
      [](void* o) { static_cast<std::vector<std::string>*>(o)->push_back("ready"); }, &order);
  ASSERT_NE(fileSystem, nullptr);
  tarnelFileSystemLoad(
      fileSystem, {"Resource", 8}, {},
      [](void* o, TarnelError, TarnelCoreVolume* volume) {
        static_cast<std::vector<std::string>*>(o)->push_back("reply");
        tarnelVolumeRelease(volume);
      },
      &order);
  EXPECT_EQ(order, (std::vector<std::string>{"ready", "reply"}));
  tarnelFileSystemRelease(fileSystem);
}

}  // namespace
}  // namespace tarnel::test
