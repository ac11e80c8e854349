#include "HostDialog.h"

#include <utility>
#include <variant>

#include "control/UnixSocket.h"

namespace tarnel {
namespace {

// A folder is looked through while we wait, for ten seconds at most.
constexpr double patienceSeconds = 30;

std::string noHost(const std::string& socket, const std::string& why) {
  return "no host answers on " + socket + " (" + why + "): start one with `tarnel host DIR`";
}

}  // namespace

std::expected<HostDialog, std::string> HostDialog::open(const std::string& socket) {
  auto client = ControlClient::connect(socket);
  if (client) {
    client->setDeadline(patienceSeconds);
    return HostDialog(std::move(*client), socket);
  }
  const UnixSocketError& error = client.error();
  if (error.kind == UnixSocketError::Kind::pathTooLong) return std::unexpected(description(error));
  return std::unexpected(noHost(socket, description(error)));
}

HostDialog::~HostDialog() {
  if (isOpen) client.close();
}

HostDialog::HostDialog(HostDialog&& other) noexcept
    : client(std::move(other.client)),
      socket(std::move(other.socket)),
      isOpen(std::exchange(other.isOpen, false)) {}

std::expected<ControlResponse, std::string> HostDialog::ask(const ControlRequest& request) {
  auto response = client.send(request);
  if (response) return std::move(*response);
  const std::string why =
      std::visit([](const auto& error) { return description(error); }, response.error());
  if (std::holds_alternative<EncodingError>(response.error())) {
    return std::unexpected("this cannot be asked for (" + why + ")");
  }
  return std::unexpected(noHost(socket, why));
}

}  // namespace tarnel
