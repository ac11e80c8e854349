// A complete host in one file: shares one folder, read-only, until INT or TERM.
//   minimal-host SOCKET DIR
// It serves what the volume asks for. Links, devices and names that are not UTF-8 are left out; who
// may change the folder is trusted not to exchange what was just looked at.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>

#include "control/Base64.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlStreamFrame.h"
#include "control/ControlWire.h"
#include "control/PosixSocket.h"
#include "control/Text.h"
#include "control/Thread.h"
#include "control/UnixSocketServer.h"

namespace tarnel::examples {
namespace fs = std::filesystem;
using Failed = std::unexpected<int>;  // errno

// Readers look for words in a refusal, and a path may hold them: no text holds a path.
ControlResponse refusal(int error) {
  return ControlResponse::error(error == EISDIR    ? "is a directory"
                                : error == ENOTDIR ? "not a directory"
                                : error == EACCES  ? "permission denied"
                                : error == ENOSYS  ? "operation not served"
                                                   : "no such file");
}

std::expected<ControlStat, int> statOf(const fs::path& path) {
  std::error_code error;
  const fs::file_status found = fs::symlink_status(path, error);
  if (!fs::is_regular_file(found) && !fs::is_directory(found)) return Failed(error.value());
  const auto time = std::chrono::file_clock::to_sys(fs::last_write_time(path, error));
  ControlStat stat;  // owner and group stay empty: not known
  stat.name = path.filename();
  stat.isDirectory = fs::is_directory(found);
  stat.size = stat.isDirectory ? 0 : static_cast<std::int64_t>(fs::file_size(path, error));
  stat.mtimeMs = std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch().count();
  stat.mode = static_cast<std::uint32_t>(found.permissions());
  stat.nlink = static_cast<std::uint32_t>(fs::hard_link_count(path, error));
  if (error) return Failed(error.value());  // it has just gone
  return stat;
}

ControlResponse list(const fs::path& path, const ControlRequest& request) {
  const std::int64_t limit = request.limit.value_or(INT64_MAX);
  if (limit < 0) return ControlResponse::error("invalid limit");
  std::vector<ControlStat> entries;
  std::vector<ControlName> names;
  std::error_code error;
  for (fs::directory_iterator at(path, error), end; !error && at != end; at.increment(error)) {
    auto stat = statOf(at->path());
    if (!stat || !isValidUtf8(stat->name) || std::ssize(entries) == limit) continue;
    names.emplace_back(stat->name, stat->isDirectory);
    entries.push_back(std::move(*stat));
  }
  if (error) return refusal(error.value());
  if (request.namesOnly.value_or(false)) return {.names = std::move(names)};
  return {.entries = std::move(entries)};
}

// An answer may hold fewer bytes than were asked for; only an empty one is the end of the file.
ControlResponse read(const fs::path& path, std::int64_t fileSize, const ControlRequest& request) {
  const std::int64_t offset = request.offset.value_or(0);
  const auto most = std::min(request.length.value_or(INT64_MAX), ControlStreamFrame::window);
  if (offset < 0 || most < 0) return ControlResponse::error("invalid range");
  const std::int64_t size = std::clamp<std::int64_t>(fileSize - offset, 0, most);
  Bytes bytes(static_cast<std::size_t>(size), '\0');
  const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (!file.valid()) return refusal(errno);
  const ssize_t count = ::pread(file.get(), bytes.data(), bytes.size(), offset);
  if (count < 0) return refusal(errno);
  return {.dataBase64 = base64::encode({bytes.data(), static_cast<std::size_t>(count)})};
}

ControlResponse answer(const std::string& folder, const ControlRequest& request) {
  const std::string share = fs::path(folder).filename();
  if (request.op == ControlOp::shares) return {.shares = {{{.name = share, .isRemote = false}}}};
  if (request.op < ControlOp::stat || request.op > ControlOp::read) return refusal(ENOSYS);
  // Only a path without "..", "//" and links is the canonical one: nothing outside is reached.
  const std::string location = request.name.value_or("");
  if (!(location + "/").starts_with("me/" + share + "/")) return refusal(ENOENT);
  const std::string path = folder + location.substr(share.size() + 3);
  std::error_code error;
  if (fs::canonical(path, error).native() != path) return refusal(error.value());
  const auto stat = statOf(path);
  if (!stat) return refusal(stat.error());
  if (request.op == ControlOp::list) return list(path, request);
  if (request.op == ControlOp::stat) return {.stat = *stat};
  return stat->isDirectory ? refusal(EISDIR) : read(path, stat->size, request);
}

// A line in, a line out, until the client hangs up.
void serve(const std::string& folder, const UniqueFd& client) {
  ReceiveBuffer received;
  while (peerIsTrusted(client.get())) {
    const auto line = received.takeLine();
    const bool isTooLong = received.size() > ControlWire::maxFrameBytes;
    if (!line && (isTooLong || received.fill(client.get()) <= 0)) return;
    if (!line) continue;
    const auto request = ControlWire::decode<ControlRequest>(*line);
    auto frame = ControlWire::encode(request ? answer(folder, *request)
                                             : ControlResponse::error("malformed request"));
    if (!frame || frame->size() > ControlWire::maxFrameBytes) {
      frame = ControlWire::encode(ControlResponse::error("too large for one answer"));
    }
    for (BytesView rest = *frame; !rest.empty();) {
      const ssize_t count = writeWithoutSignal(client.get(), rest);
      if (count <= 0) return;
      rest.remove_prefix(static_cast<std::size_t>(count));
    }
  }
}

int fail(const std::string& why) {
  std::cerr << "minimal-host: " << why << std::endl;
  return 1;
}

int run(int argc, char** argv) {
  std::error_code error;
  const std::string folder = fs::canonical(argc == 3 ? argv[2] : "", error);
  if (error) return fail("usage: minimal-host SOCKET DIR");
  sigset_t ends;
  sigemptyset(&ends);
  for (const int end : {SIGINT, SIGTERM}) sigaddset(&ends, end);
  ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  const auto server = UnixSocketServer::make(argv[1]);
  server->onConnection = [folder](int fd) {
    startThread("host", [folder, fd] { serve(folder, UniqueFd(fd)); }).detach();
  };
  if (const auto started = server->start(); !started) return fail(description(started.error()));
  std::cout << "sharing me/" << fs::path(folder).filename().native() << std::endl;
  int taken = 0;
  ::sigwait(&ends, &taken);
  server->stop();
  return 0;
}

}  // namespace tarnel::examples

int main(int argc, char** argv) { return tarnel::examples::run(argc, argv); }
