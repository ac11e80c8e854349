#include "host/HostStartError.h"

namespace tarnel {

std::string description(const HostStartError& error) {
  using Kind = HostStartError::Kind;
  switch (error.kind) {
    case Kind::unsafeName:
      return "not a usable name: \"" + error.subject + "\"";
    case Kind::duplicateName:
      return "two shares have the same name: " + error.subject;
    case Kind::folder:
      return "cannot share " + error.subject + ": " + error.reason;
    case Kind::ownMount:
      return "cannot share " + error.subject + ": it lies on a mounted Tarnel volume";
    case Kind::notASocket:
      return error.subject + " exists and is not a socket";
    case Kind::socketInUse:
      return "another host already answers on " + error.subject;
    case Kind::socket:
      return "cannot listen on " + error.subject + ": " + error.reason;
  }
  __builtin_unreachable();
}

}  // namespace tarnel
