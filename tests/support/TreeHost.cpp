#include "support/TreeHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "control/Base64.h"
#include "control/ControlWire.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

std::string lastName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

TreeHost::TreeHost() {
  folder("me/Docs");
  host.answerWith([this](const std::string& line) { return reply(line); });
}

void TreeHost::folder(const std::string& path) {
  MutexLock hold(lock);
  ControlStat status;
  status.name = lastName(path);
  status.mtimeMs = someTime;
  status.isDirectory = true;
  status.nlink = 2;
  nodes[path] = {.status = status, .bytes = {}};
}

void TreeHost::file(const std::string& path, std::string bytes, std::int64_t mtimeMs) {
  MutexLock hold(lock);
  ControlStat status;
  status.name = lastName(path);
  status.size = static_cast<std::int64_t>(bytes.size());
  status.mtimeMs = mtimeMs;
  status.mode = 0644;
  status.nlink = 1;
  nodes[path] = {.status = status, .bytes = std::move(bytes)};
}

void TreeHost::remove(const std::string& path) {
  MutexLock hold(lock);
  nodes.erase(path);
}

void TreeHost::answer(const Question& question, HostReply reply) {
  MutexLock hold(lock);
  others[question] = std::move(reply);
}

void TreeHost::answerAsUsual() {
  MutexLock hold(lock);
  others.clear();
}

void TreeHost::limitChunks(std::size_t bytes) {
  MutexLock hold(lock);
  chunkLimit = bytes;
}

std::size_t TreeHost::asked(const Question& question) const {
  MutexLock hold(lock);
  const auto found = counts.find(question);
  return found == counts.end() ? 0 : found->second;
}

std::size_t TreeHost::asked(ControlOp op) const {
  MutexLock hold(lock);
  std::size_t sum = 0;
  for (const auto& [question, count] : counts) sum += question.op == op ? count : 0;
  return sum;
}

bool TreeHost::waitUntilAsked(const Question& question, std::size_t times) const {
  return eventually([&] { return asked(question) >= times; });
}

std::string TreeHost::lineOf(const ControlResponse& response) {
  std::string line = ControlWire::encode(response).value_or("\n");
  line.pop_back();
  return line;
}

ControlStat TreeHost::statusOf(const std::string& path) const {
  MutexLock hold(lock);
  const auto found = nodes.find(path);
  return found == nodes.end() ? ControlStat() : found->second.status;
}

HostReply TreeHost::reply(const std::string& line) {
  const auto request = ControlWire::decode<ControlRequest>(line);
  if (!request) {
    ADD_FAILURE() << "not a request: " << line;
    return HostReply().hangUp();
  }
  const Question question{.op = request->op, .path = request->name.value_or("")};
  MutexLock hold(lock);
  ++counts[question];
  const auto other = others.find(question);
  if (other != others.end()) return other->second;
  return HostReply().answer(lineOf(respond(*request)));
}

ControlResponse TreeHost::respond(const ControlRequest& request) {
  ControlResponse response;
  if (request.op == ControlOp::shares) {
    response.shares.emplace();
    for (const ControlStat& child : childrenOf("me")) {
      response.shares->push_back({.name = child.name, .isRemote = false});
    }
    return response;
  }
  const auto found = nodes.find(request.name.value_or(""));
  if (found == nodes.end()) return ControlResponse::error("no such file");
  if (request.op == ControlOp::stat) response.stat = found->second.status;
  if (request.op == ControlOp::list) response.entries = childrenOf(found->first);
  if (request.op == ControlOp::read) {
    const std::string& bytes = found->second.bytes;
    const auto offset =
        std::min(static_cast<std::size_t>(request.offset.value_or(0)), bytes.size());
    const auto length = std::min(static_cast<std::size_t>(request.length.value_or(0)), chunkLimit);
    response.dataBase64 = base64::encode(std::string_view(bytes).substr(offset, length));
  }
  return response;
}

std::vector<ControlStat> TreeHost::childrenOf(const std::string& path) {
  std::vector<ControlStat> children;
  for (const auto& [name, node] : nodes) {
    if (parentOf(name) == path) children.push_back(node.status);
  }
  return children;
}

}  // namespace tarnel::test
