#include "get/PendingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <random>
#include <utility>

#include "get/FileTime.h"

namespace tarnel {
namespace {

constexpr int maxTries = 16;

// Not to be guessed, so that nobody's file is met by chance; O_EXCL is what makes it safe.
std::string nextTemporaryName() {
  static std::uint64_t next = [] {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
  }();
  char number[24];
  std::snprintf(number, sizeof number, "%016llx", static_cast<unsigned long long>(next++));
  return std::string(PendingFile::namePrefix) + number;
}

// Moves without ever replacing; ENOSYS or EINVAL where the system or the file system cannot.
int renameOverNothing(int folder, const char* from, const char* to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
#endif
  if (::linkat(folder, from, folder, to, 0) == 0) {
    ::unlinkat(folder, from, 0);
    return 0;
  }
  if (errno == EEXIST) return EEXIST;
  struct stat there{};  // no hard links here: the best that is left
  if (::fstatat(folder, to, &there, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
  return ::renameat(folder, from, folder, to) == 0 ? 0 : errno;
}

}  // namespace

CopyResult<PendingFile> PendingFile::create(int folder, mode_t mode, Interruption& interruption) {
  for (int i = 0; i < maxTries; ++i) {
    std::string name = nextTemporaryName();
    interruption.setPendingFile(folder, name);
    UniqueFd file(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (file.valid()) return PendingFile(folder, std::move(file), std::move(name), interruption);
    interruption.clearPendingFile();
    if (errno != EEXIST) break;
  }
  return callFailure();
}

PendingFile::PendingFile(int folderFD, UniqueFd fileFD, std::string temporary,
                         Interruption& signals)
    : folder(folderFD),
      file(std::move(fileFD)),
      temporaryName(std::move(temporary)),
      interruption(&signals) {}

PendingFile::PendingFile(PendingFile&& other) noexcept
    : folder(other.folder),
      file(std::move(other.file)),
      temporaryName(std::exchange(other.temporaryName, {})),
      interruption(other.interruption) {}

PendingFile::~PendingFile() {
  if (temporaryName.empty()) return;
  ::unlinkat(folder, temporaryName.c_str(), 0);
  interruption->clearPendingFile();
}

CopyResult<void> PendingFile::write(BytesView bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return callFailure();
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

CopyResult<void> PendingFile::publish(const std::string& name, std::optional<std::int64_t> mtimeMs,
                                      Over over) {
  if (mtimeMs) {
    if (auto set = setModificationTime(file.get(), *mtimeMs); !set) return set;
  }
  if (::close(file.release()) != 0 && errno != EINTR) return callFailure();  // a full quota
  int error = 0;
  if (over == Over::nothing) {
    error = renameOverNothing(folder, temporaryName.c_str(), name.c_str());
  } else if (::renameat(folder, temporaryName.c_str(), folder, name.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) return copyFailure(error);
  interruption->clearPendingFile();
  temporaryName.clear();
  return {};
}

}  // namespace tarnel
