// ls, stat and cat.
#include <array>
#include <ctime>
#include <memory>
#include <optional>
#include <utility>

#include "Commands.h"
#include "Console.h"
#include "VolumeClient.h"
#include "control/ControlResponse.h"
#include "control/JsonWriter.h"
#include "host/AccountNames.h"

namespace tarnel {
namespace {

// What the volume shows of an item, under the keys of the protocol.
ControlStat statOf(const std::string& name, const ItemAttributes& attributes) {
  static AccountNames accounts;
  ControlStat stat;
  stat.name = name;
  stat.size = static_cast<std::int64_t>(attributes.size);
  stat.mtimeMs =
      attributes.modifyTime.seconds * 1000 + attributes.modifyTime.nanoseconds / 1'000'000;
  stat.isDirectory = attributes.type == ItemType::directory;
  stat.mode = attributes.mode;
  stat.nlink = attributes.linkCount;
  stat.owner = accounts.owner(attributes.uid);
  stat.group = accounts.group(attributes.gid);
  return stat;
}

std::string jsonLine(const ControlStat& stat) {
  JsonWriter json;
  json.value(stat);
  return json.finish().value_or("") + "\n";
}

std::string modeText(const ControlStat& stat) {
  std::string text = stat.isDirectory ? "d" : "-";
  for (const int shift : {6, 3, 0}) {
    const std::uint32_t bits = stat.mode >> shift;
    text += (bits & 4) != 0 ? 'r' : '-';
    text += (bits & 2) != 0 ? 'w' : '-';
    text += (bits & 1) != 0 ? 'x' : '-';
  }
  return text;
}

std::string timeText(std::int64_t ms) {
  const std::time_t seconds = ms / 1000 - (ms % 1000 < 0 ? 1 : 0);
  std::tm local{};
  std::array<char, 64> text{};
  if (::localtime_r(&seconds, &local) == nullptr) return std::to_string(ms);
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local)};
}

std::string longLine(const ControlStat& stat) {
  std::string size = std::to_string(stat.size);
  if (size.size() < 12) size.insert(0, 12 - size.size(), ' ');
  return modeText(stat) + " " + std::to_string(stat.nlink) + " " + stat.owner + " " + stat.group +
         " " + size + " " + timeText(stat.mtimeMs) + " " + shown(stat.name) + "\n";
}

std::string line(const ControlStat& stat, const VolumeArguments& arguments) {
  if (arguments.json) return jsonLine(stat);
  return arguments.longFormat ? longLine(stat) : shown(stat.name) + "\n";
}

std::string lastName(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  if (end == std::string::npos) return "/";
  const std::size_t slash = path.rfind('/', end);
  return path.substr(slash == std::string::npos ? 0 : slash + 1, end - (slash + 1) + 1);
}

int failOn(const std::string& path, VolumeError error) {
  return fail((path.empty() ? "/" : path) + ": " + errorName(error));
}

// What a path of the volume leads to, with the volume that it was found in.
struct Found {
  std::unique_ptr<VolumeClient> client;
  ItemRef item;
  ItemAttributes attributes;
};

// Absent when there is no such item, which has been told.
std::optional<Found> find(const std::string& socket, const std::string& path) {
  auto client = VolumeClient::open(socket);
  if (!client) {
    fail(client.error());
    return std::nullopt;
  }
  const auto item = (*client)->resolve(path);
  const auto attributes = item ? (*client)->attributes(*item) : std::unexpected(item.error());
  if (!attributes) {
    failOn(path, attributes.error());
    return std::nullopt;
  }
  return Found{std::move(*client), *item, *attributes};
}

int catOne(VolumeClient& client, const std::string& path) {
  const auto item = client.resolve(path);
  if (!item) return failOn(path, item.error());
  for (std::int64_t offset = 0;;) {
    const auto bytes = client.read(*item, offset);
    if (!bytes) return failOn(path, bytes.error());
    if (bytes->empty() || !print(*bytes)) return statusAfterPrinting();
    offset += static_cast<std::int64_t>(bytes->size());
  }
}

}  // namespace

int runList(const VolumeArguments& arguments) {
  const std::string path = arguments.paths.empty() ? "" : arguments.paths.front();
  const auto found = find(arguments.socket, path);
  if (!found) return failed;
  if (found->attributes.type != ItemType::directory) {
    print(line(statOf(lastName(path), found->attributes), arguments));
    return statusAfterPrinting();
  }
  const auto entries = found->client->list(found->item);
  if (!entries) return failOn(path, entries.error());
  std::string text;
  for (const VolumeClient::Entry& entry : *entries) {
    text += line(statOf(entry.name, entry.attributes), arguments);
  }
  print(text);
  return statusAfterPrinting();
}

int runStat(const VolumeArguments& arguments) {
  const std::string& path = arguments.paths.front();
  const auto found = find(arguments.socket, path);
  if (!found) return failed;
  const ControlStat stat = statOf(lastName(path), found->attributes);
  if (arguments.json) {
    print(jsonLine(stat));
  } else {
    print("name   " + shown(stat.name) + "\ntype   " + (stat.isDirectory ? "directory" : "file") +
          "\nsize   " + std::to_string(stat.size) + "\nmode   " + modeText(stat) + "\nlinks  " +
          std::to_string(stat.nlink) + "\nowner  " + stat.owner + "\ngroup  " + stat.group +
          "\ntime   " + timeText(stat.mtimeMs) + "\nid     " +
          std::to_string(found->attributes.fileID) + "\n");
  }
  return statusAfterPrinting();
}

int runCat(const VolumeArguments& arguments) {
  const auto client = VolumeClient::open(arguments.socket);
  if (!client) return fail(client.error());
  int status = done;
  for (const std::string& path : arguments.paths) {
    if (catOne(**client, path) != done) status = failed;
    if (outputClosed()) break;
  }
  return status;
}

}  // namespace tarnel
