#include "HostDialog.h"

#include <utility>
#include <variant>

#include "HostAbsence.h"
#include "control/UnixSocket.h"

namespace tarnel {
namespace {

// A folder is looked through while we wait, for ten seconds at most.
constexpr double patienceSeconds = 30;

}  // namespace

std::expected<HostDialog, std::string> HostDialog::open(const std::string& socket) {
  if (auto why = whyNoHost(socket)) return std::unexpected(std::move(*why));
  auto client = ControlClient::connect(socket);
  if (!client) return std::unexpected(hostFailure(socket, description(client.error())));
  client->setDeadline(patienceSeconds);
  return HostDialog(std::move(*client), socket);
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
  return std::unexpected(hostFailure(socket, why));
}

}  // namespace tarnel
