#include "host/SecretScan.h"

#include <algorithm>
#include <utility>

#include "host/BeneathResolver.h"
#include "host/DirectoryNames.h"
#include "host/SecretNames.h"

namespace tarnel {
namespace {

using Clock = std::chrono::steady_clock;

class Scanner {
 public:
  Scanner(int folderFD, const IsOwnMount& isOwnMount, const SecretScanLimits& chosen,
          const std::function<bool()>& over)
      : resolver(folderFD, isOwnMount), limits(chosen), isOver(over) {}

  SecretScan run() {
    enter();
    while (!levels.empty()) {
      Level& level = levels.back();
      if (level.next == level.names.size()) {
        leave();
        continue;
      }
      if (!goesOn()) break;
      look(level.names[level.next++]);
    }
    return std::move(found);
  }

 private:
  struct Level {
    DirectoryNames names;
    std::size_t next;
    std::size_t parentLength;  // of the path above it
  };

  void look(const DirectoryNames::Name& name) {
    const std::size_t parentLength = path.size();
    if (!path.empty()) path.push_back('/');
    path.append(name.text);
    if (isSecretName(name.text)) {
      add();
    } else {
      ++found.sharedCount;
      if (name.kind == DirectoryNames::Kind::directory && enter(parentLength)) return;
    }
    path.resize(parentLength);
  }

  void add() {
    ++found.excludedCount;
    secretBytes += path.size();
    if (found.secrets.size() >= limits.secrets || secretBytes > limits.secretBytes) {
      tell("there are more likely secrets than are listed");
    } else {
      found.secrets.push_back(path);
    }
  }

  // False when the folder is not looked into. One that cannot be read is not served either.
  bool enter(std::size_t parentLength = 0) {
    if (levels.size() >= limits.depth) {
      tell("folders more than " + std::to_string(limits.depth) + " deep were not looked at");
      return false;
    }
    auto directory = resolver.openDirectory(path);
    if (!directory) return false;
    auto names = DirectoryNames::read(std::move(*directory), DirectoryNames::maxBytes - bytes,
                                      [](std::string_view) { return true; });
    if (!names) {
      if (names.error() == Refusal::folderTooLarge) tell("a very large folder was not looked at");
      return false;
    }
    bytes += names->bytes();
    levels.push_back({std::move(*names), 0, parentLength});
    return true;
  }

  void leave() {
    path.resize(levels.back().parentLength);
    bytes -= levels.back().names.bytes();
    levels.pop_back();
  }

  bool goesOn() {
    if (++looked > limits.names) {
      tell("more than " + std::to_string(limits.names) + " names: the rest was not looked at");
      return false;
    }
    constexpr std::int64_t often = 64;
    if (looked % often != 1) return true;
    if (Clock::now() > end) {
      tell("it took too long to look at everything");
      return false;
    }
    return !isOver();
  }

  // Each text once.
  void tell(std::string text) {
    auto& caps = found.caps;
    if (std::find(caps.begin(), caps.end(), text) == caps.end()) caps.push_back(std::move(text));
  }

  const BeneathResolver resolver;
  const SecretScanLimits& limits;
  const std::function<bool()>& isOver;
  const Clock::time_point end = Clock::now() + limits.time;
  SecretScan found;
  std::string path;  // of what is being looked at
  std::vector<Level> levels;
  std::size_t bytes = 0;  // of the names in all levels
  std::size_t secretBytes = 0;
  std::int64_t looked = 0;
};

}  // namespace

SecretScan SecretScan::of(int folderFD, const IsOwnMount& isOwnMount,
                          const SecretScanLimits& limits, const std::function<bool()>& isOver) {
  return Scanner(folderFD, isOwnMount, limits, isOver).run();
}

}  // namespace tarnel
