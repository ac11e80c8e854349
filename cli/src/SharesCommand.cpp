#include <future>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "HostAbsence.h"
#include "control/JsonWriter.h"
#include "fs/ControlFabricSource.h"
#include "fs/TarnelFileSystem.h"

namespace tarnel {
namespace {

using Listing = FabricSource::Result<std::vector<FabricShare>>;

Listing askForShares(const std::string& socket) {
  const auto client = std::make_shared<DualControlClient>(
      socket, TarnelFileSystem::metadataTimeout, TarnelFileSystem::bulkTimeout, "tarnel.command");
  std::promise<Listing> answer;
  ControlFabricSource source(client);
  source.shareListing([&](Listing listing) { answer.set_value(std::move(listing)); });
  Listing listing = answer.get_future().get();
  source.cancelAll();
  return listing;
}

std::string line(const FabricShare& share, bool json) {
  if (!json) {
    return shown(share.peer + "/" + share.name) + (share.isRemote ? "\tremote\n" : "\n");
  }
  JsonWriter writer;
  writer.beginObject();
  writer.field("peer", share.peer);
  writer.field("name", share.name);
  writer.field("isRemote", share.isRemote);
  writer.endObject();
  return writer.finish().value_or("") + "\n";
}

}  // namespace

int runShares(const VolumeArguments& arguments) {
  const Listing listing = askForShares(arguments.socket);
  if (!listing) return fail(hostFailure(arguments.socket, description(listing.error())));
  for (const FabricShare& share : *listing) {
    if (!print(line(share, arguments.json))) break;
  }
  return statusAfterPrinting();
}

}  // namespace tarnel
