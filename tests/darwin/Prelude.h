// Read before a source of the project, this makes the compiler of another system take it as
// Darwin's would, as far as the project's own system calls go: this system's headers are all read
// first, then its macro gives way to __APPLE__, what only Darwin has is declared, and what Darwin
// lacks cannot be named any more. What is declared here is written from Darwin's manual pages; it
// is never run.
#pragma once
#pragma GCC system_header  // it poisons what this system's headers define

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <cmath>
#include <concepts>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <expected>
#include <filesystem>
#include <functional>
#include <future>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ranges>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

#undef __linux__
#undef __linux
#undef linux
#undef __gnu_linux__
#define __APPLE__ 1

#undef RENAME_NOREPLACE
#undef RENAME_EXCHANGE

// A socket's option against the broken-pipe signal, and who is at the other end.
#define SO_NOSIGPIPE 0x1022
extern "C" int getpeereid(int fd, uid_t* uid, gid_t* gid);

// A thread names itself only.
int pthread_setname_np(const char* name);

#define st_mtimespec st_mtim

// What is mounted.
#define MFSTYPENAMELEN 16
#define MNT_NOWAIT 2
struct darwin_fsid {
  std::int32_t val[2];
};
struct statfs {
  std::uint32_t f_bsize;
  std::uint64_t f_blocks;
  darwin_fsid f_fsid;
  uid_t f_owner;
  std::uint32_t f_flags;
  char f_fstypename[MFSTYPENAMELEN];
  char f_mntonname[1024];
  char f_mntfromname[1024];
};
extern "C" int getfsstat(struct statfs* buffer, int bytes, int flags);

// clang-format off
#pragma GCC poison SOCK_CLOEXEC SOCK_NONBLOCK MSG_NOSIGNAL accept4 pipe2 dup3 SO_PEERCRED ucred
#pragma GCC poison O_PATH O_TMPFILE O_LARGEFILE AT_EMPTY_PATH POLLRDHUP st_mtim st_atim st_ctim
#pragma GCC poison epoll_create1 epoll_wait eventfd signalfd timerfd_create inotify_init1
#pragma GCC poison ppoll sigtimedwait sigwaitinfo pthread_timedjoin_np pthread_tryjoin_np gettid
#pragma GCC poison memrchr mempcpy strchrnul rawmemchr canonicalize_file_name execvpe get_current_dir_name
#pragma GCC poison posix_fadvise fallocate splice sendfile64 open64 stat64 fstat64 lseek64 mallopt
#pragma GCC poison syscall program_invocation_name prctl renameat2 statx CLOCK_BOOTTIME
// clang-format on
