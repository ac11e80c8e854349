#include "AdapterRefusals.h"

#include "Adapter.h"

namespace tarnel {
namespace {

FabricVolume& volumeOf(fuse_req_t request) {
  return static_cast<Adapter*>(fuse_req_userdata(request))->served();
}

// The last argument of a refusal's reply is its error; the results before it are empty.
template <class... Empty>
auto refuse(fuse_req_t request) {
  return [request](Empty..., OptionalError error) {
    fuse_reply_err(request, error ? systemErrno(*error) : EIO);
  };
}

void createItem(fuse_req_t request) {
  volumeOf(request).createItem(refuse<const ItemRef&, const std::optional<FileName>&>(request));
}

void removeItem(fuse_req_t request, fuse_ino_t, const char*) {
  volumeOf(request).removeItem(refuse<>(request));
}

void write(fuse_req_t request) { volumeOf(request).write(refuse<std::int64_t>(request)); }

// "This file system has none": the kernel remembers it and does not ask again.
void noExtendedAttributes(fuse_req_t request) { fuse_reply_err(request, ENOSYS); }

}  // namespace

void addRefusals(fuse_lowlevel_ops& ops) {
  ops.setattr = [](fuse_req_t request, fuse_ino_t, struct stat*, int, fuse_file_info*) {
    volumeOf(request).setAttributes(refuse<const std::optional<ItemAttributes>&>(request));
  };
  ops.mknod = [](fuse_req_t request, fuse_ino_t, const char*, mode_t, dev_t) {
    createItem(request);
  };
  ops.mkdir = [](fuse_req_t request, fuse_ino_t, const char*, mode_t) { createItem(request); };
  ops.create = [](fuse_req_t request, fuse_ino_t, const char*, mode_t, fuse_file_info*) {
    createItem(request);
  };
  ops.symlink = [](fuse_req_t request, const char*, fuse_ino_t, const char*) {
    volumeOf(request).createSymbolicLink(
        refuse<const ItemRef&, const std::optional<FileName>&>(request));
  };
  ops.link = [](fuse_req_t request, fuse_ino_t, fuse_ino_t, const char*) {
    volumeOf(request).createLink(refuse<const std::optional<FileName>&>(request));
  };
  ops.unlink = removeItem;
  ops.rmdir = removeItem;
  ops.rename = [](fuse_req_t request, fuse_ino_t, const char*, fuse_ino_t, const char*, unsigned) {
    volumeOf(request).renameItem(refuse<const std::optional<FileName>&>(request));
  };
  ops.readlink = [](fuse_req_t request, fuse_ino_t) {
    volumeOf(request).readSymbolicLink(refuse<const std::optional<FileName>&>(request));
  };
  ops.write = [](fuse_req_t request, fuse_ino_t, const char*, std::size_t, off_t, fuse_file_info*) {
    write(request);
  };
  ops.fallocate = [](fuse_req_t request, fuse_ino_t, int, off_t, off_t, fuse_file_info*) {
    write(request);
  };
  ops.copy_file_range = [](fuse_req_t request, fuse_ino_t, off_t, fuse_file_info*, fuse_ino_t,
                           off_t, fuse_file_info*, std::size_t, int) { write(request); };
  ops.setxattr = [](fuse_req_t request, fuse_ino_t, const char*, const char*, std::size_t, int) {
    noExtendedAttributes(request);
  };
  ops.getxattr = [](fuse_req_t request, fuse_ino_t, const char*, std::size_t) {
    noExtendedAttributes(request);
  };
  ops.listxattr = [](fuse_req_t request, fuse_ino_t, std::size_t) {
    noExtendedAttributes(request);
  };
  ops.removexattr = [](fuse_req_t request, fuse_ino_t, const char*) {
    noExtendedAttributes(request);
  };
}

}  // namespace tarnel
