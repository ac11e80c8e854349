// What the system offers for loading, and the options that it passes. The file system never looks
// at a resource beyond the name of its type, which it logs.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

class Resource {
 public:
  Resource() = default;
  Resource(const Resource&) = delete;
  Resource& operator=(const Resource&) = delete;
  virtual ~Resource() = default;
  [[nodiscard]] virtual std::string_view typeName() const = 0;
};

struct TaskOptions {
  std::vector<std::string> taskOptions;
};

using Uuid = std::array<std::uint8_t, 16>;

struct ProbeResult {
  bool isUsable = false;
  std::string name;
  Uuid containerID{};
};

enum class ContainerStatus { notReady, ready };

}  // namespace tarnel
