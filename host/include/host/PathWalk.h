// A walk from a share's folder down to a path, one name at a time, that never leaves the share.
//
// It holds a descriptor of every directory between the share's folder and the place it stands at.
// Each step opens one name relative to the last of them and refuses to follow links there; a link
// is read and walked by its text instead, where ".." goes back to a directory that the walk itself
// came through and is refused at the share's folder. Whatever is renamed or replaced meanwhile, the
// walk cannot come out. At most maxLinks links are followed in all.
//
// Left out, that is answered as missing: absolute links, links that lead out or nowhere, links to a
// directory above themselves, mounts that the host must not serve, paths that the share hides, and
// everything but regular files and directories. A link is above itself when its target is a
// directory that the requested path came through under any name, or one that holds the link; links
// that lead to each other's parents are thereby no endless tree either. Threads: one walk, one
// thread. Lifetime: refers to the root's descriptor, to the predicate and to the hidden paths.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "control/UniqueFd.h"
#include "host/HiddenPaths.h"
#include "host/Refusal.h"

namespace tarnel {

// True for a device that is a mount of this program's own type: a host that served it would wait
// for itself. Asked only where a path crosses from one device to another. Called from any thread.
using IsOwnMount = std::function<bool(dev_t)>;

struct FileId {
  dev_t device = 0;
  ino_t inode = 0;

  friend bool operator==(const FileId&, const FileId&) = default;
};
[[nodiscard]] FileId fileId(const struct stat& status);

class PathWalk {
 public:
  static constexpr int maxLinks = 40;

  struct Directory {
    UniqueFd fd;  // names the directory; readable only by opening "." below it
    FileId id;
    std::string path;  // below the share's folder, without any link in it
  };
  using Place = std::vector<std::shared_ptr<const Directory>>;  // the share's folder first

  // What a name leads to once all links are followed.
  struct Target {
    Place place;       // up to the directory itself, or to the one that holds the file
    std::string name;  // of the file in the last directory of place; empty for a directory
    struct stat status;
    int links = 0;  // followed so far, those of the way included

    [[nodiscard]] bool isDirectory() const { return name.empty(); }
    [[nodiscard]] int directoryFD() const { return place.back()->fd.get(); }
  };

  [[nodiscard]] static HostResult<PathWalk> start(int rootFD, const IsOwnMount& isOwnMount,
                                                  const HiddenPaths* hidden = nullptr);

  // Looks at one name where the walk stands, without moving.
  [[nodiscard]] HostResult<Target> look(std::string_view name) const;
  // The directory in which the walk stands, as a target.
  [[nodiscard]] HostResult<Target> here() const;
  // Goes into a directory.
  [[nodiscard]] HostResult<void> enter(std::string_view name);

  [[nodiscard]] FileId id() const { return place.back()->id; }
  // Of the directory in which the walk stands, without any link in it.
  [[nodiscard]] const std::string& path() const { return place.back()->path; }

 private:
  class Step;

  PathWalk(const IsOwnMount& ownMount, const HiddenPaths* hiddenPaths)
      : isOwnMount(&ownMount), hidden(hiddenPaths) {}
  [[nodiscard]] bool isAbove(FileId id) const;

  const IsOwnMount* isOwnMount;
  const HiddenPaths* hidden;  // null: nothing is
  Place place;
  std::vector<FileId> cameThrough;  // each prefix of the requested path, the share's folder first
  int links = 0;
};

}  // namespace tarnel
