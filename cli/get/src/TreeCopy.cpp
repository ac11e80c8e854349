#include "get/TreeCopy.h"

#include <algorithm>
#include <utility>

#include "control/ControlStreamFrame.h"
#include "control/JsonReader.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

// The stream does not keep to its own order.
std::unexpected<CopyError> broken(std::string detail) {
  return copyFailure(EIO, std::move(detail));
}

bool hasNoise(const EntryPath& path) { return std::ranges::any_of(path, TreeHeader::isNoise); }

}  // namespace

TreeCopy::TreeCopy(CopyContext& copy, FolderChain& folders, std::string remotePath,
                   std::string localFolder)
    : context(copy),
      chain(folders),
      remote(std::move(remotePath)),
      local(std::move(localFolder)),
      localPath(namesOf(local)) {}

bool TreeCopy::run() {
  const auto opened = context.source.openTree(remote);
  if (opened && !*opened) return false;
  CopyResult<bool> more = opened;
  while (more && *more && !context.isOver()) more = nextFrame();
  current.reset();
  if (!more) context.fail(remote, more.error());
  if (!more || context.isOver()) {
    context.source.stream().drop();
    chain.abandon();
  }
  return true;
}

CopyResult<bool> TreeCopy::nextFrame() {
  HostStream& stream = context.source.stream();
  const auto head = stream.readHead();
  if (!head) return std::unexpected(head.error());
  CopyResult<void> outcome;
  switch (head->tag) {
    case ControlStreamFrame::data:
      outcome = takeData();
      break;
    case ControlStreamFrame::header:
      finishCurrent();
      outcome = takeHeader(head->length);
      break;
    case ControlStreamFrame::fileError:
      outcome = takeFileError();
      break;
    case ControlStreamFrame::eof:
      finishCurrent();
      return false;
    case ControlStreamFrame::error: {
      const auto refusal = stream.readRefusal();
      return std::unexpected(refusal ? *refusal : refusal.error());
    }
    default:
      return broken("an unknown frame");
  }
  if (!outcome) return std::unexpected(outcome.error());
  return true;
}

CopyResult<void> TreeCopy::takeHeader(std::size_t bytes) {
  if (bytes > maxHeaderBytes) return broken("a header of " + std::to_string(bytes) + " bytes");
  const auto text = context.source.stream().readText(maxHeaderBytes);
  if (!text) return std::unexpected(text.error());
  auto decoded = readJson<TreeHeader>(*text);
  if (!decoded) return broken("a header that is none: " + decoded.error().detail);
  header = std::move(*decoded);
  if (header.size < 0) return broken("a negative size");
  const bool isFile = header.kind == TreeHeader::Kind::file;
  current.emplace(isFile ? header.size : 0);
  emptyFrames = 0;
  if (const auto parsed = parseEntryPath(header.relpath, entryPath); !parsed) {
    failEntry(parsed.error());
    if (parsed.error().error == EINVAL && ++unsafeNames > maxUnsafeNames) {
      return broken("unsafe names without end");
    }
  } else if (hasNoise(entryPath) || isBelowLostFolder()) {
    current->isTold = true;
  } else if (const auto placed = place(); !placed) {
    failEntry(placed.error());
  }
  return {};
}

CopyResult<void> TreeCopy::place() {
  placePath = localPath;
  placePath.insert(placePath.end(), entryPath.begin(), entryPath.end());
  return header.kind == TreeHeader::Kind::dir ? placeFolder() : placeFile();
}

CopyResult<void> TreeCopy::placeFolder() {
  FolderLook look{.mtimeMs = time()};
  if (header.mode != 0) look.mode = header.mode;
  if (auto entered = chain.enterAnnounced(placePath, look); !entered) {
    lostFolder = header.relpath;
    return lose(entered.error());
  }
  if (chain.isOurs()) ++context.report.folders;
  return header.error ? lose(refusalError(*header.error)) : CopyResult<void>();
}

CopyResult<void> TreeCopy::placeFile() {
  if (auto entered = chain.enter(placePath, placePath.size() - 1); !entered) return entered;
  if (header.error) return lose(refusalError(*header.error));
  const HostEntry status{.mode = header.mode, .size = header.size};
  std::string name(entryPath.back());
  const auto admission = admitFile(chain, name, status, {.force = context.rules.force});
  if (!admission) return lose(admission.error());
  auto file =
      IncomingFile::create(chain, std::move(name), status, admission->over, context.interruption);
  if (!file) return lose(file.error());
  current->file.emplace(std::move(*file));
  return {};
}

std::unexpected<CopyError> TreeCopy::lose(const CopyError& error) {
  chain.spoil();
  return std::unexpected(error);
}

CopyResult<void> TreeCopy::takeData() {
  HostStream& stream = context.source.stream();
  if (!current || header.kind != TreeHeader::Kind::file) return broken("bytes without a file");
  if (stream.remaining() == 0 && ++emptyFrames > HostStream::maxEmptyFrames)
    return broken("empty frames");
  if (static_cast<std::int64_t>(stream.remaining()) > current->left) {
    current.reset();
    return broken("more bytes than announced");
  }
  current->left -= static_cast<std::int64_t>(stream.remaining());
  while (stream.remaining() > 0) {
    const auto piece = stream.readPiece();
    if (!piece) return std::unexpected(piece.error());
    context.report.bytes += static_cast<std::int64_t>(piece->size());
    if (current->file) {
      if (const auto written = current->file->write(*piece); !written) failEntry(written.error());
    }
    context.onProgress();
    if (context.isOver()) return {};
  }
  return {};
}

CopyResult<void> TreeCopy::takeFileError() {
  const auto refusal = context.source.stream().readRefusal();
  if (!refusal) return std::unexpected(refusal.error());
  if (!current) return broken("the failure of no file");
  failEntry(*refusal);
  current.reset();
  return {};
}

void TreeCopy::finishCurrent() {
  if (!current) return;
  if (current->file) {
    if (const auto published = current->file->publish(time()); !published) {
      failEntry(published.error());
    } else {
      ++context.report.files;
    }
    context.onProgress();
  }
  current.reset();
}

void TreeCopy::failEntry(const CopyError& error) {
  if (current) {
    if (current->file) chain.spoil();
    current->file.reset();
    if (std::exchange(current->isTold, true)) return;
  }
  context.fail(remoteOf(header.relpath), error);
}

bool TreeCopy::isBelowLostFolder() const {
  return !lostFolder.empty() && header.relpath.starts_with(lostFolder) &&
         header.relpath.size() > lostFolder.size() && header.relpath[lostFolder.size()] == '/';
}

std::string TreeCopy::remoteOf(std::string_view relpath) const {
  return childPath(remote, relpath);
}

std::string TreeCopy::remoteFolder() const {
  const std::size_t slash = header.relpath.rfind('/');
  return slash == std::string::npos ? remote : remoteOf(header.relpath.substr(0, slash));
}

// A file whose time is not known is whole all the same, but the next copy cannot tell.
std::optional<std::int64_t> TreeCopy::time() {
  const auto found = context.source.timeOf(remoteFolder(), entryPath.back());
  if (found) return *found;
  context.fail(remoteOf(header.relpath),
               {.error = found.error().error, .detail = "its time is not known"});
  return std::nullopt;
}

}  // namespace tarnel
