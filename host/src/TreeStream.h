// The answer to `readTreeStream`: everything below a folder, or one file, then `eof`.
//
// A folder comes before its contents, names in the order of listings; the folder that was asked for
// has no record of its own, and a file that was asked for has its name as its path. Left out: noise
// names, what the share does not serve, and links to folders, so that no tree is without end; what
// goes while the walk is under way is left out too. A folder that cannot be walked carries why in
// its header; a file that cannot be read, or not all of it, is followed by `fileFailed`. Never more
// bytes are sent than the header's size says; a folder's size is 0, modes are permissions only.
//
// Memory: the names of the folders between the root and the place of the walk, at most
// DirectoryNames::maxBytes of them; at most maxDepth folders deep. No descriptor is held but that
// of the file being sent. Threads: one.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "StreamWriter.h"
#include "control/TreeHeader.h"
#include "host/BeneathResolver.h"
#include "host/DirectoryNames.h"

namespace tarnel {

class TreeStream {
 public:
  static constexpr std::size_t maxDepth = 256;

  TreeStream(const BeneathResolver& resolver, AnswerSink& answerSink)
      : share(resolver), sink(answerSink), writer(answerSink) {}

  // path is below the share, name what a file there is called. False when the client has gone.
  [[nodiscard]] bool send(const std::string& path, std::string_view name);
  // Names that cannot travel, for not being UTF-8.
  [[nodiscard]] std::size_t namesLeftOut() const { return notUtf8; }

 private:
  struct Level {
    DirectoryNames names;
    std::size_t next;
    std::size_t parentLength;  // of the path above it
  };

  [[nodiscard]] HostResult<void> start(const std::string& from, std::string_view name);
  // False when nobody waits for the rest of it.
  [[nodiscard]] bool walk();
  void visit(const DirectoryNames::Name& name);
  [[nodiscard]] bool leadsToFile() const;
  void sendFile(std::string_view relpath);
  // False when it is not walked; what there is to say of it has been said.
  bool enterDirectory(std::size_t parentLength);
  [[nodiscard]] HostResult<DirectoryNames> namesOf(UniqueFd directory);
  [[nodiscard]] std::string_view relativePath() const;
  void announce(TreeHeader::Kind kind, std::string_view relpath, mode_t mode, std::int64_t size,
                std::optional<Refusal> error = {});
  void leave();

  const BeneathResolver& share;
  AnswerSink& sink;
  StreamWriter writer;
  std::string path;            // below the share, of what is being looked at
  std::size_t rootLength = 0;  // of the part of it that the stream leaves out
  std::vector<Level> levels;
  std::size_t notUtf8 = 0;
  std::size_t nameBytes = 0;  // of the names in all levels
};

}  // namespace tarnel
