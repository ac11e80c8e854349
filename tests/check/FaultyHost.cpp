#include "FaultyHost.h"

#include <sys/stat.h>

#include <algorithm>

#include "control/Base64.h"
#include "control/ControlWire.h"
#include "control/Text.h"
#include "control/TreeRecord.h"
#include "host/RawClient.h"

namespace tarnel::test {
namespace {

constexpr std::int64_t window = ControlStreamFrame::window;

StreamFrame frameOf(std::uint8_t tag, Bytes payload = {}) {
  return {.tag = tag, .payload = std::move(payload)};
}

StreamFrame headerOf(const TreeHeader& header) {
  Bytes json = ControlWire::encode(header).value_or("\n");
  json.pop_back();
  return frameOf(ControlStreamFrame::header, std::move(json));
}

std::string varied(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(i * 7 + i / 256));
  return bytes;
}

}  // namespace

ControlResponse Exchange::response() const {
  return ControlWire::decode<ControlResponse>(answer).value_or(ControlResponse());
}

HostReply rightReply(const Exchange& exchange) {
  return exchange.isStream() ? replyOf(exchange.frames) : HostReply().answer(exchange.answer);
}

HostReply replyOf(const ControlResponse& response) {
  return HostReply().send(ControlWire::encode(response).value_or("\n"));
}

HostReply replyOf(const std::vector<StreamFrame>& frames) {
  Bytes bytes;
  for (const StreamFrame& frame : frames) {
    bytes += ControlStreamFrame::encode(frame.tag, frame.payload);
  }
  return HostReply().send(bytes);
}

FaultyHost::FaultyHost(Fault fault) {
  tree.file("Docs/a.txt", varied(5'000));
  tree.file("Docs/big", varied(300'000));
  tree.file("Docs/empty");
  tree.file("Docs/tab\there", "x");
  tree.file("Docs/.DS_Store", "noise");
  tree.file("Docs/secret", "secret");
  ::chmod((tree / "Docs/secret").c_str(), 0600);
  tree.file("Docs/sub/b", "bytes of b");
  tree.folder("Docs/none");
  const std::string socket = tree / "s";
  auto started = ReferenceHost::start(
      {.socketPath = socket, .shares = {{.name = "Docs", .folder = tree / "Docs"}}});
  if (!started) {
    ADD_FAILURE() << description(started.error());
  } else {
    reference = std::move(*started);
  }
  ::chmod(host.path().c_str(), 0600);
  host.answerWith([this, fault](const std::string& line) { return fault(exchange(line)); });
}

void FaultyHost::greet(const std::string& bytes) {
  constexpr int connections = 100;
  for (int i = 0; i < connections; ++i) host.greetNext().send(bytes);
}

Exchange FaultyHost::exchange(const std::string& line) const {
  Exchange exchange{.line = line, .request = {}, .answer = {}, .frames = {}};
  if (auto request = ControlWire::decode<ControlRequest>(line)) exchange.request = *request;
  if (exchange.isStream()) {
    exchange.frames = framesFor(*exchange.request);
  } else {
    exchange.answer = ask(line);
  }
  return exchange;
}

std::string FaultyHost::ask(const std::string& line) const {
  return RawClient(tree / "s").ask(line).value_or("");
}

ControlResponse FaultyHost::ask(const ControlRequest& request) const {
  std::string line = ControlWire::encode(request).value_or("\n");
  line.pop_back();
  return ControlWire::decode<ControlResponse>(ask(line)).value_or(ControlResponse());
}

Bytes FaultyHost::bytesOf(const std::string& location) const {
  Bytes bytes;
  while (true) {
    const auto answer = ask({.op = ControlOp::read,
                             .name = location,
                             .offset = static_cast<std::int64_t>(bytes.size()),
                             .length = window});
    const auto piece = base64::decode(answer.dataBase64.value_or(""));
    if (!piece || piece->empty()) return bytes;
    bytes += *piece;
  }
}

void FaultyHost::streamFile(const ControlRequest& request, std::vector<StreamFrame>& frames) const {
  Bytes bytes = bytesOf(request.name.value_or(""));
  bytes.erase(0, static_cast<std::size_t>(request.offset.value_or(0)));
  if (request.length)
    bytes.resize(std::min(bytes.size(), static_cast<std::size_t>(*request.length)));
  for (std::size_t sent = 0; sent < bytes.size(); sent += window) {
    frames.push_back(frameOf(ControlStreamFrame::data, bytes.substr(sent, window)));
  }
}

void FaultyHost::streamTree(const std::string& location, const std::string& relpath,
                            std::vector<StreamFrame>& frames) const {
  const auto status = ask({.op = ControlOp::stat, .name = location}).stat.value_or(ControlStat());
  if (!relpath.empty() || !status.isDirectory) {
    const auto kind = status.isDirectory ? TreeHeader::Kind::dir : TreeHeader::Kind::file;
    frames.push_back(headerOf({.relpath = relpath.empty() ? status.name : relpath,
                               .kind = kind,
                               .mode = status.mode,
                               .size = status.size}));
  }
  if (!status.isDirectory) {
    return streamFile({.op = ControlOp::readStream, .name = location}, frames);
  }
  auto listing =
      ask({.op = ControlOp::list, .name = location}).entries.value_or(std::vector<ControlStat>());
  sortByText(listing, [](const ControlStat& entry) -> const std::string& { return entry.name; });
  for (const ControlStat& entry : listing) {
    if (TreeHeader::isNoise(entry.name)) continue;
    streamTree(location + "/" + entry.name,
               relpath.empty() ? entry.name : relpath + "/" + entry.name, frames);
  }
}

std::vector<StreamFrame> FaultyHost::framesFor(const ControlRequest& request) const {
  const std::string location = request.name.value_or("");
  const ControlResponse answer = ask({.op = ControlOp::stat, .name = location});
  const bool isTree = request.op == ControlOp::readTreeStream;
  if (!answer.stat) {
    return {frameOf(ControlStreamFrame::error, answer.message.value_or(""))};
  }
  if (answer.stat->isDirectory && !isTree) {
    return {frameOf(ControlStreamFrame::error, "is a directory")};
  }
  std::vector<StreamFrame> frames;
  if (isTree) {
    streamTree(location, "", frames);
  } else {
    streamFile(request, frames);
  }
  frames.push_back(frameOf(ControlStreamFrame::eof));
  return frames;
}

}  // namespace tarnel::test
