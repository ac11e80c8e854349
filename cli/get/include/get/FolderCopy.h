// Copies a folder of the host with all that is in it: as one stream where that is possible, else by
// its listings, folder by folder.
//
// Listings are for two cases. To resume: what is whole already is found out before anything is
// sent. A folder that is not here yet comes as a stream even then, so the walk itself only goes
// where a folder is here, and those are as many as they are: links of the host, which its listings
// show as folders, cannot lead it round and round. And for a host that does not serve streams,
// where only bounds help: of depth, of folders, and of listings that repeat one above them.
// Bounds: a few names a level; listings are kept by CopySource. Threads: one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "get/CopyContext.h"
#include "get/FolderChain.h"

namespace tarnel {

class FolderCopy {
 public:
  static constexpr std::int64_t maxFolders = 1'000'000;
  static constexpr int maxRepeats = 8;

  // remote: the folder in the volume. local: the same below the chain's root.
  FolderCopy(CopyContext& copy, FolderChain& folders, std::string remotePath,
             std::string localPath);
  // status: of the folder itself.
  void run(const HostEntry& status);

 private:
  // A folder on the way from the walk's root to where it is.
  struct Step {
    std::string relpath;    // below the walk's root
    std::size_t next = 0;   // in its listing
    std::string last = {};  // name of the subfolder before that
    std::size_t hash = 0;   // of its listing
    bool filesDone = false;
    bool wasWhole = false;  // it was here with the host's time
  };

  void advance();
  void copyFiles(FolderListing& listing);
  void descend(const std::string& relpath, const HostEntry& status);
  [[nodiscard]] bool isLeftOut(const std::string& relpath);
  [[nodiscard]] bool isLoop(const FolderListing& listing) const;
  [[nodiscard]] bool enter(const std::string& relpath, const HostEntry* announced);
  [[nodiscard]] std::string remoteOf(const std::string& relpath) const;
  [[nodiscard]] std::string localOf(const std::string& relpath) const;

  CopyContext& context;
  FolderChain& chain;
  const std::string remote;
  const std::string local;
  std::vector<Step> steps;  // the root first
  std::int64_t folders = 0;
};

}  // namespace tarnel
