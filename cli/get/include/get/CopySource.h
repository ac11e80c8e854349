// Where a copy comes from: the host, over two connections. One carries streams; the other answers
// what has to be known meanwhile, so that a question never waits for a stream's end.
//
// Listings of the folders that were asked about last are kept, at most maxListingMemory bytes
// besides the newest; one that was given up is asked for again. So are refusals, but not what
// failed under a shorter deadline than questionDeadline.
// Threads: one; the Interruption wakes it.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "control/ControlRequest.h"
#include "get/CopyError.h"
#include "get/FolderListing.h"
#include "get/HostStream.h"

namespace tarnel {

class CopySource {
 public:
  static constexpr std::size_t maxListingMemory = 8 << 20;
  static constexpr double questionDeadline = 5;  // seconds of silence
  static constexpr double streamDeadline = 30;
  static constexpr std::int64_t readBytes = 262'144;

  CopySource(const std::string& socketPath, Interruption& interruption);

  [[nodiscard]] CopyResult<HostEntry> stat(const std::string& path,
                                           double deadline = questionDeadline);
  // Valid until the next question about a folder.
  [[nodiscard]] CopyResult<FolderListing*> list(const std::string& path,
                                                double deadline = questionDeadline);
  // The modification time of an entry of a folder: from the folder's listing, or asked for if it
  // is not there.
  [[nodiscard]] CopyResult<std::int64_t> timeOf(const std::string& folder, std::string_view name);

  struct Share {
    std::string peer;
    std::string name;
  };
  [[nodiscard]] CopyResult<std::vector<Share>> shares();

  // Opens a stream: `stream()` is then about to read its first head. False when this host does not
  // serve such streams, which is not asked again.
  [[nodiscard]] CopyResult<bool> openTree(const std::string& path);
  // size: of the file as far as is known; of one that has grown since no more is asked for. One
  // that is said to be empty may have content all the same, and is asked for whole.
  [[nodiscard]] CopyResult<bool> openFile(const std::string& path, std::int64_t size);
  [[nodiscard]] HostStream& stream() { return bytes; }
  [[nodiscard]] bool servesTrees() const { return treesServed; }

  // Some bytes from an offset, for a host without streams; none at the end.
  [[nodiscard]] CopyResult<Bytes> read(const std::string& path, std::int64_t offset,
                                       std::int64_t length);

 private:
  struct Kept {
    std::string path;
    CopyResult<FolderListing> listing;
  };
  static constexpr std::size_t maxKept = 64;
  // Of every answer but a listing: what becomes records may take several times its text.
  static constexpr std::size_t maxAnswer = 1 << 20;

  [[nodiscard]] CopyResult<bool> open(const ControlRequest& request, bool& served);
  [[nodiscard]] CopyResult<Bytes> question(HostStream& connection, const ControlRequest& request,
                                           double deadline, std::size_t maxBytes = maxAnswer);
  void forgetListings();

  HostStream bytes;
  HostStream questions;
  std::list<Kept> kept;  // the last asked first; refusals too
  bool treesServed = true;
  bool filesServed = true;
};

}  // namespace tarnel
