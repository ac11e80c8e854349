// Lists the shares that a host offers, one PEER/NAME a line.
//   list-shares SOCKET
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include "control/ControlClient.h"
#include "control/Printable.h"

namespace tarnel::examples {

int fail(const std::string& why) {
  std::cerr << "list-shares: " << why << std::endl;
  return 1;
}

int run(int argc, char** argv) {
  if (argc != 2) return fail("usage: list-shares SOCKET");
  auto client = ControlClient::connect(argv[1]);
  if (!client) return fail(description(client.error()));
  client->setDeadline(5);  // seconds of silence
  const auto response = client->send({.op = ControlOp::shares});
  client->close();
  if (!response) {
    return fail(std::visit([](const auto& error) { return description(error); }, response.error()));
  }
  // What counts is the payload, not the status: a host without shares may leave both lists out.
  for (const auto& share : response->shares.value_or(std::vector<SourceShare>())) {
    std::cout << "me/" << printable(share.name) << "\n";
  }
  for (const auto& share : response->remoteShares.value_or(std::vector<RemoteShareInfo>())) {
    std::cout << printable(share.peer) << "/" << printable(share.name) << "\n";
  }
  return 0;
}

}  // namespace tarnel::examples

int main(int argc, char** argv) { return tarnel::examples::run(argc, argv); }
