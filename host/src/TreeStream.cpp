#include "TreeStream.h"

#include <cerrno>
#include <utility>

#include "control/ControlStreamFrame.h"
#include "control/JsonWriter.h"

namespace tarnel {
namespace {

using Kind = TreeHeader::Kind;

constexpr mode_t permissions = 07777;

bool isWanted(std::string_view name) { return !TreeHeader::isNoise(name); }

}  // namespace

bool TreeStream::send(const std::string& from, std::string_view name) {
  if (const auto started = start(from, name); !started) {
    writer.error(started.error());
    return writer.finish();
  }
  if (!walk()) return false;
  writer.frame(ControlStreamFrame::eof, {});
  return writer.finish();
}

HostResult<void> TreeStream::start(const std::string& from, std::string_view name) {
  const auto status = share.status(from);
  if (!status) return std::unexpected(status.error());
  if (!S_ISDIR(status->st_mode)) {
    path = from;
    sendFile(name);
    return {};
  }
  // Without any link in it the path costs one system call each time that it is opened.
  const auto here = share.enter(from);
  if (!here) return std::unexpected(here.error());
  path = here->path();
  rootLength = path.size();
  auto directory = share.openDirectory(path);
  if (!directory) return std::unexpected(directory.error());
  auto names = namesOf(std::move(*directory));
  if (!names) return std::unexpected(names.error());
  nameBytes = names->bytes();
  levels.push_back({std::move(*names), 0, 0});
  return {};
}

bool TreeStream::walk() {
  // A walk that finds nothing to send must notice too that nobody waits for it.
  constexpr std::size_t often = 64;
  for (std::size_t visited = 0; !levels.empty() && !writer.hasGone();) {
    Level& level = levels.back();
    if (level.next == level.names.size()) {
      leave();
      continue;
    }
    if (++visited % often == 0 && sink.isOver()) return false;
    visit(level.names[level.next++]);
  }
  return !writer.hasGone();
}

void TreeStream::visit(const DirectoryNames::Name& name) {
  const std::size_t parentLength = path.size();
  if (!path.empty()) path.push_back('/');
  path.append(name.text);
  switch (name.kind) {
    case DirectoryNames::Kind::directory:
      if (enterDirectory(parentLength)) return;
      break;
    case DirectoryNames::Kind::file:
      sendFile(relativePath());
      break;
    case DirectoryNames::Kind::link:
      if (leadsToFile()) sendFile(relativePath());
      break;
  }
  path.resize(parentLength);
}

// True also when nobody knows: then the file is told as failed.
bool TreeStream::leadsToFile() const {
  const auto status = share.status(path);
  return status ? S_ISREG(status->st_mode) : status.error() == Refusal::exhausted;
}

void TreeStream::sendFile(std::string_view relpath) {
  const auto file = share.openFile(path);
  // Of what stands there now a later walk will tell.
  if (!file && (file.error() == Refusal::noSuchFile || file.error() == Refusal::isDirectory)) {
    return;
  }
  struct stat status{};
  std::optional<Refusal> failure;
  if (!file) {
    failure = file.error();
    status = share.status(path).value_or(status);
  } else if (::fstat(file->get(), &status) != 0) {
    failure = refusalFor(errno);
  }
  announce(Kind::file, relpath, status.st_mode, status.st_size);
  if (!failure) failure = writer.file(file->get(), 0, status.st_size);
  if (failure) writer.frame(ControlStreamFrame::fileError, description(*failure));
}

bool TreeStream::enterDirectory(std::size_t parentLength) {
  auto directory = share.openDirectory(path);
  if (!directory &&
      (directory.error() == Refusal::noSuchFile || directory.error() == Refusal::notDirectory)) {
    return false;
  }
  struct stat status{};
  if (!directory || ::fstat(directory->get(), &status) != 0) {
    status = share.status(path).value_or(status);
  }
  HostResult<DirectoryNames> names = std::unexpected(Refusal::folderTooDeep);
  if (!directory) {
    names = std::unexpected(directory.error());
  } else if (levels.size() < maxDepth) {
    names = namesOf(std::move(*directory));
  }
  const bool isWalked = names.has_value();
  announce(Kind::dir, relativePath(), status.st_mode, 0,
           isWalked ? std::nullopt : std::optional(names.error()));
  if (!isWalked) return false;
  nameBytes += names->bytes();
  levels.push_back({std::move(*names), 0, parentLength});
  return true;
}

HostResult<DirectoryNames> TreeStream::namesOf(UniqueFd directory) {
  auto names =
      DirectoryNames::read(std::move(directory), DirectoryNames::maxBytes - nameBytes, isWanted);
  if (names) notUtf8 += names->leftOut();
  return names;
}

std::string_view TreeStream::relativePath() const {
  return std::string_view(path).substr(rootLength == 0 ? 0 : rootLength + 1);
}

void TreeStream::announce(Kind kind, std::string_view relpath, mode_t mode, std::int64_t size,
                          std::optional<Refusal> error) {
  TreeHeader header{.relpath = std::string(relpath),
                    .kind = kind,
                    .mode = static_cast<std::uint32_t>(mode & permissions),
                    .size = size};
  if (error) header.error = description(*error);
  JsonWriter json;
  json.value(header);
  // Every name was checked: there is nothing that cannot be written.
  writer.frame(ControlStreamFrame::header, json.finish().value_or(""));
}

void TreeStream::leave() {
  path.resize(levels.back().parentLength);
  nameBytes -= levels.back().names.bytes();
  levels.pop_back();
}

}  // namespace tarnel
