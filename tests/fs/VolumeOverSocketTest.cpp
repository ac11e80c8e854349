// The whole road: a volume over a control source over a real socket.
#include "ControlSourceTest.h"
#include "VolumeTest.h"
#include "control/Base64.h"
#include "support/MadeItem.h"

namespace tarnel::test {
namespace {

std::string statAnswer(const std::string& name, std::int64_t size, bool isDirectory = false) {
  return R"({"status":"ok","stat":{"name":")" + name + R"(","size":)" + std::to_string(size) +
         R"(,"mtimeMs":1,"isDirectory":)" + (isDirectory ? "true" : "false") +
         R"(,"mode":0,"nlink":0,"owner":"","group":""}})";
}

class VolumeOverSocket : public ControlSourceTest {
 protected:
  VolumeOverSocket() {
    recording.setDebug(false);
    recording.clear();
  }

  void makeVolume() { volume = FabricVolume::make(Uuid{}, "Tarnel", source, 501, 20, 0); }

  // An item as a lookup of another day would have left it.
  [[nodiscard]] static std::shared_ptr<FabricItem> known(std::int64_t size) {
    return madeItem("me/Docs/a", 5, 4, false, FileStat{.name = "a", .size = size});
  }

  [[nodiscard]] std::tuple<std::optional<ItemAttributes>, OptionalError> getAttributes(
      const ItemRef& item) const {
    Awaited<AttributesReply> reply;
    volume->getAttributes(allAttributes, item, reply.reply());
    return reply.wait();
  }

  RecordingLog& recording = RecordingLog::installed();
  std::shared_ptr<FabricVolume> volume;
};

const std::string statRequest = R"({"op":"stat","name":"me\/Docs\/a"})";

TEST_F(VolumeOverSocket, aTimeOutOfTheMetadataChannelDoesNotServeTheLastKnownAttributes) {
  useLimits(shortLimit, longLimit);
  makeVolume();
  host.expect(statRequest).stall();
  EXPECT_EQ(getAttributes(known(10)), std::tuple(std::nullopt, posixError(60)));
  EXPECT_EQ(
      recording.lines(),
      (std::vector<LogLine>{errorLine("getAttributes FAILED relpath=me/Docs/a error=timedOut")}));
}

TEST_F(VolumeOverSocket, aVanishedPathServesTheLastKnownAttributes) {
  makeVolume();
  host.expect(statRequest).answer(R"({"status":"error","message":"no such file"})");
  EXPECT_EQ(std::get<0>(getAttributes(known(10)))->size, 10u);
}

TEST_F(VolumeOverSocket, anAnswerThatIsNoJsonIsAnInputOutputErrorThoughAStatusIsKnown) {
  makeVolume();
  host.expect(statRequest).answer("garbage");
  EXPECT_EQ(getAttributes(known(10)), std::tuple(std::nullopt, posixError(5)));
}

TEST_F(VolumeOverSocket, looksUpFromTheRootDown) {
  makeVolume();
  host.expect(R"({"op":"shares"})")
      .answer(R"({"status":"ok","shares":[{"name":"Docs","isRemote":false}]})");
  host.expect(R"({"op":"stat","name":"me\/Docs"})").answer(statAnswer("Docs", 0, true));
  host.expect(statRequest).answer(statAnswer("a", 42));
  ItemRef at;
  volume->activate([&](ItemRef root, OptionalError) { at = std::move(root); });
  for (const char* name : {"me", "Docs", "a"}) {
    Awaited<NamedItemReply> reply;
    volume->lookupItem(textName(name), at, reply.reply());
    auto [found, foundName, error] = reply.wait();
    ASSERT_EQ(error, std::nullopt) << name;
    at = std::move(found);
  }
  EXPECT_EQ(std::dynamic_pointer_cast<FabricItem>(at)->lastStat()->size, 42);
}

TEST_F(VolumeOverSocket, aLongReadAsksForThreeChunks) {
  makeVolume();
  const std::pair<std::int64_t, std::int64_t> chunks[] = {
      {5, 262'144}, {262'149, 262'144}, {524'293, 75'712}};
  std::string expected;
  for (const auto& [offset, length] : chunks) {
    const std::string bytes(static_cast<std::size_t>(length), static_cast<char>('a' + offset % 7));
    expected += bytes;
    host.expect(R"({"op":"read","name":"me\/Docs\/a","offset":)" + std::to_string(offset) +
                R"(,"length":)" + std::to_string(length) + "}")
        .answer(R"({"status":"ok","dataBase64":")" + base64::encode(bytes) + "\"}");
  }
  const auto buffer = std::make_shared<ByteBuffer>(600'000);
  Awaited<CountReply> reply;
  volume->read(known(10), 5, 600'000, buffer, reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(600'000, std::nullopt));
  EXPECT_TRUE(buffer->bytes() == expected);
}

TEST_F(VolumeOverSocket, aReadWhoseAnswerHasNoDataIsNotFound) {
  makeVolume();
  host.expect(R"({"op":"read","name":"me\/Docs\/a","offset":0,"length":9})")
      .answer(R"({"status":"ok"})");
  Awaited<CountReply> reply;
  volume->read(known(10), 0, 9, std::make_shared<ByteBuffer>(9), reply.reply());
  EXPECT_EQ(reply.wait(), std::tuple(0, posixError(2)));
}

TEST_F(VolumeOverSocket, unmountEndsALookupThatWaits) {
  makeVolume();
  host.expect(R"({"op":"stat","name":"me\/Docs\/a\/b"})").stall();
  Awaited<NamedItemReply> waiting;
  volume->lookupItem(textName("b"), known(10), waiting.reply());
  ASSERT_TRUE(host.waitForRequests(1));

  Awaited<std::function<void()>> unmounted;
  volume->unmount(unmounted.reply());
  (void)unmounted.wait();
  const auto [found, name, error] = waiting.wait();
  EXPECT_EQ(found, nullptr);
  EXPECT_TRUE(error == posixError(57) || error == posixError(60));
}

}  // namespace
}  // namespace tarnel::test
