#include "FuseReply.h"

#include <array>
#include <cerrno>
#include <utility>

namespace tarnel {
namespace {

constexpr std::array<std::pair<std::int32_t, int>, 8> numbers = {{
    {darwin::noEntry, ENOENT},
    {darwin::inputOutput, EIO},
    {darwin::notADirectory, ENOTDIR},
    {darwin::isADirectory, EISDIR},
    {darwin::invalidArgument, EINVAL},
    {darwin::readOnly, EROFS},
    {darwin::notConnected, ENOTCONN},
    {darwin::timedOut, ETIMEDOUT},
}};

constexpr std::uint64_t statBlockBytes = 512;
constexpr std::int64_t nanosecondsASecond = 1'000'000'000;

timespec systemTime(ItemTime time) {
  timespec made{};
  made.tv_sec = time.seconds;
  made.tv_nsec = time.nanoseconds;
  if (made.tv_nsec < 0) {
    made.tv_nsec += nanosecondsASecond;
    --made.tv_sec;
  }
  return made;
}

}  // namespace

int systemErrno(VolumeError error) {
  if (error.domain == VolumeError::Domain::posix) {
    for (const auto& [theirs, ours] : numbers) {
      if (theirs == error.code) return ours;
    }
  }
  return EIO;
}

struct stat systemStat(const ItemAttributes& attributes) {
  struct stat made{};
  made.st_ino = attributes.fileID;
  made.st_mode = attributes.mode |
                 static_cast<mode_t>(attributes.type == ItemType::directory ? S_IFDIR : S_IFREG);
  made.st_nlink = attributes.linkCount;
  made.st_uid = attributes.uid;
  made.st_gid = attributes.gid;
  made.st_size = static_cast<off_t>(attributes.size);
  made.st_blksize = 4096;
  made.st_blocks = static_cast<blkcnt_t>(attributes.allocSize / statBlockBytes);
  made.st_atim = systemTime(attributes.accessTime);
  made.st_mtim = systemTime(attributes.modifyTime);
  made.st_ctim = systemTime(attributes.changeTime);
  return made;
}

}  // namespace tarnel
