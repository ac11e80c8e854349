#include "get/CopyDestination.h"

#include <fcntl.h>

#include <cstdlib>
#include <memory>
#include <utility>

namespace tarnel {
namespace {

CopyResult<UniqueFd> openFolder(const std::string& path) {
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd.valid()) return callFailure();
  return fd;
}

}  // namespace

CopyResult<CopyDestination> CopyDestination::open(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) return copyFailure(ENOENT);
  if (auto folder = openFolder(path)) return CopyDestination{.folder = std::move(*folder)};
  if (errno != ENOENT && errno != ENOTDIR) return callFailure();
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = path.rfind('/', end);
  std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1, end - slash);
  if (name == "." || name == "..") return copyFailure(ENOENT);
  auto parent = openFolder(slash == std::string::npos ? "." : path.substr(0, slash + 1));
  if (!parent) return std::unexpected(parent.error());
  return CopyDestination{.folder = std::move(*parent), .newName = std::move(name)};
}

CopyResult<CopyDestination> CopyDestination::openAsCopy(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), &std::free);
  if (!real) return callFailure();
  const std::string text(real.get());
  const std::size_t slash = text.rfind('/');
  auto parent = openFolder(text.substr(0, slash + 1));
  if (!parent) return std::unexpected(parent.error());
  return CopyDestination{.folder = std::move(*parent), .newName = text.substr(slash + 1)};
}

}  // namespace tarnel
