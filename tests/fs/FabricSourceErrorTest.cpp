#include <gtest/gtest.h>

#include "fs/FabricSourceError.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

FabricFailure of(Kind kind, std::string message = {}) {
  return FabricSourceError{kind, std::move(message)};
}

const FabricFailure decoding = DecodingError{DecodingError::Kind::dataCorrupted, "at 3"};
const FabricFailure encoding = EncodingError{"name"};

TEST(FabricErrno, hasTheNumbersOfTheTable) {
  EXPECT_EQ(fabricErrno(of(Kind::notFound)), 2);
  EXPECT_EQ(fabricErrno(of(Kind::notADirectory)), 20);
  EXPECT_EQ(fabricErrno(of(Kind::isDirectory)), 21);
  EXPECT_EQ(fabricErrno(of(Kind::timedOut)), 60);
  EXPECT_EQ(fabricErrno(of(Kind::disconnected)), 57);
}

TEST(FabricErrno, isFiveForInputOutputWithAnyMessage) {
  for (const char* message : {"", "disk", "is a directory", "notFound"}) {
    EXPECT_EQ(fabricErrno(of(Kind::io, message)), 5) << message;
  }
}

TEST(FabricErrno, isFiveForErrorsOfOtherLayers) {
  EXPECT_EQ(fabricErrno(decoding), 5);
  EXPECT_EQ(fabricErrno(encoding), 5);
}

TEST(FabricErrno, leavesTheVolumeAsAPosixError) {
  const VolumeError expected{.domain = VolumeError::Domain::posix, .code = 60};
  EXPECT_EQ(volumeError(of(Kind::timedOut)), expected);
}

TEST(LastKnownAttributes, mayBeServedForNotFoundAndDisconnectedAlone) {
  EXPECT_TRUE(mayServeLastKnownAttributes(of(Kind::notFound)));
  EXPECT_TRUE(mayServeLastKnownAttributes(of(Kind::disconnected)));
  EXPECT_FALSE(mayServeLastKnownAttributes(of(Kind::io)));
  EXPECT_FALSE(mayServeLastKnownAttributes(of(Kind::io, "disconnected")));
  EXPECT_FALSE(mayServeLastKnownAttributes(of(Kind::notADirectory)));
  EXPECT_FALSE(mayServeLastKnownAttributes(of(Kind::isDirectory)));
  EXPECT_FALSE(mayServeLastKnownAttributes(of(Kind::timedOut)));
  EXPECT_FALSE(mayServeLastKnownAttributes(decoding));
  EXPECT_FALSE(mayServeLastKnownAttributes(encoding));
}

TEST(FabricSourceError, inputOutputErrorsAreEqualByTheirMessages) {
  EXPECT_EQ((FabricSourceError{Kind::io, "a"}), (FabricSourceError{Kind::io, "a"}));
  EXPECT_NE((FabricSourceError{Kind::io, "a"}), (FabricSourceError{Kind::io, "b"}));
  EXPECT_EQ((FabricSourceError{Kind::io, "\u00e9"}), (FabricSourceError{Kind::io, "e\u0301"}));
}

TEST(FabricSourceError, otherErrorsAreEqualByTheirKind) {
  EXPECT_EQ(FabricSourceError{Kind::notFound}, FabricSourceError{Kind::notFound});
  EXPECT_NE(FabricSourceError{Kind::notFound}, FabricSourceError{Kind::isDirectory});
  EXPECT_NE(FabricSourceError{Kind::notFound}, FabricSourceError{Kind::io});
  EXPECT_EQ((FabricSourceError{Kind::timedOut, "a"}), (FabricSourceError{Kind::timedOut, "b"}));
}

TEST(FabricSourceError, everyFailureHasADescriptionOfItsOwn) {
  EXPECT_EQ(description(of(Kind::notFound)), "notFound");
  EXPECT_EQ(description(of(Kind::notADirectory)), "notADirectory");
  EXPECT_EQ(description(of(Kind::isDirectory)), "isDirectory");
  EXPECT_EQ(description(of(Kind::timedOut)), "timedOut");
  EXPECT_EQ(description(of(Kind::disconnected)), "disconnected");
  EXPECT_NE(description(of(Kind::io, "disk")).find("disk"), std::string::npos);
  EXPECT_EQ(description(decoding), description(std::get<DecodingError>(decoding)));
  EXPECT_EQ(description(encoding), description(std::get<EncodingError>(encoding)));
}

}  // namespace
}  // namespace tarnel
