// Writes the answer to a listing while it walks the directory, in the directory's own order.
//
// Each entry's status is that of what it leads to; entries that lead to no regular file or
// directory inside the share are left out (PathWalk says which). A directory that goes from its
// path before its links have been looked at is missing: without them its listing would be untrue.
// Names that are not valid UTF-8 cannot travel in JSON: they are left out and counted. Bounds: an
// answer is one line, and a line longer than maxAnswerBytes, its line feed counted, would be
// refused by every reader: Refusal::listingTooLarge. With 16 MiB that is about 100,000 entries with
// names of 40 bytes; a names-only listing holds about three times as many. Threads: one lister, one
// thread.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "control/Bytes.h"
#include "control/ControlResponse.h"
#include "control/JsonWriter.h"
#include "host/AccountNames.h"
#include "host/BeneathResolver.h"
#include "host/Refusal.h"

namespace tarnel {

class DirectoryStream;

struct ListingOptions {
  bool namesOnly = false;
  std::optional<std::int64_t> limit = {};  // entries; not negative
  std::size_t maxAnswerBytes = 0;
};

struct Listing {
  Bytes line;                    // with its line feed
  std::size_t namesLeftOut = 0;  // for not being UTF-8
};

class DirectoryLister {
 public:
  DirectoryLister(const BeneathResolver& share, AccountNames& names, std::string directoryPath,
                  const ListingOptions& chosen)
      : resolver(share), accounts(names), path(std::move(directoryPath)), options(chosen) {}

  [[nodiscard]] HostResult<Listing> run();

 private:
  [[nodiscard]] HostResult<void> writeEntries(DirectoryStream& stream);
  [[nodiscard]] HostResult<void> writeEntry(const char* name);
  // nullopt leaves the entry out.
  [[nodiscard]] HostResult<std::optional<struct stat>> statusOf(const char* name);
  [[nodiscard]] HostResult<std::optional<struct stat>> throughWalk(const char* name);
  [[nodiscard]] bool isComplete() const;

  const BeneathResolver& resolver;
  AccountNames& accounts;
  const std::string path;
  const ListingOptions options;
  JsonWriter json;
  int directoryFD = -1;  // borrowed from the stream while run() reads it
  FileId directory;
  std::optional<HostResult<PathWalk>> walk;  // made for the first link or secret
  ControlStat entry;
  std::int64_t written = 0;
  std::size_t namesLeftOut = 0;
};

}  // namespace tarnel
