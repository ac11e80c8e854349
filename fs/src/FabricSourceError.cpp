#include "fs/FabricSourceError.h"

#include "control/Text.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

std::int32_t errnoOf(const FabricSourceError& error) {
  switch (error.kind) {
    case Kind::io:
      return darwin::inputOutput;
    case Kind::notFound:
      return darwin::noEntry;
    case Kind::notADirectory:
      return darwin::notADirectory;
    case Kind::isDirectory:
      return darwin::isADirectory;
    case Kind::timedOut:
      return darwin::timedOut;
    case Kind::disconnected:
      return darwin::notConnected;
  }
  __builtin_unreachable();
}

bool mayServe(Kind kind) {
  switch (kind) {
    case Kind::notFound:
    case Kind::disconnected:
      return true;
    case Kind::io:
    case Kind::notADirectory:
    case Kind::isDirectory:
    case Kind::timedOut:
      return false;
  }
  __builtin_unreachable();
}

std::string textOf(const FabricSourceError& error) {
  switch (error.kind) {
    case Kind::io:
      return "io(" + error.message + ")";
    case Kind::notFound:
      return "notFound";
    case Kind::notADirectory:
      return "notADirectory";
    case Kind::isDirectory:
      return "isDirectory";
    case Kind::timedOut:
      return "timedOut";
    case Kind::disconnected:
      return "disconnected";
  }
  __builtin_unreachable();
}

}  // namespace

bool operator==(const FabricSourceError& a, const FabricSourceError& b) {
  return a.kind == b.kind && (a.kind != Kind::io || textEqual(a.message, b.message));
}

std::string description(const FabricFailure& failure) {
  struct Describe {
    std::string operator()(const FabricSourceError& error) const { return textOf(error); }
    std::string operator()(const EncodingError& error) const { return description(error); }
    std::string operator()(const DecodingError& error) const { return description(error); }
  };
  return std::visit(Describe(), failure);
}

std::int32_t fabricErrno(const FabricFailure& failure) {
  const auto* error = std::get_if<FabricSourceError>(&failure);
  return error != nullptr ? errnoOf(*error) : darwin::inputOutput;
}

bool mayServeLastKnownAttributes(const FabricFailure& failure) {
  const auto* error = std::get_if<FabricSourceError>(&failure);
  return error != nullptr && mayServe(error->kind);
}

VolumeError volumeError(const FabricFailure& failure) { return posixError(fabricErrno(failure)); }

}  // namespace tarnel
