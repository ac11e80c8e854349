// Operations of several threads on one path. What is wrong here shows most surely under the thread
// sanitizer.
#include <array>
#include <thread>

#include "VolumeTest.h"

namespace tarnel::test {
namespace {

class VolumeConcurrency : public VolumeTest {
 protected:
  VolumeConcurrency() : VolumeTest(4) {}

  // Runs `work(i)` on several threads at once.
  template <class Work>
  static void race(Work work) {
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) threads[i] = std::thread(work, i);
    for (std::thread& thread : threads) thread.join();
  }
};

TEST_F(VolumeConcurrency, racingLookupsOfOnePathYieldOneObject) {
  source->putDirectory("me/Docs");
  const ItemRef docs = item("me/Docs");
  for (int round = 0; round < 200; ++round) {
    const std::string name = "file" + std::to_string(round);
    source->put("me/Docs/" + name, "x");
    std::array<ItemRef, 4> found;
    race([&](std::size_t i) { found[i] = std::get<0>(lookUp(docs, textName(name))); });
    ASSERT_NE(found[0], nullptr);
    for (const ItemRef& other : found) ASSERT_EQ(other, found[0]);
  }
}

TEST_F(VolumeConcurrency, racingLookupsOfAPeerYieldOneObject) {
  source->putShare("me", "Docs");
  const ItemRef top = root();
  for (int round = 0; round < 100; ++round) {
    std::array<ItemRef, 4> found;
    race([&](std::size_t i) { found[i] = std::get<0>(lookUp(top, textName("me"))); });
    for (const ItemRef& other : found) ASSERT_EQ(other, found[0]);
    ASSERT_EQ(reclaim(found[0]), std::nullopt);
  }
}

TEST_F(VolumeConcurrency, racingFetchesLeaveAWholeStatus) {
  const auto status = [](int n) {
    return FileStat{.name = "a", .size = n, .mtimeMs = -n, .mode = static_cast<std::uint32_t>(n)};
  };
  source->putStat("me/Docs/a", status(0));
  const auto a = item("me/Docs/a");
  const ItemRef docs = item("me/Docs");
  race([&](std::size_t i) {
    for (int round = 0; round < 50; ++round) {
      source->putStat("me/Docs/a", status(static_cast<int>(i)));
      if (i % 2 == 0) {
        EXPECT_EQ(std::get<1>(getAttributes(a)), std::nullopt);
      } else {
        EXPECT_EQ(std::get<0>(lookUp(docs, textName("a"))), a);
      }
      const auto last = a->lastStat();
      EXPECT_EQ(last, status(static_cast<int>(last->size)));
    }
  });
}

TEST_F(VolumeConcurrency, reclaimRacingLookupKeepsTheIdAndLosesNoNewerObject) {
  source->put("me/Docs/a", "x");
  const auto first = item("me/Docs/a");
  const ItemRef docs = item("me/Docs");
  race([&](std::size_t i) {
    for (int round = 0; round < 100; ++round) {
      const auto found =
          std::dynamic_pointer_cast<FabricItem>(std::get<0>(lookUp(docs, textName("a"))));
      ASSERT_NE(found, nullptr);
      EXPECT_EQ(found->id, first->id);
      EXPECT_EQ(found->lastStat()->size, 1);
      if (i % 2 == 0) {
        EXPECT_EQ(reclaim(found), std::nullopt);
      }
    }
  });
  const auto live = item("me/Docs/a");
  EXPECT_EQ(reclaim(first), std::nullopt);
  EXPECT_EQ(item("me/Docs/a") == live, live != first);
}

TEST_F(VolumeConcurrency, everythingAtOnce) {
  for (int i = 0; i < 20; ++i) source->put("me/Docs/f" + std::to_string(i), "content");
  const ItemRef docs = item("me/Docs");
  const auto f1 = item("me/Docs/f1");
  race([&](std::size_t i) {
    for (int round = 0; round < 40; ++round) {
      if (i == 0) {
        const auto packer = std::make_shared<RecordingPacker>();
        EXPECT_EQ(std::get<1>(enumerate(docs, packer, allAttributes)), std::nullopt);
        EXPECT_EQ(packer->entries().size(), 20u);
      } else if (i == 1) {
        const auto buffer = std::make_shared<ByteBuffer>(7);
        EXPECT_EQ(read(f1, 0, 7, buffer), std::tuple(7, std::nullopt));
        EXPECT_EQ(buffer->bytes(), "content");
      } else if (i == 2) {
        EXPECT_EQ(std::get<0>(getAttributes(f1))->size, 7u);
      } else {
        const std::string name = "f" + std::to_string(round % 20);
        EXPECT_EQ(reclaim(std::get<0>(lookUp(docs, textName(name)))), std::nullopt);
      }
    }
  });
}

}  // namespace
}  // namespace tarnel::test
