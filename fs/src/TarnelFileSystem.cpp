#include "fs/TarnelFileSystem.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "control/DualControlClient.h"
#include "fs/ControlFabricSource.h"
#include "fs/FSIdentity.h"
#include "seam/VolumeLog.h"

namespace tarnel {
namespace {

std::string homeDirectory() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  passwd user{};
  passwd* found = nullptr;
  std::array<char, 4096> texts;
  ::getpwuid_r(::getuid(), &user, texts.data(), texts.size(), &found);
  return found != nullptr ? found->pw_dir : "/";
}

// Milliseconds since 1970, truncated toward zero. A clock that cannot be told so ends the process.
std::int64_t nowMs() {
  const std::chrono::duration<double> sinceEpoch =
      std::chrono::system_clock::now().time_since_epoch();
  const double ms = std::trunc(sinceEpoch.count() * 1000);
  constexpr double limit = 9'223'372'036'854'775'808.0;  // 2^63
  if (!std::isfinite(ms) || ms < -limit || ms >= limit) std::abort();
  return static_cast<std::int64_t>(ms);
}

// Of a list that is not empty.
std::string joined(const std::vector<std::string>& options) {
  std::string text = options.front();
  for (std::size_t i = 1; i < options.size(); ++i) text += ' ' + options[i];
  return text;
}

}  // namespace

TarnelFileSystem::TarnelFileSystem(std::string socketPath, std::function<void()> ready)
    : givenSocketPath(std::move(socketPath)), becameReady(std::move(ready)) {}

std::string TarnelFileSystem::socketPath() const {
  return givenSocketPath ? *givenSocketPath : TarnelFSKitSocket::appexPath(homeDirectory());
}

void TarnelFileSystem::probeResource(const Resource&, const ProbeReply& reply) const {
  reply({.isUsable = true,
         .name = std::string(FSIdentity::shortName()),
         .containerID = FSIdentity::uuid()},
        std::nullopt);
}

void TarnelFileSystem::loadResource(const Resource& resource, const TaskOptions& options,
                                    const VolumeReply& reply) {
  log().loadResource(resource.typeName());
  const std::string path = socketPath();
  if (!options.taskOptions.empty()) log().mountOptions(joined(options.taskOptions));
  auto client = std::make_shared<DualControlClient>(
      path, metadataTimeout, bulkTimeout, std::string(clientLabel), std::make_shared<TaskPool>());
  auto loaded = FabricVolume::make(FSIdentity::uuid(), std::string(volumeName),
                                   std::make_shared<ControlFabricSource>(std::move(client)),
                                   ::getuid(), ::getgid(), nowMs());
  {
    std::shared_ptr<FabricVolume> replaced;  // goes after the lock
    MutexLock hold(lock);
    replaced = std::exchange(volume, loaded);
  }
  status = ContainerStatus::ready;
  if (becameReady) becameReady();
  log().loaded(volumeName, path);
  reply(std::move(loaded), std::nullopt);
}

void TarnelFileSystem::unloadResource(const Resource&, const TaskOptions&,
                                      const ErrorReply& reply) {
  std::shared_ptr<FabricVolume> forgotten;
  {
    MutexLock hold(lock);
    std::swap(volume, forgotten);
  }
  if (forgotten) forgotten->cancelAll();
  log().unloaded();
  reply(std::nullopt);
}

}  // namespace tarnel
