#include "get/CopyReport.h"

namespace tarnel {

void CopyReport::fail(std::string_view path, const CopyError& error) {
  ++count;
  if (kept.size() == maxKept) return;
  Failure failure{.path = std::string(path.substr(0, maxTextBytes)), .error = error};
  if (path.size() > maxTextBytes) failure.path += "...";
  if (failure.error.detail.size() > maxTextBytes) failure.error.detail.resize(maxTextBytes);
  kept.push_back(std::move(failure));
}

}  // namespace tarnel
