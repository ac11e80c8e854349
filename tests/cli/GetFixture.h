// Runs `tarnel get` against a host in this process that says what the test wants it to say.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "control/ControlStreamFrame.h"
#include "control/TreeRecord.h"
#include "support/RunProgram.h"
#include "support/TempDir.h"
#include "support/TreeHost.h"

namespace tarnel::test {

using testing::HasSubstr;
using testing::Not;

// The bytes of a stream, frame by frame:  StreamBytes().folder("a").file("a/f", "hello").eof()
class StreamBytes {
 public:
  StreamBytes& folder(const std::string& relpath, std::uint32_t mode = 040755) {
    return header({.relpath = relpath, .kind = TreeHeader::Kind::dir, .mode = mode});
  }
  // Announced, without its bytes.
  StreamBytes& announce(const std::string& relpath, std::int64_t size,
                        std::uint32_t mode = 0100644) {
    return header({.relpath = relpath, .kind = TreeHeader::Kind::file, .mode = mode, .size = size});
  }
  StreamBytes& file(const std::string& relpath, const std::string& content,
                    std::uint32_t mode = 0100644) {
    announce(relpath, static_cast<std::int64_t>(content.size()), mode);
    return content.empty() ? *this : data(content);
  }
  StreamBytes& header(TreeHeader header) {
    all += TreeRecord::entry(std::move(header)).frame();
    return *this;
  }
  StreamBytes& data(const std::string& content) { return frame(ControlStreamFrame::data, content); }
  StreamBytes& fileError(const std::string& text) {
    return frame(ControlStreamFrame::fileError, text);
  }
  StreamBytes& error(const std::string& text) { return frame(ControlStreamFrame::error, text); }
  StreamBytes& eof() { return frame(ControlStreamFrame::eof, ""); }
  StreamBytes& frame(std::uint8_t tag, const std::string& payload) {
    all += ControlStreamFrame::encode(tag, payload);
    return *this;
  }
  StreamBytes& raw(const std::string& more) {
    all += more;
    return *this;
  }
  [[nodiscard]] const std::string& bytes() const { return all; }
  [[nodiscard]] HostReply reply() const { return HostReply().send(all); }

 private:
  std::string all;
};

class GetFixture : public testing::Test {
 protected:
  static constexpr const char* docs = "me/Docs";

  // The stream of me/Docs, which TreeHost lists as usual.
  void streamDocs(const StreamBytes& stream) {
    host.answer({.op = ControlOp::readTreeStream, .path = docs}, stream.reply());
  }
  void streamFile(const std::string& path, const StreamBytes& stream) {
    host.answer({.op = ControlOp::readStream, .path = path}, stream.reply());
  }
  ProgramOutcome get(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"get", "--socket", host.path()});
    return runTarnel(std::move(arguments));
  }
  // me/Docs into the destination.
  ProgramOutcome getDocs(std::vector<std::string> options = {}) {
    options.insert(options.end(), {docs, dest.path()});
    return get(std::move(options));
  }
  // A copy that fails as a whole or in part, with these words on one of its lines.
  static void expectFailed(const ProgramOutcome& outcome, const std::string& words) {
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(words));
  }
  static void expectDone(const ProgramOutcome& outcome) {
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "");
  }

  // Below the destination; "" for a file that is not there.
  [[nodiscard]] std::string content(const std::string& relative) const {
    std::ifstream file(dest / relative, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  [[nodiscard]] bool exists(const std::string& relative) const {
    return std::filesystem::exists(std::filesystem::symlink_status(dest / relative));
  }
  [[nodiscard]] struct stat statusOf(const std::string& relative) const {
    struct stat status{};
    EXPECT_EQ(::lstat((dest / relative).c_str(), &status), 0) << relative;
    return status;
  }
  [[nodiscard]] mode_t modeOf(const std::string& relative) const {
    return statusOf(relative).st_mode & 07777;
  }
  [[nodiscard]] std::int64_t secondsOf(const std::string& relative) const {
    return statusOf(relative).st_mtim.tv_sec;
  }
  // Everything below a folder, for "nothing else is there".
  [[nodiscard]] static std::vector<std::string> below(const std::string& folder) {
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      all.push_back(std::filesystem::relative(entry.path(), folder).string());
    }
    std::sort(all.begin(), all.end());
    return all;
  }
  [[nodiscard]] std::vector<std::string> copied() const { return below(dest.path()); }

  TreeHost host;
  TempDir dest;
};

}  // namespace tarnel::test
