#include "get/FolderCopy.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "control/TreeHeader.h"
#include "fs/FabricLocation.h"
#include "get/FileCopy.h"
#include "get/FileTime.h"
#include "get/FolderNames.h"
#include "get/TreeCopy.h"

namespace tarnel {
namespace {

bool isEmptyFolder(int folder) {
  return forEachName(folder, [](const std::string&) { return false; });
}

bool hasTime(int folder, std::int64_t mtimeMs) {
  struct stat status{};
  return ::fstat(folder, &status) == 0 && modificationTimeMs(status) == mtimeMs;
}

}  // namespace

FolderCopy::FolderCopy(CopyContext& copy, FolderChain& folderChain, std::string remotePath,
                       std::string localPath)
    : context(copy),
      chain(folderChain),
      remote(std::move(remotePath)),
      local(std::move(localPath)) {}

void FolderCopy::run(const HostEntry& status) {
  descend({}, status);
  while (!steps.empty() && !context.isOver()) advance();
  if (context.isOver()) chain.abandon();
}

void FolderCopy::advance() {
  const auto listing = context.source.list(remoteOf(steps.back().relpath));
  if (!listing) {
    if (enter(steps.back().relpath, nullptr)) chain.spoil();
    context.fail(remoteOf(steps.back().relpath), listing.error());
    steps.pop_back();
    return;
  }
  FolderListing& entries = **listing;
  Step& step = steps.back();
  if (!std::exchange(step.filesDone, true)) {
    step.hash = entries.hash();
    copyFiles(entries);
  } else if (step.next > entries.size() || entries.name(step.next - 1) != step.last) {
    // Asked for again, and not what it was.
    const auto last = entries.find(step.last);
    step.next = last ? *last + 1 : entries.size();
  }
  for (; step.next < entries.size(); ++step.next) {
    const HostEntry status = entries.entry(step.next);
    if (!status.isDirectory || TreeHeader::isNoise(entries.name(step.next))) continue;
    step.last = entries.name(step.next++);
    const std::string relpath = childPath(step.relpath, step.last);
    if (isLoop(entries)) {
      context.fail(remoteOf(relpath), {.error = ELOOP, .detail = "folders that hold themselves"});
    } else {
      descend(relpath, status);
    }
    return;
  }
  steps.pop_back();
}

void FolderCopy::copyFiles(FolderListing& listing) {
  const std::string relpath = steps.back().relpath;
  if (!enter(relpath, nullptr)) return;
  if (listing.namesLeftOut() > 0) {
    chain.spoil();
    context.fail(remoteOf(relpath),
                 {.error = EINVAL,
                  .detail = std::to_string(listing.namesLeftOut()) + " names that cannot be"});
  }
  for (std::size_t i = 0; i < listing.size() && !context.isOver(); ++i) {
    const HostEntry& status = listing.entry(i);
    const std::string name(listing.name(i));
    if (status.isDirectory || TreeHeader::isNoise(name)) continue;
    copyFile(context, chain, remoteOf(childPath(relpath, name)), name, status);
  }
}

void FolderCopy::descend(const std::string& relpath, const HostEntry& status) {
  if (++folders > maxFolders) {
    context.fail(remoteOf(relpath), {.error = ELOOP, .detail = "too many folders"});
    steps.clear();
    return;
  }
  if (isLeftOut(relpath) || !enter(relpath, &status)) return;
  if (chain.isOurs()) ++context.report.folders;
  const bool isNew = chain.isOurs() || isEmptyFolder(chain.folder());
  const bool wasWhole =
      context.rules.resume && !chain.isOurs() && hasTime(chain.folder(), status.mtimeMs);
  if (isNew || !context.rules.resume) {
    if (wasWhole) return;  // empty, and that is all there was of it
    if (TreeCopy(context, chain, remoteOf(relpath), localOf(relpath)).run()) return;
  }
  steps.push_back({.relpath = relpath, .wasWhole = wasWhole});
}

// What is missing from a folder that is whole was not missed: a stream leaves links to folders out,
// which the listing shows as folders.
bool FolderCopy::isLeftOut(const std::string& relpath) {
  if (steps.empty() || !steps.back().wasWhole || !context.source.servesTrees()) return false;
  if (!enter(steps.back().relpath, nullptr)) return true;
  const std::string name = relpath.substr(relpath.rfind('/') + 1);
  struct stat there{};
  return ::fstatat(chain.folder(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0 &&
         errno == ENOENT;
}

bool FolderCopy::isLoop(const FolderListing& listing) const {
  if (context.source.servesTrees()) return false;  // then it goes where folders are here
  const auto above = std::ranges::count(steps, listing.hash(), &Step::hash);
  return above > maxRepeats;
}

bool FolderCopy::enter(const std::string& relpath, const HostEntry* announced) {
  const std::string path = localOf(relpath);
  const EntryPath names = namesOf(path);
  CopyResult<void> entered;
  if (announced != nullptr) {
    FolderLook look{.mtimeMs = announced->mtimeMs};
    if (announced->mode != 0) look.mode = announced->mode;
    entered = chain.enterAnnounced(names, look);
  } else {
    entered = chain.enter(names, names.size());
  }
  if (entered) return true;
  chain.spoil();  // where it stands now something is missing
  context.fail(remoteOf(relpath), entered.error());
  return false;
}

std::string FolderCopy::remoteOf(const std::string& relpath) const {
  return relpath.empty() ? remote : childPath(remote, relpath);
}

std::string FolderCopy::localOf(const std::string& relpath) const {
  return relpath.empty() ? local : childPath(local, relpath);
}

}  // namespace tarnel
