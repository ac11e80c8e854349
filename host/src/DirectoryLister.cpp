#include "host/DirectoryLister.h"

#include <fcntl.h>

#include <cerrno>
#include <string_view>

#include "AnswerLine.h"
#include "DirectoryStream.h"
#include "HostStatus.h"
#include "control/Text.h"

namespace tarnel {
namespace {

constexpr std::string_view closing = "]}\n";

bool isSearchable(int directoryFD) {
  struct stat status;
  return ::fstatat(directoryFD, "./.", &status, 0) == 0 || errno != EACCES;
}

// An entry that cannot be served is left out. One that could not be looked at for want of a
// descriptor may be served the next time: without it the listing would be untrue.
HostResult<std::optional<struct stat>> leftOut(Refusal why) {
  if (why == Refusal::exhausted) return std::unexpected(why);
  return std::nullopt;
}

}  // namespace

HostResult<Listing> DirectoryLister::run() {
  auto opened = resolver.openDirectory(path);
  if (!opened) return std::unexpected(opened.error());
  struct stat status;
  if (::fstat(opened->get(), &status) != 0) return std::unexpected(refusalFor(errno));
  directory = fileId(status);
  auto stream = DirectoryStream::open(std::move(*opened));
  if (!stream) return std::unexpected(stream.error());
  directoryFD = stream->fd();
  json.beginObject();
  json.field("status", "ok");
  json.key(options.namesOnly ? "names" : "entries");
  json.beginArray();
  if (auto done = writeEntries(*stream); !done) return std::unexpected(done.error());
  json.endArray();
  json.endObject();
  return Listing{.line = answerLine(json), .namesLeftOut = namesLeftOut};
}

HostResult<void> DirectoryLister::writeEntries(DirectoryStream& stream) {
  while (!isComplete()) {
    const auto next = stream.next();
    if (!next) return std::unexpected(next.error());
    if (*next == nullptr) return {};
    const char* const name = (*next)->d_name;
    if (!isValidUtf8(name)) {
      ++namesLeftOut;
      continue;
    }
    if (auto done = writeEntry(name); !done) return done;
  }
  return {};
}

HostResult<void> DirectoryLister::writeEntry(const char* name) {
  const auto status = statusOf(name);
  if (!status) return std::unexpected(status.error());
  if (!*status) return {};
  if (options.namesOnly) {
    json.value(ControlName(name, S_ISDIR((*status)->st_mode)));
  } else {
    fillControlStat(entry, name, **status, accounts);
    json.value(entry);
  }
  ++written;
  if (json.size() + closing.size() > options.maxAnswerBytes) {
    return std::unexpected(Refusal::listingTooLarge);
  }
  return {};
}

HostResult<std::optional<struct stat>> DirectoryLister::statusOf(const char* name) {
  struct stat status;
  if (resolver.mayHide(name)) return throughWalk(name);
  if (::fstatat(directoryFD, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    // A directory that may be read but not entered refuses every entry alike: an empty listing
    // would be untrue. Anything else is this entry's own: it has just gone, or another user's FUSE
    // mount stands there, which refuses even root.
    const int error = errno;
    if (error == EACCES && !isSearchable(directoryFD)) {
      return std::unexpected(Refusal::permissionDenied);
    }
    return leftOut(refusalFor(error));
  }
  if (S_ISLNK(status.st_mode)) return throughWalk(name);
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return std::nullopt;
  if (status.st_dev != directory.device && resolver.isForeign(status.st_dev)) return std::nullopt;
  return status;
}

HostResult<std::optional<struct stat>> DirectoryLister::throughWalk(const char* name) {
  if (!walk) walk.emplace(resolver.enter(path));
  // Another directory may stand at the path by now, or none; its links are not this one's.
  if (!*walk) return std::unexpected(walk->error());
  if ((*walk)->id() != directory) return std::unexpected(Refusal::noSuchFile);
  const auto target = (*walk)->look(name);
  if (!target) return leftOut(target.error());
  return target->status;
}

bool DirectoryLister::isComplete() const { return options.limit && written >= *options.limit; }

}  // namespace tarnel
