#include <gtest/gtest.h>

#include <cerrno>
#include <string_view>

#include "host/Refusal.h"

namespace tarnel {
namespace {

bool holds(Refusal refusal, std::string_view words) {
  return description(refusal).find(words) != std::string_view::npos;
}

TEST(Refusal, onlyTheTwoMeantTextsHoldTheWordsThatReadersLookFor) {
  EXPECT_TRUE(holds(Refusal::isDirectory, "is a directory"));
  EXPECT_TRUE(holds(Refusal::notDirectory, "not a directory"));
  EXPECT_FALSE(holds(Refusal::notDirectory, "is a directory"));
  for (const Refusal other :
       {Refusal::noSuchFile,         Refusal::permissionDenied,  Refusal::ioError,
        Refusal::exhausted,          Refusal::listingTooLarge,   Refusal::noLocation,
        Refusal::invalidOffset,      Refusal::invalidLength,     Refusal::invalidLimit,
        Refusal::malformedRequest,   Refusal::notServed,         Refusal::folderTooLarge,
        Refusal::folderTooDeep,      Refusal::fileBecameShorter, Refusal::unusableShareName,
        Refusal::shareNameTaken,     Refusal::noSuchShare,       Refusal::folderNotAbsolute,
        Refusal::folderIsOwnMount,   Refusal::folderIsSecret,    Refusal::tooManyShares,
        Refusal::tooManyReviews,     Refusal::noReviewWaiting,   Refusal::notReviewed,
        Refusal::capsNotAcknowledged}) {
    EXPECT_FALSE(holds(other, "is a directory")) << description(other);
    EXPECT_FALSE(holds(other, "not a directory")) << description(other);
    EXPECT_FALSE(holds(other, "not a file")) << description(other);
  }
}

TEST(Refusal, errnoIsToldAsWhatTheAskerCanUse) {
  EXPECT_EQ(refusalFor(ENOENT), Refusal::noSuchFile);
  EXPECT_EQ(refusalFor(ENAMETOOLONG), Refusal::noSuchFile);
  EXPECT_EQ(refusalFor(ELOOP), Refusal::noSuchFile);
  EXPECT_EQ(refusalFor(ENXIO), Refusal::noSuchFile);
  EXPECT_EQ(refusalFor(EISDIR), Refusal::isDirectory);
  EXPECT_EQ(refusalFor(ENOTDIR), Refusal::notDirectory);
  EXPECT_EQ(refusalFor(EACCES), Refusal::permissionDenied);
  EXPECT_EQ(refusalFor(EPERM), Refusal::permissionDenied);
  EXPECT_EQ(refusalFor(EIO), Refusal::ioError);
  for (const int want : {EMFILE, ENFILE, ENOMEM}) {
    EXPECT_EQ(refusalFor(want), Refusal::exhausted);
  }
}

}  // namespace
}  // namespace tarnel
