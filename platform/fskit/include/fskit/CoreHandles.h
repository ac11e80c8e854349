// What stands behind the handles of the C surface, for those who are C++ themselves.
#pragma once

#include <memory>

#include "fs/FabricVolume.h"
#include "fs/TarnelFileSystem.h"
#include "fskit/TarnelCore.h"
#include "seam/Item.h"

struct TarnelCoreFileSystem {
  tarnel::TarnelFileSystem fileSystem;
};

struct TarnelCoreVolume {
  std::shared_ptr<tarnel::FabricVolume> volume;
};

struct TarnelCoreItem {
  tarnel::ItemRef item;
};
