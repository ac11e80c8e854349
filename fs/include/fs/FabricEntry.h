// The children of a directory: as the volume lists them, and ready to be packed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "control/FileStat.h"
#include "seam/ItemAttributes.h"

namespace tarnel {

// One directory entry ready to be packed. itemType is directory or file, nothing else.
struct FabricEntry {
  std::string name;
  ItemType itemType = ItemType::file;
  std::uint64_t id = 0;
  std::optional<ItemAttributes> attributes = {};  // absent when names alone were asked for
};

// One child as a listing found it, before anybody asked for attributes.
struct FabricChild {
  FileStat status;
  std::uint64_t id = 0;
  bool isSynthesized = false;  // a peer or a share as its parent lists it
};

}  // namespace tarnel
