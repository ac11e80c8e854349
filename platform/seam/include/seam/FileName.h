// A name as the system handed it in: bytes, which are a text only when they are valid UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarnel {

class FileName {
 public:
  // `isText` says whether the bytes are valid UTF-8: the system's own test, which the adapter
  // makes.
  FileName(std::string bytes, bool isText) : nameBytes(std::move(bytes)), text(isText) {}

  [[nodiscard]] const std::string& data() const { return nameBytes; }
  [[nodiscard]] std::optional<std::string_view> string() const {
    if (!text) return std::nullopt;
    return nameBytes;
  }
  friend bool operator==(const FileName&, const FileName&) = default;

 private:
  std::string nameBytes;
  bool text;
};

}  // namespace tarnel
