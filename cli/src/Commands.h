// The commands, one source each. Each returns an exit status (Console.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

struct HostArguments {
  std::string socket;
  bool socketIsGiven = false;             // by an option or the environment
  std::vector<std::string> shares = {};   // NAME=DIR
  std::vector<std::string> peers = {};    // PEER/NAME=DIR
  std::vector<std::string> folders = {};  // DIR, shared under its own name
};
int runHost(const HostArguments& arguments);

struct MountArguments {
  std::string socket;
  bool socketIsGiven = false;  // by an option
  std::string mountpoint = {};
  std::vector<std::string> options = {};  // as -o gives them
  bool foreground = false;
  bool debug = false;
};
// What -o takes on this system.
extern const std::string_view mountOptionNames;
int runMount(const MountArguments& arguments);

struct UnmountArguments {
  std::string mountpoint = {};
  bool lazy = false;
};
int runUnmount(const UnmountArguments& arguments);

struct ShareArguments {
  std::string socket;
  std::string share = {};  // NAME=DIR
  bool yes = false;
  bool force = false;
  bool json = false;
};
int runShare(const ShareArguments& arguments);

struct UnshareArguments {
  std::string socket;
  std::string name = {};
  bool json = false;
};
int runUnshare(const UnshareArguments& arguments);

struct VolumeArguments {
  std::string socket;
  std::vector<std::string> paths = {};
  bool json = false;
  bool longFormat = false;
};
int runShares(const VolumeArguments& arguments);
int runList(const VolumeArguments& arguments);
int runStat(const VolumeArguments& arguments);
int runCat(const VolumeArguments& arguments);

struct CheckArguments {
  std::string socket;
  bool json = false;
};
int runCheckHost(const CheckArguments& arguments);

struct GetArguments {
  std::string socket;
  std::vector<std::string> paths = {};  // of the volume, the destination last
  bool json = false;
  bool force = false;
  bool resume = false;
};
int runGet(const GetArguments& arguments);

}  // namespace tarnel
