// A file system, and its loads and unloads as calls that wait for their reply.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "VolumeTest.h"
#include "fs/TarnelFileSystem.h"
#include "support/MadeItem.h"

namespace tarnel::test {

class TestResource final : public Resource {
 public:
  [[nodiscard]] std::string_view typeName() const override { return "TestResource"; }
};

class FileSystemTest : public testing::Test {
 protected:
  FileSystemTest() {
    recording.setDebug(false);
    recording.clear();
  }

  std::shared_ptr<FabricVolume> load(TarnelFileSystem& fileSystem,
                                     const TaskOptions& options = {}) const {
    Awaited<TarnelFileSystem::VolumeReply> reply;
    fileSystem.loadResource(resource, options, reply.reply());
    auto [volume, error] = reply.wait();
    EXPECT_EQ(error, std::nullopt);
    return volume;
  }

  OptionalError unload(TarnelFileSystem& fileSystem) const {
    Awaited<ErrorReply> reply;
    fileSystem.unloadResource(resource, {}, reply.reply());
    return std::get<0>(reply.wait());
  }

  // Makes the volume ask the host for a stat of me/Docs.
  static void ask(const std::shared_ptr<FabricVolume>& volume, AttributesReply reply) {
    const auto share = madeItem("me/Docs", 4, 3, false, std::nullopt);
    volume->getAttributes(allAttributes, share, std::move(reply));
  }

  RecordingLog& recording = RecordingLog::installed();
  TestResource resource;
};

}  // namespace tarnel::test
