// A host that does as the reference host does, but for one fault.
//
//   FaultyHost host([](const Exchange& exchange) { return HostReply().answer("nonsense"); });
//
// Requests are passed on to a real reference host, and the fault makes the reply of the answer. The
// two streams are made here, from the reference host's answers. Threads: the fault is called by one
// for each connection.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "control/ControlStreamFrame.h"
#include "host/ReferenceHost.h"
#include "support/FileTree.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {

struct Exchange {
  std::string line;                       // the request, without its line feed
  std::optional<ControlRequest> request;  // absent for what is none
  std::string answer;                     // the right one, without its line feed; not for streams
  std::vector<StreamFrame> frames;        // of a stream

  [[nodiscard]] bool is(ControlOp op) const { return request && request->op == op; }
  [[nodiscard]] bool isAbout(std::string_view location) const {
    return request && request->name.value_or("") == location;
  }
  [[nodiscard]] bool isStream() const {
    return is(ControlOp::readStream) || is(ControlOp::readTreeStream);
  }
  [[nodiscard]] ControlResponse response() const;
};

using Fault = std::function<HostReply(const Exchange&)>;

[[nodiscard]] HostReply rightReply(const Exchange& exchange);
[[nodiscard]] HostReply replyOf(const ControlResponse& response);
[[nodiscard]] HostReply replyOf(const std::vector<StreamFrame>& frames);

class FaultyHost {
 public:
  explicit FaultyHost(Fault fault);

  [[nodiscard]] const std::string& path() const { return host.path(); }
  // Every connection that comes is greeted with this.
  void greet(const std::string& bytes);

 private:
  [[nodiscard]] Exchange exchange(const std::string& line) const;
  [[nodiscard]] std::string ask(const std::string& line) const;
  [[nodiscard]] ControlResponse ask(const ControlRequest& request) const;
  [[nodiscard]] Bytes bytesOf(const std::string& location) const;
  void streamFile(const ControlRequest& request, std::vector<StreamFrame>& frames) const;
  void streamTree(const std::string& location, const std::string& relpath,
                  std::vector<StreamFrame>& frames) const;
  [[nodiscard]] std::vector<StreamFrame> framesFor(const ControlRequest& request) const;

  FileTree tree;
  std::unique_ptr<ReferenceHost> reference;
  ScriptedHost host;  // gone first
};

}  // namespace tarnel::test
