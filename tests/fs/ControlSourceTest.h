// A control source against a scripted host over a real socket.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fs/ControlFabricSource.h"
#include "support/Awaited.h"
#include "support/FakeSource.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {

class ControlSourceTest : public testing::Test {
 protected:
  using Kind = FabricSourceError::Kind;

  static constexpr double shortLimit = 0.05;  // seconds, for a host that stays silent
  static constexpr double longLimit = 20.0;

  ControlSourceTest() { useLimits(longLimit, longLimit); }
  ~ControlSourceTest() override { source->cancelAll(); }

  void useLimits(double metadata, double bulk) {
    if (source) source->cancelAll();
    source = std::make_shared<ControlFabricSource>(std::make_shared<DualControlClient>(
        host.path(), metadata, bulk, "test", std::make_shared<TaskPool>()));
  }

  [[nodiscard]] FabricSource::Result<FileStat> stat(const std::string& path) const {
    Awaited<FabricSource::Reply<FileStat>> reply;
    source->stat(path, reply.reply());
    return std::get<0>(reply.wait());
  }

  [[nodiscard]] FabricSource::Result<std::vector<FileStat>> list(const std::string& path) const {
    Awaited<FabricSource::Reply<std::vector<FileStat>>> reply;
    source->list(path, reply.reply());
    return std::get<0>(reply.wait());
  }

  [[nodiscard]] FabricSource::Result<std::vector<FabricShare>> shareListing() const {
    Awaited<FabricSource::Reply<std::vector<FabricShare>>> reply;
    source->shareListing(reply.reply());
    return std::get<0>(reply.wait());
  }

  [[nodiscard]] FabricSource::Result<Bytes> read(const std::string& path, std::int64_t offset,
                                                 std::int64_t length) const {
    Awaited<FabricSource::Reply<Bytes>> reply;
    source->read(path, offset, length, reply.reply());
    return std::get<0>(reply.wait());
  }

  ScriptedHost host;
  std::shared_ptr<ControlFabricSource> source;
};

}  // namespace tarnel::test
