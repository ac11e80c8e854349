#include "control/ErrnoName.h"

#include <cstring>

namespace tarnel {

std::string errnoName(int error) {
#if defined(__GLIBC__)
  if (const char* symbol = ::strerrorname_np(error)) return symbol;
#endif
  return "errno " + std::to_string(error);
}

}  // namespace tarnel
