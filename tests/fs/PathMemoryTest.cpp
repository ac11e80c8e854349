#include <gtest/gtest.h>
#include <malloc.h>

#include <string>
#include <vector>

#include "fs/FabricItemTable.h"
#include "support/Sanitized.h"

namespace tarnel {
namespace {

std::size_t allocatedBytes() {
  const auto info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

// 45 bytes, about what a file in a few folders has.
std::string path(std::size_t i) {
  std::string number = std::to_string(i);
  number.insert(0, 8 - number.size(), '0');
  return "me/Photographs/2024-summer-trip/IMG_" + number + "b";
}

constexpr std::size_t paths = 100'000;

TEST(PathMemory, aPathThatWasSeenCostsAtMostAHundredBytes) {
  if (test::builtWithSanitizer)
    GTEST_SKIP() << "SKIPPED: a sanitizer's allocator is measured, not ours";
  FabricItemTable table;
  const std::size_t before = allocatedBytes();
  for (std::size_t i = 0; i < paths; ++i) (void)table.id(path(i));
  EXPECT_LE(allocatedBytes() - before, paths * 100);
}

TEST(PathMemory, aLiveItemCostsAtMostTwoHundredAndThirtyBytesWithItsPath) {
  if (test::builtWithSanitizer)
    GTEST_SKIP() << "SKIPPED: a sanitizer's allocator is measured, not ours";
  FabricItemTable table;
  const FileStat stat{.name = "IMG", .size = 1, .mtimeMs = 2};
  const std::size_t before = allocatedBytes();
  for (std::size_t i = 0; i < paths; ++i) (void)table.lookUpOrCreate(path(i), 3, false, &stat);
  EXPECT_LE(allocatedBytes() - before, paths * 230);
}

}  // namespace
}  // namespace tarnel
