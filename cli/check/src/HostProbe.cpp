#include "HostProbe.h"

#include <algorithm>

#include "control/ControlWire.h"
#include "control/Printable.h"

namespace tarnel {
namespace {

constexpr std::size_t mostQuoted = 100;

std::string seconds(std::chrono::milliseconds time) {
  return std::to_string(time.count() / 1'000) + "." + std::to_string(time.count() % 1'000 / 100) +
         " s";
}

CheckVerdict verdictOn(WireFault fault, std::string_view request, const CheckLimits& limits) {
  const std::string after = "after " + quoted(request) + " ";
  switch (fault) {
    case WireFault::closed:
      return failedCheck(after + "the host hung up: answer every request and keep the connection");
    case WireFault::silent:
      return failedCheck(after + "nothing came within " + seconds(limits.answer) +
                         ": answer every request with one line");
    case WireFault::incomplete:
      return failedCheck(after + "a line without its end came: end every answer with a line feed");
    case WireFault::tooLong:
      return failedCheck(after + "a line of more than 16 MiB came: no reader takes it, refuse");
  }
  __builtin_unreachable();
}

}  // namespace

std::string quoted(std::string_view text) {
  const bool isLong = text.size() > mostQuoted;
  return "\"" + printable(text.substr(0, mostQuoted)) + (isLong ? "...\"" : "\"");
}

Checked<void> Talk::send(BytesView bytes) {
  if (wire.send(bytes, host->answerDeadline())) return {};
  return failing("the host hung up or stopped reading while a request was sent: read each request");
}

Checked<Bytes> Talk::line(std::string_view request) {
  auto line = wire.line(host->answerDeadline());
  if (!line) return std::unexpected(verdictOn(line.error(), request, host->limits()));
  return std::move(*line);
}

Checked<Bytes> Talk::askLine(std::string_view request) {
  if (auto sent = send(std::string(request) + "\n"); !sent) return std::unexpected(sent.error());
  return line(request);
}

Checked<Answer> Talk::askText(std::string_view request) {
  auto line = askLine(request);
  if (!line) return std::unexpected(line.error());
  auto response = ControlWire::decode<ControlResponse>(*line);
  if (!response) {
    return failing("the answer to " + quoted(request) + " cannot be read (" +
                   printable(description(response.error())) + "): " + quoted(*line));
  }
  return Answer{.line = std::move(*line), .response = std::move(*response)};
}

Checked<Answer> Talk::ask(const ControlRequest& request) { return askText(textOf(request)); }

HostProbe::HostProbe(std::string socketPath, const CheckLimits& chosen)
    : socket(std::move(socketPath)),
      bounds(chosen),
      end(std::chrono::steady_clock::now() + chosen.whole) {}

Deadline HostProbe::in(std::chrono::milliseconds time) const {
  return std::min(end, std::chrono::steady_clock::now() + time);
}

Checked<Talk> HostProbe::talk() const {
  auto wire = RawConnection::open(socket, answerDeadline());
  if (!wire) {
    return failing("no connection (" + printable(wire.error()) +
                   "): listen, and take every connection at once");
  }
  return Talk(std::move(*wire), *this);
}

Checked<Answer> HostProbe::ask(const ControlRequest& request) const {
  return askText(textOf(request));
}

Checked<Answer> HostProbe::askText(std::string_view request) const {
  auto connection = talk();
  if (!connection) return std::unexpected(connection.error());
  return connection->askText(request);
}

const Material& HostProbe::material() {
  if (!found) found = findMaterial(*this);
  return *found;
}

const StreamedFile& HostProbe::fileStream() {
  if (!file) {
    file = material().file ? readFileStream(*this, material().file->location) : StreamedFile();
  }
  return *file;
}

const StreamedTree& HostProbe::treeStream() {
  if (tree) return *tree;
  if (material().file) {
    const std::string& location = material().file->location;
    const std::size_t slash = location.rfind('/');
    tree = readTreeStream(*this, location.substr(0, slash), location.substr(slash + 1));
  } else if (!material().shares.empty()) {
    tree = readTreeStream(*this, material().folder.value_or(material().shares.front()), "");
  } else {
    tree.emplace();
  }
  return *tree;
}

std::string textOf(const ControlRequest& request) {
  std::string line = ControlWire::encode(request).value_or("\n");
  line.pop_back();
  return line;
}

ControlRequest sharesRequest() { return {.op = ControlOp::shares}; }
ControlRequest statRequest(const std::string& location) {
  return {.op = ControlOp::stat, .name = location};
}
ControlRequest listRequest(const std::string& location) {
  return {.op = ControlOp::list, .name = location};
}
ControlRequest readRequest(const std::string& location, std::int64_t offset, std::int64_t length) {
  return {.op = ControlOp::read, .name = location, .offset = offset, .length = length};
}

}  // namespace tarnel
