// What a reference host serves, where, and within which bounds.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "control/ControlWire.h"
#include "host/PathWalk.h"
#include "host/SecretScan.h"
#include "host/ShareTable.h"

namespace tarnel {

// One line for people, without a line feed; nothing in it is longer than a location or can control
// a terminal. Called from any thread, also from several at once.
using HostLog = std::function<void(std::string_view)>;

struct HostOptions {
  std::string socketPath;
  std::vector<ShareDefinition> shares = {};
  HostLog log = {};
  IsOwnMount isOwnMount = {};
  std::size_t maxConnections = 64;   // each is a thread; one more is closed at once
  SecretScanLimits secretScan = {};  // of a folder that is to be shared
  std::size_t maxAnswerBytes = ControlWire::maxFrameBytes;  // of a listing's line; tests lower it
};

}  // namespace tarnel
