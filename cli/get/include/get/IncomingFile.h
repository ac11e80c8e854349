// One file on its way into the folder where a chain stands: looked at before anything is written,
// then filled, then shown if it is whole. The host announces a size: fewer bytes make no whole
// file, and one byte more is not taken.
// Lifetime: the chain stays where it is. Threads: one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "control/Bytes.h"
#include "get/CopyContext.h"
#include "get/FolderChain.h"
#include "get/PendingFile.h"

namespace tarnel {

// What is done about a file that a host has.
struct FileAdmission {
  bool isWhole = false;  // it is here already
  PendingFile::Over over = PendingFile::Over::nothing;
};
// EEXIST for what may not be replaced, EISDIR for a folder. status.mtimeMs is only looked at to
// resume.
[[nodiscard]] CopyResult<FileAdmission> admitFile(FolderChain& chain, const std::string& name,
                                                  const HostEntry& status, const CopyRules& rules);

class IncomingFile {
 public:
  // Begins a file that was admitted. mode: of the host's file; without any bits it is not known.
  [[nodiscard]] static CopyResult<IncomingFile> create(FolderChain& chain, std::string name,
                                                       const HostEntry& status,
                                                       PendingFile::Over over,
                                                       Interruption& interruption);

  // True when `count` more bytes are within what was announced.
  [[nodiscard]] bool takes(std::uint64_t count) const {
    return count <= static_cast<std::uint64_t>(size - received);
  }
  [[nodiscard]] CopyResult<void> write(BytesView bytes);
  // Shows the file under its name; EIO when bytes are missing.
  [[nodiscard]] CopyResult<void> publish(std::optional<std::int64_t> mtimeMs);

 private:
  IncomingFile(PendingFile pendingFile, std::string fileName, std::int64_t fileSize,
               PendingFile::Over whatMayBeThere)
      : pending(std::move(pendingFile)),
        name(std::move(fileName)),
        size(fileSize),
        over(whatMayBeThere) {}

  PendingFile pending;
  std::string name;
  std::int64_t size;
  std::int64_t received = 0;
  PendingFile::Over over;
};

}  // namespace tarnel
