#include "control/DualControlClient.h"

#include <utility>

namespace tarnel {
namespace {

bool isBulk(ControlOp op) {
  return op == ControlOp::read || op == ControlOp::readStream || op == ControlOp::readTreeStream;
}

}  // namespace

DualControlClient::DualControlClient(const std::string& socketPath, double metadataSeconds,
                                     double bulkSeconds, const std::string& label,
                                     std::shared_ptr<TaskPool> decoders)
    : metadata(ControlChannel::make(socketPath, label + ".metadata", std::move(decoders))),
      bulk(ControlChannel::make(socketPath, label + ".bulk")),
      metadataTimeout(metadataSeconds),
      bulkTimeout(bulkSeconds) {}

void DualControlClient::request(ControlRequest request, ControlChannelReply reply) {
  if (isBulk(request.op)) {
    bulk->request(std::move(request), bulkTimeout, std::move(reply));
  } else {
    metadata->request(std::move(request), metadataTimeout, std::move(reply));
  }
}

void DualControlClient::cancelAll() {
  metadata->cancelAll();
  bulk->cancelAll();
}

}  // namespace tarnel
