#include "control/CodingError.h"

namespace tarnel {

std::string description(const DecodingError& error) {
  using Kind = DecodingError::Kind;
  switch (error.kind) {
    case Kind::keyNotFound:
      return "key not found: " + error.detail;
    case Kind::valueNotFound:
      return "value not found: " + error.detail;
    case Kind::typeMismatch:
      return "type mismatch: " + error.detail;
    case Kind::dataCorrupted:
      return "data corrupted: " + error.detail;
  }
  __builtin_unreachable();
}

std::string description(const EncodingError& error) { return "cannot be encoded: " + error.detail; }

}  // namespace tarnel
