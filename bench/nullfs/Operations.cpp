#include "Operations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace tarnel::nullfs {
namespace {

constexpr double timeoutSeconds = 1.0;  // the default of `tarnel mount`: the floor must pay it too

const Volume& volume(fuse_req_t req) { return *static_cast<const Volume*>(fuse_req_userdata(req)); }

// Inode numbers are node numbers plus one, since FUSE_ROOT_ID is 1. The kernel only asks about
// inodes that it was given, and nodes live as long as the session: no count of lookups is kept.
std::uint32_t numberOf(fuse_ino_t inode) { return static_cast<std::uint32_t>(inode - 1); }
fuse_ino_t inodeOf(std::uint32_t number) { return fuse_ino_t{number} + 1; }

struct stat attributes(std::uint32_t number, const Node& node) {
  struct stat st{};
  st.st_ino = inodeOf(number);
  st.st_mode = node.isDirectory ? S_IFDIR | 0555 : S_IFREG | 0444;
  st.st_nlink = 1;
  st.st_uid = ::getuid();
  st.st_gid = ::getgid();
  st.st_size = node.size;
  st.st_blocks = (node.size + 511) / 512;
  st.st_mtim = st.st_ctim = st.st_atim = node.mtime;
  return st;
}

fuse_entry_param entry(std::uint32_t number, const Node& node) {
  fuse_entry_param result{};
  result.ino = inodeOf(number);
  result.attr = attributes(number, node);
  result.attr_timeout = timeoutSeconds;
  result.entry_timeout = timeoutSeconds;
  return result;
}

void init(void*, fuse_conn_info* connection) {
  // Always, not when the kernel guesses that it pays: listing with sizes is what is measured.
  if (connection->capable & FUSE_CAP_READDIRPLUS) connection->want |= FUSE_CAP_READDIRPLUS;
  connection->want &= ~static_cast<unsigned>(FUSE_CAP_READDIRPLUS_AUTO);
}

void lookup(fuse_req_t req, fuse_ino_t parent, const char* name) {
  const Tree& tree = volume(req).tree;
  const auto number = tree.child(numberOf(parent), name);
  if (number == Tree::root) {
    fuse_reply_err(req, ENOENT);
    return;
  }
  const auto found = entry(number, tree[number]);
  fuse_reply_entry(req, &found);
}

void getattr(fuse_req_t req, fuse_ino_t inode, fuse_file_info*) {
  const auto number = numberOf(inode);
  const auto st = attributes(number, volume(req).tree[number]);
  fuse_reply_attr(req, &st, timeoutSeconds);
}

void open(fuse_req_t req, fuse_ino_t, fuse_file_info* file) {
  if ((file->flags & O_ACCMODE) != O_RDONLY) {
    fuse_reply_err(req, EROFS);
    return;
  }
  file->keep_cache = 1;
  fuse_reply_open(req, file);
}

void read(fuse_req_t req, fuse_ino_t inode, std::size_t size, off_t offset, fuse_file_info*) {
  const Volume& served = volume(req);
  const auto rest = std::max<off_t>(0, served.tree[numberOf(inode)].size - offset);
  const auto length = std::min({size, static_cast<std::size_t>(rest), Volume::patternBytes});
  const auto start = static_cast<std::size_t>(offset) % Volume::patternBytes;
  const auto untilEnd = std::min(length, Volume::patternBytes - start);
  char* const pattern = const_cast<char*>(served.pattern.data());  // iovec has no const form
  const std::array<iovec, 2> parts{iovec{pattern + start, untilEnd},
                                   iovec{pattern, length - untilEnd}};
  fuse_reply_iov(req, parts.data(), untilEnd < length ? 2 : 1);
}

enum class Listing { names, entries };

std::size_t addEntry(fuse_req_t req, Listing kind, std::span<char> space, const char* name,
                     const fuse_entry_param& param, off_t next) {
  if (kind == Listing::names) {
    return fuse_add_direntry(req, space.data(), space.size(), name, &param.attr, next);
  }
  return fuse_add_direntry_plus(req, space.data(), space.size(), name, &param, next);
}

// Offset 0 is ".", 1 is "..", and n + 2 is the n-th child: the tree never changes.
void list(fuse_req_t req, fuse_ino_t inode, std::size_t size, off_t offset, Listing kind) {
  const Tree& tree = volume(req).tree;
  const auto number = numberOf(inode);
  const Node& folder = tree[number];
  std::vector<char> buffer(size);
  std::size_t used = 0;
  const auto add = [&](const char* name, std::uint32_t target) {
    const auto added = addEntry(req, kind, std::span(buffer).subspan(used), name,
                                entry(target, tree[target]), ++offset);
    if (added > size - used) return false;
    used += added;
    return true;
  };

  bool fits = true;
  if (offset == 0) fits = add(".", number);
  if (fits && offset == 1) fits = add("..", folder.parent);
  while (fits && offset >= 2 && offset - 2 < off_t{folder.childCount}) {
    const auto child = folder.firstChild + static_cast<std::uint32_t>(offset - 2);
    fits = add(tree[child].name.c_str(), child);
  }
  fuse_reply_buf(req, buffer.data(), used);
}

void readdir(fuse_req_t req, fuse_ino_t inode, std::size_t size, off_t offset, fuse_file_info*) {
  list(req, inode, size, offset, Listing::names);
}

void readdirplus(fuse_req_t req, fuse_ino_t inode, std::size_t size, off_t offset,
                 fuse_file_info*) {
  list(req, inode, size, offset, Listing::entries);
}

}  // namespace

Volume makeVolume(Tree tree) {
  Volume made{.tree = std::move(tree), .pattern = std::vector<char>(Volume::patternBytes)};
  std::uint32_t state = 1;
  for (char& byte : made.pattern) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return made;
}

fuse_lowlevel_ops operations() {
  fuse_lowlevel_ops ops{};
  ops.init = init;
  ops.lookup = lookup;
  ops.getattr = getattr;
  ops.open = open;
  ops.read = read;
  ops.readdir = readdir;
  ops.readdirplus = readdirplus;
  return ops;
}

}  // namespace tarnel::nullfs
