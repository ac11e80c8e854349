// What a host lists of one folder, kept small: names in one text, no owners and groups. Read
// straight from the answer's line, so that the largest answer never stands in memory as records.
//
// Names that no entry can have (EntryPath.h) are left out and counted. The order is the host's.
// Threads: plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "control/Bytes.h"
#include "get/CopyError.h"

namespace tarnel {

// The status of one file or folder, as far as a copy needs it.
struct HostEntry {
  bool isDirectory = false;
  std::uint32_t mode = 0;  // 0: not told
  std::int64_t size = 0;
  std::int64_t mtimeMs = 0;
};

class FolderListing {
 public:
  // The answer to `list`. A refusal is the error that it means; what is not of the protocol is EIO.
  [[nodiscard]] static CopyResult<FolderListing> parse(BytesView line);

  [[nodiscard]] std::size_t size() const { return entries.size(); }
  [[nodiscard]] std::string_view name(std::size_t index) const;
  [[nodiscard]] const HostEntry& entry(std::size_t index) const { return entries[index].status; }
  // By its exact bytes; the first of equal names. Quick when names are looked up in the host's
  // order.
  [[nodiscard]] std::optional<std::size_t> find(std::string_view name);

  [[nodiscard]] std::size_t namesLeftOut() const { return leftOut; }
  // Equal for equal answers.
  [[nodiscard]] std::size_t hash() const { return lineHash; }
  [[nodiscard]] std::size_t memory() const;

 private:
  struct Listed {
    std::uint32_t nameAt = 0;
    std::uint32_t nameBytes = 0;
    HostEntry status;
  };

  std::string names;
  std::vector<Listed> entries;
  std::vector<std::uint32_t> sorted;  // by name, once somebody looks
  std::size_t cursor = 0;
  std::size_t leftOut = 0;
  std::size_t lineHash = 0;
};

}  // namespace tarnel
