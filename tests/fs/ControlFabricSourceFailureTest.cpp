// Refusals, silence, lost connections and answers that are none.
#include "ControlSourceTest.h"

namespace tarnel::test {
namespace {

class ControlFabricSourceFailures : public ControlSourceTest {};

const std::string statRequest = R"({"op":"stat","name":"p\/s"})";

TEST_F(ControlFabricSourceFailures, aRefusalIsClassifiedByItsMessage) {
  const std::pair<std::string, Kind> refusals[] = {
      {"no such file", Kind::notFound},
      {"permission denied", Kind::notFound},
      {"", Kind::notFound},
      {"is a directory", Kind::isDirectory},
      {"p\\/s Is A Directory.", Kind::isDirectory},
      {"not a directory", Kind::notADirectory},
      {"NOT A DIRECTORY", Kind::notADirectory},
      {"is not a directory", Kind::notADirectory},
      {"this is not a file", Kind::notADirectory},
      {"not a file, it is a directory", Kind::isDirectory},
  };
  for (const auto& [message, kind] : refusals) {
    host.expect(statRequest).answer(R"({"status":"error","message":")" + message + "\"}");
    EXPECT_EQ(stat("p/s").error(), failure(kind)) << message;
  }
}

TEST_F(ControlFabricSourceFailures, everyOperationClassifiesItsRefusals) {
  const std::string refusal = R"({"status":"error","message":"is a directory"})";
  host.expect(R"({"op":"list","name":"p\/s"})").answer(refusal);
  EXPECT_EQ(list("p/s").error(), failure(Kind::isDirectory));
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})").answer(refusal);
  EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::isDirectory));
}

TEST_F(ControlFabricSourceFailures, aMissingPayloadIsARefusalThoughTheStatusIsGood) {
  host.expect(statRequest).answer(R"({"status":"ok"})");
  EXPECT_EQ(stat("p/s").error(), failure(Kind::notFound));
  host.expect(statRequest).answer(R"({"status":"ok","stat":null,"message":"not a file"})");
  EXPECT_EQ(stat("p/s").error(), failure(Kind::notADirectory));
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})").answer(R"({"status":"ok"})");
  EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::notFound));
}

TEST_F(ControlFabricSourceFailures, aListOfNamesIsNoListOfEntries) {
  host.expect(R"({"op":"list","name":"p\/s"})")
      .answer(R"({"status":"ok","names":[{"n":"a","d":false}]})");
  EXPECT_EQ(list("p/s").error(), failure(Kind::notFound));
}

TEST_F(ControlFabricSourceFailures, dataThatDoesNotDecodeIsARefusal) {
  for (const char* data : {"a", "ab=c", "ab-_", "YWJj\\n", "===="}) {
    host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})")
        .answer(std::string(R"({"status":"ok","dataBase64":")") + data + "\"}");
    EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::notFound)) << data;
  }
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})")
      .answer(R"({"status":"ok","dataBase64":"!","message":"Is a directory"})");
  EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::isDirectory));
}

TEST_F(ControlFabricSourceFailures, silenceOfTheMetadataChannelIsATimeOut) {
  useLimits(shortLimit, longLimit);
  host.expect(statRequest).stall();
  EXPECT_EQ(stat("p/s").error(), failure(Kind::timedOut));
}

TEST_F(ControlFabricSourceFailures, silenceOfTheBulkChannelIsATimeOut) {
  useLimits(longLimit, shortLimit);
  host.expect(R"({"op":"read","name":"p\/s","offset":0,"length":1})").stall();
  EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::timedOut));
}

TEST_F(ControlFabricSourceFailures, withoutAHostEverythingIsDisconnected) {
  source = std::make_shared<ControlFabricSource>(
      std::make_shared<DualControlClient>(host.path() + ".none", longLimit, longLimit, "test"));
  EXPECT_EQ(shareListing().error(), failure(Kind::disconnected));
  EXPECT_EQ(stat("p/s").error(), failure(Kind::disconnected));
  EXPECT_EQ(list("p/s").error(), failure(Kind::disconnected));
  EXPECT_EQ(read("p/s", 0, 1).error(), failure(Kind::disconnected));
}

TEST_F(ControlFabricSourceFailures, halfAnAnswerAndAHangUpIsDisconnected) {
  host.expect(statRequest).send(R"({"status":"ok","st)").hangUp();
  // The end of the stream leaves whatever errno the thread last had: both are in order.
  const FabricFailure error = stat("p/s").error();
  EXPECT_TRUE(error == failure(Kind::disconnected) || error == failure(Kind::timedOut));
}

TEST_F(ControlFabricSourceFailures, anAnswerThatIsNoJsonPassesUnchangedAndKeepsTheConnection) {
  host.expect(statRequest).answer("{\"status\":");
  const auto refused = stat("p/s");
  ASSERT_FALSE(refused);
  EXPECT_TRUE(std::holds_alternative<DecodingError>(refused.error()));
  EXPECT_EQ(fabricErrno(refused.error()), 5);
  host.expect(statRequest).answer(R"({"status":"ok"})");
  EXPECT_EQ(stat("p/s").error(), failure(Kind::notFound));
  EXPECT_EQ(host.connections(), 1u);
}

TEST_F(ControlFabricSourceFailures, oneBadEntryRejectsTheWholeListing) {
  host.expect(R"({"op":"list","name":"p\/s"})")
      .answer(R"({"status":"ok","entries":[{"name":"a","size":1,"mtimeMs":2,)"
              R"("isDirectory":false,"mode":0,"nlink":0,"owner":"","group":""},{"name":"b"}]})");
  EXPECT_EQ(fabricErrno(list("p/s").error()), 5);
}

TEST_F(ControlFabricSourceFailures, aNameThatIsNoTextNeverReachesTheHost) {
  const auto refused = stat("p/\xff");
  ASSERT_FALSE(refused);
  EXPECT_TRUE(std::holds_alternative<EncodingError>(refused.error()));
  EXPECT_EQ(fabricErrno(refused.error()), 5);
  EXPECT_TRUE(host.requests().empty());
}

TEST_F(ControlFabricSourceFailures, cancelAllEndsWhatWaitsWithDisconnected) {
  host.answerWith([](const std::string&) { return HostReply().stall(); });
  Awaited<FabricSource::Reply<FileStat>> running;
  Awaited<FabricSource::Reply<FileStat>> queued;
  Awaited<FabricSource::Reply<Bytes>> reading;
  source->stat("p/s", running.reply());
  source->stat("p/t", queued.reply());
  source->read("p/s", 0, 1, reading.reply());
  ASSERT_TRUE(host.waitForRequests(2));

  source->cancelAll();
  EXPECT_EQ(std::get<0>(queued.wait()).error(), failure(Kind::disconnected));
  for (const FabricFailure& error :
       {std::get<0>(running.wait()).error(), std::get<0>(reading.wait()).error()}) {
    EXPECT_TRUE(error == failure(Kind::disconnected) || error == failure(Kind::timedOut));
  }
  EXPECT_EQ(host.requests().size(), 2u);
}

TEST_F(ControlFabricSourceFailures, theNextRequestAfterALossConnectsAnew) {
  host.expect(statRequest).hangUp();
  EXPECT_FALSE(stat("p/s"));
  host.expect(statRequest).answer(R"({"status":"ok"})");
  EXPECT_EQ(stat("p/s").error(), failure(Kind::notFound));
  EXPECT_EQ(host.connections(), 2u);
}

}  // namespace
}  // namespace tarnel::test
