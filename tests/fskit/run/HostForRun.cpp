#include "HostForRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "support/TempDir.h"
#include "support/TreeHost.h"

using tarnel::ControlOp;
using tarnel::test::HostReply;
using tarnel::test::TempDir;
using tarnel::test::TreeHost;

struct HostForRun {
  TempDir folder;
  const std::string home = folder.path();
  TreeHost tree;
};

namespace {

TreeHost::Question question(const char* op, const char* path) {
  const std::string_view name = op;
  if (name == "shares") return {.op = ControlOp::shares};
  return {.op = name == "list"   ? ControlOp::list
                : name == "read" ? ControlOp::read
                                 : ControlOp::stat,
          .path = path};
}

}  // namespace

HostForRun* hostMake() {
  auto* const host = new HostForRun;
  // A home's own socket, wherever the host listens.
  std::filesystem::create_symlink(host->tree.path(), host->home + "/tarnel-control.sock");
  return host;
}

bool hostFree(HostForRun* host) {
  delete host;
  return !testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();
}

const char* hostHome(const HostForRun* host) { return host->home.c_str(); }

void hostFile(HostForRun* host, const char* path, const char* bytes, size_t length) {
  host->tree.file(path, std::string(bytes, length));
}

void hostRemove(HostForRun* host, const char* path) { host->tree.remove(path); }

void hostLimitChunks(HostForRun* host, size_t bytes) { host->tree.limitChunks(bytes); }

void hostStall(HostForRun* host, const char* op, const char* path) {
  host->tree.answer(question(op, path), HostReply().stall());
}

void hostDelayList(HostForRun* host, const char* path, const char* child) {
  tarnel::ControlResponse response;
  response.entries = {host->tree.statusOf(std::string(path) + "/" + child)};
  host->tree.answer(question("list", path), HostReply().stall().answer(TreeHost::lineOf(response)));
}

void hostDelayRead(HostForRun* host, const char* path, const char* base64) {
  host->tree.answer(
      question("read", path),
      HostReply().stall().answer(R"({"status":"ok","dataBase64":")" + std::string(base64) + "\"}"));
}

void hostRelease(HostForRun* host) { host->tree.release(); }

void hostRefuse(HostForRun* host, const char* op, const char* path, const char* message) {
  host->tree.answer(question(op, path), HostReply().answer(R"({"status":"error","message":")" +
                                                           std::string(message) + "\"}"));
}

void hostAnswerAsUsual(HostForRun* host) { host->tree.answerAsUsual(); }

size_t hostAsked(const HostForRun* host, const char* op, const char* path) {
  return host->tree.asked(question(op, path));
}

bool hostWaitUntilAsked(const HostForRun* host, const char* op, const char* path, size_t times) {
  return host->tree.waitUntilAsked(question(op, path), times);
}
