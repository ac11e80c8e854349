// One connection to the host on which several requests belong together. Errors are sentences for
// the user. Threads: one.
#pragma once

#include <expected>
#include <string>

#include "control/ControlClient.h"

namespace tarnel {

class HostDialog {
 public:
  [[nodiscard]] static std::expected<HostDialog, std::string> open(const std::string& socket);
  ~HostDialog();
  HostDialog(HostDialog&& other) noexcept;
  HostDialog& operator=(HostDialog&&) = delete;

  // Whatever the host answers, also an error; its message is for the caller to tell.
  [[nodiscard]] std::expected<ControlResponse, std::string> ask(const ControlRequest& request);

 private:
  HostDialog(ControlClient connected, std::string path)
      : client(std::move(connected)), socket(std::move(path)) {}

  ControlClient client;
  std::string socket;
  bool isOpen = true;
};

}  // namespace tarnel
