// A file that is being copied: written under a temporary name in its folder, and under its own name
// only when it is whole. One that is never published is removed.
//
// Nothing is synced: a copy is as durable as what `cp` writes.
// Lifetime: the folder's descriptor stays open as long as this. Threads: one at a time.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "control/Bytes.h"
#include "control/UniqueFd.h"
#include "get/CopyError.h"
#include "get/Interruption.h"

namespace tarnel {

class PendingFile {
 public:
  // What may already stand under the file's name.
  enum class Over { nothing, aFile };

  static constexpr std::string_view namePrefix = ".tarnel-get-";

  // mode: permission bits; the process's mask is taken off.
  [[nodiscard]] static CopyResult<PendingFile> create(int folder, mode_t mode,
                                                      Interruption& interruption);
  PendingFile(PendingFile&& other) noexcept;
  PendingFile& operator=(PendingFile&&) = delete;
  ~PendingFile();

  [[nodiscard]] CopyResult<void> write(BytesView bytes);
  // Gives it its name and, if known, its modification time. EEXIST when something is there.
  [[nodiscard]] CopyResult<void> publish(const std::string& name,
                                         std::optional<std::int64_t> mtimeMs, Over over);

 private:
  PendingFile(int folderFD, UniqueFd fileFD, std::string temporary, Interruption& signals);

  int folder;  // borrowed
  UniqueFd file;
  std::string temporaryName;  // empty once published
  Interruption* interruption;
};

}  // namespace tarnel
