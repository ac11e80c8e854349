#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "fs/FabricItemTable.h"
#include "support/Sanitized.h"
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tarnel {
namespace {

// Absent where the allocator does not tell, or is a sanitizer's and not the one that a user has.
std::optional<std::size_t> allocatedBytes() {
#if defined(__GLIBC__)
  if (test::builtWithSanitizer) return std::nullopt;
  const auto info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
#else
  return std::nullopt;
#endif
}

// 45 bytes, about what a file in a few folders has.
std::string path(std::size_t i) {
  std::string number = std::to_string(i);
  number.insert(0, 8 - number.size(), '0');
  return "me/Photographs/2024-summer-trip/IMG_" + number + "b";
}

constexpr std::size_t paths = 100'000;

TEST(PathMemory, aPathThatWasSeenCostsAtMostAHundredBytes) {
  FabricItemTable table;
  const auto before = allocatedBytes();
  if (!before) GTEST_SKIP() << "SKIPPED: this allocator does not tell what it gave";
  for (std::size_t i = 0; i < paths; ++i) (void)table.id(path(i));
  EXPECT_LE(*allocatedBytes() - *before, paths * 100);
}

TEST(PathMemory, aLiveItemCostsAtMostTwoHundredAndThirtyBytesWithItsPath) {
  FabricItemTable table;
  const FileStat stat{.name = "IMG", .size = 1, .mtimeMs = 2};
  const auto before = allocatedBytes();
  if (!before) GTEST_SKIP() << "SKIPPED: this allocator does not tell what it gave";
  for (std::size_t i = 0; i < paths; ++i) (void)table.lookUpOrCreate(path(i), 3, false, &stat);
  EXPECT_LE(*allocatedBytes() - *before, paths * 230);
}

}  // namespace
}  // namespace tarnel
