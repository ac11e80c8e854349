// Copies a folder of the host as one stream: entry after entry, each file's bytes behind its entry.
//
// The stream is hostile. An entry that cannot be (an unsafe or too long name, below a file, behind
// a link, named twice) fails by itself, and what follows of it is read and dropped. A stream that
// breaks its own order (bytes without a file or past what was announced, a header that does not
// decode, an unknown frame) fails as a whole: nothing after that can be believed.
// Threads: one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "control/TreeHeader.h"
#include "get/CopyContext.h"
#include "get/FolderChain.h"
#include "get/IncomingFile.h"

namespace tarnel {

class TreeCopy {
 public:
  // remote: the folder in the volume. local: the same below the chain's root, which the caller has
  // entered once.
  TreeCopy(CopyContext& copy, FolderChain& folders, std::string remotePath, std::string localPath);

  // False, with nothing done, when the host does not serve streams of trees.
  bool run();

 private:
  static constexpr std::size_t maxHeaderBytes = 1 << 20;
  static constexpr int maxUnsafeNames = 1'000;

  // What the stream is about to bring.
  struct Current {
    explicit Current(std::int64_t bytes) : left(bytes) {}
    std::int64_t left;                 // bytes announced and not yet here
    std::optional<IncomingFile> file;  // absent: what comes is dropped
    bool isTold = false;               // its failure was told, or it is none
  };

  [[nodiscard]] CopyResult<bool> nextFrame();  // false at the end
  [[nodiscard]] CopyResult<void> takeHeader(std::size_t bytes);
  [[nodiscard]] CopyResult<void> takeData();
  [[nodiscard]] CopyResult<void> takeFileError();
  [[nodiscard]] CopyResult<void> place();
  [[nodiscard]] CopyResult<void> placeFolder();
  [[nodiscard]] CopyResult<void> placeFile();
  // The entry fails in the folder where the chain stands, which is not whole without it.
  [[nodiscard]] std::unexpected<CopyError> lose(const CopyError& error);
  void finishCurrent();
  void failEntry(const CopyError& error);
  [[nodiscard]] bool isBelowLostFolder() const;
  [[nodiscard]] std::string remoteOf(std::string_view relpath) const;
  [[nodiscard]] std::string remoteFolder() const;
  [[nodiscard]] std::optional<std::int64_t> time();

  CopyContext& context;
  FolderChain& chain;
  const std::string remote;
  const std::string local;
  TreeHeader header{.relpath = {}, .kind = TreeHeader::Kind::dir};
  EntryPath entryPath;  // of the header, below the walk's root
  EntryPath placePath;  // of the header, below the chain's root
  EntryPath localPath;
  std::optional<Current> current;
  std::string lostFolder;  // could not be made: its contents are not told one by one
  int emptyFrames = 0;
  int unsafeNames = 0;
};

}  // namespace tarnel
