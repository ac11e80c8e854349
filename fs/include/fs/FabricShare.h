// A share as the volume sees it.
#pragma once

#include <string>

#include "control/Text.h"

namespace tarnel {

struct FabricShare {
  std::string peer;       // the peer that offers it, as the host names it
  std::string name;       // the share's own name
  bool isRemote = false;  // lives on another machine

  friend bool operator==(const FabricShare& a, const FabricShare& b) {
    return textEqual(a.peer, b.peer) && textEqual(a.name, b.name) && a.isRemote == b.isRemote;
  }
};

}  // namespace tarnel
