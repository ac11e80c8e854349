#include "get/CopyJob.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "fs/FabricLocation.h"
#include "get/CountTotals.h"
#include "get/FileCopy.h"
#include "get/FolderCopy.h"
#include "get/FolderNames.h"
#include "get/PendingFile.h"

namespace tarnel {
namespace {

// Nothing else in this process makes files yet.
mode_t currentMask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

std::string lastName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool isInShare(const std::string& path) { return FabricLocation::parse(path).inShare() != nullptr; }

// The path with single slashes; ENOENT for one that no volume has.
CopyResult<std::string> normalised(const std::string& path) {
  std::string clean;
  for (std::size_t at = 0; at <= path.size();) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    const std::string_view name = std::string_view(path).substr(at, end - at);
    at = end + 1;
    if (name.empty()) continue;
    if (!isSafeFabricName(name)) return copyFailure(ENOENT);
    clean = childPath(clean, name);
  }
  return clean;
}

}  // namespace

CopyJob::CopyJob(CopyOptions chosen, Interruption& signals)
    : options(std::move(chosen)),
      interruption(signals),
      source(options.socket, interruption),
      context{.source = source,
              .report = report,
              .interruption = interruption,
              .rules = options.rules,
              .onProgress = [this] { showProgress(); }},
      line(options.terminal) {}

const CopyReport& CopyJob::run() {
  auto opened = CopyDestination::open(options.destination);
  if (opened && opened->newName && options.paths.size() > 1) {
    opened = copyFailure(ENOTDIR, "several paths need a folder");
  }
  if (!opened) {
    context.fail(options.destination, opened.error());
    return report;
  }
  destination = std::move(*opened);
  if (options.terminal >= 0) totals = countTotals(context, options.paths);
  for (const std::string& path : options.paths) {
    if (!context.isOver()) copyPath(path);
  }
  line.clear();
  return report;
}

void CopyJob::copyPath(const std::string& path) {
  const auto clean = normalised(path);
  if (!clean) return context.fail(path, clean.error());
  std::string name = destination.newName.value_or(lastName(*clean));
  if (isCopyItself(*clean, name)) {
    auto opened = CopyDestination::openAsCopy(options.destination);
    if (!opened) return context.fail(options.destination, opened.error());
    destination = std::move(*opened);
    name = *destination.newName;
  }
  if (isInShare(*clean)) return copyOne(*clean, name);
  copyShares(*clean, name);
}

// `get PATH new` made the folder "new"; to go on with it, `get --resume PATH new` must not put the
// copy into it. It holds something, and nothing but what PATH has.
bool CopyJob::isCopyItself(const std::string& remote, const std::string& name) {
  if (!options.rules.resume || destination.newName || options.paths.size() != 1) return false;
  const int folder = destination.folder.get();
  struct stat there{};
  if (::fstatat(folder, name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0) return false;
  const HasEntry has = entriesOf(remote);
  if (!has) return false;
  bool holdsSome = false;
  const bool holdsOthers = !forEachName(folder, [&](const std::string& entry) {
    if (entry.starts_with(PendingFile::namePrefix)) return true;
    holdsSome = true;
    return ::fstatat(folder, entry.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
           has(entry, S_ISDIR(there.st_mode));
  });
  return holdsSome && !holdsOthers;
}

CopyJob::HasEntry CopyJob::entriesOf(const std::string& remote) {
  if (isInShare(remote)) {
    const auto listing = source.list(remote);
    if (!listing) return {};
    return [&entries = **listing](const std::string& name, bool isFolder) {
      const auto index = entries.find(name);
      return index && entries.entry(*index).isDirectory == isFolder;
    };
  }
  const auto shares = source.shares();
  if (!shares) return {};
  return [remote, all = *shares](const std::string& name, bool isFolder) {
    return isFolder && std::ranges::any_of(all, [&](const CopySource::Share& share) {
             return share.peer == remote && share.name == name;
           });
  };
}

// The levels above the shares are made up by the volume; the host only knows the shares.
void CopyJob::copyShares(const std::string& peer, const std::string& local) {
  const auto shares = source.shares();
  if (!shares) return context.fail(peer.empty() ? "/" : peer, shares.error());
  bool found = peer.empty();
  for (const CopySource::Share& share : *shares) {
    if (context.isOver()) return;
    if (!peer.empty() && share.peer != peer) continue;
    found = true;
    const std::string remote = childPath(share.peer, share.name);
    if (!checkEntryName(share.peer) || !checkEntryName(share.name)) {
      context.fail(remote, {.error = EINVAL, .detail = "unsafe name"});
      continue;
    }
    const std::string below = peer.empty() ? childPath(local, share.peer) : local;
    copyOne(remote, childPath(below, share.name));
  }
  if (!found) context.fail(peer, {.error = ENOENT});
}

FolderChain CopyJob::makeChain() {
  UniqueFd root(::fcntl(destination.folder.get(), F_DUPFD_CLOEXEC, 0));
  return {std::move(root),
          {.mask = currentMask(),
           .restoresModes = options.rules.resume,
           .onUnfinished = [this](const std::string& relpath, const CopyError& error) {
             context.fail(childPath(options.destination, relpath), error);
           }}};
}

void CopyJob::copyOne(const std::string& remote, const std::string& local) {
  const auto status = source.stat(remote);
  if (!status) return context.fail(remote, status.error());
  FolderChain chain = makeChain();
  if (status->isDirectory) {
    FolderCopy(context, chain, remote, local).run(*status);
    return;
  }
  EntryPath path;
  const auto parsed = parseEntryPath(local, path);
  const auto entered = parsed ? chain.enter(path, path.size() - 1) : parsed;
  if (!entered) return context.fail(remote, entered.error());
  copyFile(context, chain, remote, std::string(path.back()), *status);
}

void CopyJob::showProgress() {
  if (options.terminal < 0 || !line.isDue()) return;
  line.draw({.bytes = report.bytes + report.skippedBytes,
             .files = report.files + report.skipped,
             .received = report.bytes,
             .elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
                 ProgressLine::Clock::now() - start),
             .totals = totals});
}

}  // namespace tarnel
