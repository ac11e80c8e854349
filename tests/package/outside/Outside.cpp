// Uses a little of each half of the library, so that all of it has to link: records and texts, a
// channel with its thread, a server.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>

#include "control/ControlChannel.h"
#include "control/SourcesAnnouncement.h"
#include "control/Text.h"
#include "control/TreeRecord.h"
#include "control/UniqueFd.h"
#include "control/UnixSocketServer.h"

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  ++failures;
}

}  // namespace

int main() {
  using namespace tarnel;
  expect(textEqual("caf\u00e9", "cafe\u0301"), "texts are equal by canonical equivalence");

  const SourcesAnnouncement announcement{.shares = {{.name = "Docs", .isRemote = false}}};
  expect(SourcesAnnouncement::decode(announcement.encoded()) == announcement,
         "an announcement is read back");

  ReceiveBuffer buffer;
  buffer.append(TreeRecord::bytes("abc").frame());
  const auto frame = ControlStreamFrame::parse(buffer);
  expect(frame && *frame && (*frame)->payload == "abc", "a frame is read back");

  std::string folder = std::filesystem::temp_directory_path() / "outside-XXXXXX";
  if (::mkdtemp(folder.data()) == nullptr) return EXIT_FAILURE;
  const auto server = UnixSocketServer::make(folder + "/s");
  server->onConnection = [](int fd) { const UniqueFd closed(fd); };
  expect(server->start().has_value(), "a server listens");

  const auto channel = ControlChannel::make(server->path(), "outside");
  std::promise<ControlChannelResult> answered;
  channel->request({.op = ControlOp::shares}, 30,
                   [&](ControlChannelResult result) { answered.set_value(std::move(result)); });
  const auto result = answered.get_future().get();
  expect(!result && result.error() == ControlChannelFailure(ControlChannelError::disconnected),
         "a host that hangs up is a lost connection");
  channel->cancelAll();
  server->stop();
  std::filesystem::remove_all(folder);
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
