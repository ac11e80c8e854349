// What a ScriptedHost does about one request, step by step in the order of the calls.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tarnel::test {

class HostReply {
 public:
  struct Step {
    enum class Kind { send, stall, hangUp };
    Kind kind;
    std::string bytes = {};
    std::size_t piece = 0;  // bytes of each write; 0 is all at once
  };

  // One whole answer: the text and a line feed.
  HostReply& answer(const std::string& line) { return send(line + "\n"); }
  // These bytes, as they are.
  HostReply& send(std::string bytes) {
    return add({.kind = Step::Kind::send, .bytes = std::move(bytes)});
  }
  // What was added last goes out in pieces, each once the client has read the one before.
  HostReply& inPiecesOf(std::size_t bytes) {
    all.back().piece = bytes;
    return *this;
  }
  // Nothing more until ScriptedHost::release(), or until the client hangs up.
  HostReply& stall() { return add({.kind = Step::Kind::stall}); }
  HostReply& hangUp() { return add({.kind = Step::Kind::hangUp}); }

  [[nodiscard]] const std::vector<Step>& steps() const { return all; }

 private:
  HostReply& add(Step step) {
    all.push_back(std::move(step));
    return *this;
  }

  std::vector<Step> all;
};

}  // namespace tarnel::test
