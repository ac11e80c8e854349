// The fixed answers of a volume.
#pragma once

#include <cstdint>
#include <string>

namespace tarnel {

struct SupportedCapabilities {
  enum class CaseFormat { sensitive = 0, insensitive = 1, insensitiveCasePreserving = 2 };

  bool supportsPersistentObjectIDs = false;
  bool supports64BitObjectIDs = false;
  bool supportsHardLinks = false;
  bool supportsSymbolicLinks = false;
  bool doesNotSupportVolumeSizes = false;
  CaseFormat caseFormat = CaseFormat::sensitive;
};

struct StatFSResult {
  std::string fileSystemTypeName;
  std::int64_t blockSize = 0;  // bytes
  std::int64_t ioSize = 0;     // bytes
  std::uint64_t totalBlocks = 0;
  std::uint64_t usedBlocks = 0;
  std::uint64_t freeBlocks = 0;
  std::uint64_t availableBlocks = 0;
  std::uint64_t totalFiles = 0;
  std::uint64_t freeFiles = 0;
};

}  // namespace tarnel
