#include "get/IncomingFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

#include "get/FileTime.h"

namespace tarnel {
namespace {

constexpr mode_t permissions = 0777;
constexpr mode_t defaultMode = 0666;

}  // namespace

CopyResult<FileAdmission> admitFile(FolderChain& chain, const std::string& name,
                                    const HostEntry& status, const CopyRules& rules) {
  if (status.size < 0) return copyFailure(EIO, "a negative size");
  if (!chain.take(name)) return copyFailure(EEXIST, "named twice");
  if (chain.isOurs()) return FileAdmission{};
  struct stat there{};
  if (::fstatat(chain.folder(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) return callFailure();
    return FileAdmission{};
  }
  if (S_ISDIR(there.st_mode)) return copyFailure(EISDIR);
  const bool isFile = S_ISREG(there.st_mode);
  if (isFile && rules.resume && there.st_size == status.size &&
      modificationTimeMs(there) == status.mtimeMs) {
    return FileAdmission{.isWhole = true};
  }
  if (!isFile && !S_ISLNK(there.st_mode)) return copyFailure(EEXIST, "not a file");
  if (!rules.force) return copyFailure(EEXIST);
  return FileAdmission{.over = PendingFile::Over::aFile};
}

CopyResult<IncomingFile> IncomingFile::create(FolderChain& chain, std::string name,
                                              const HostEntry& status, PendingFile::Over over,
                                              Interruption& interruption) {
  const mode_t mode = status.mode == 0 ? defaultMode : status.mode & permissions;
  const auto open = [&] { return PendingFile::create(chain.folder(), mode, interruption); };
  auto first = open();
  const bool isClosed = !first && first.error().error == EACCES && chain.makeWritable();
  auto pending = isClosed ? open() : std::move(first);
  if (!pending) return std::unexpected(pending.error());
  return IncomingFile(std::move(*pending), std::move(name), status.size, over);
}

CopyResult<void> IncomingFile::write(BytesView bytes) {
  received += static_cast<std::int64_t>(bytes.size());
  return pending.write(bytes);
}

CopyResult<void> IncomingFile::publish(std::optional<std::int64_t> mtimeMs) {
  if (received != size) return copyFailure(EIO, "fewer bytes than announced");
  return pending.publish(name, mtimeMs, over);
}

}  // namespace tarnel
