// 82x, 83x: the stream of a tree.
#include <array>
#include <map>
#include <set>
#include <string>

#include "CheckGroups.h"
#include "FileBytes.h"
#include "HostProbe.h"
#include "Statuses.h"
#include "StreamVerdicts.h"
#include "control/Text.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

using End = StreamCourse::End;
using Kind = FabricSourceError::Kind;

constexpr int ground = 821;

bool isFile(const TreeEntry& entry) { return entry.header.kind == TreeHeader::Kind::file; }

CheckVerdict framesAreWholeAndKnown(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  const End end = tree.course.end;
  if (end == End::broken || end == End::badFrame) {
    return failedCheck("in the tree stream of " + quoted(tree.root) + " " + tree.course.fault +
                       ": send headers (H), bytes (D), failures of files (x) and an end (E or X)");
  }
  return cannotLook(tree.course, 801).value_or(passed());
}

CheckVerdict aTreeEnds(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  if (tree.course.end == End::eof) return passed();
  return failedCheck("the tree stream of " + quoted(tree.root) + " failed with " +
                     quoted(tree.course.message) + ": send what can be read, then an end frame");
}

CheckVerdict bytesFollowTheirFile(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  if (tree.strayBytes.empty()) return passed();
  return failedCheck("bytes came " + tree.strayBytes + ": send a file's bytes behind its header");
}

CheckVerdict filesHaveTheirSize(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  for (const TreeEntry& entry : tree.entries) {
    if (entry.header.size < 0 && isFile(entry)) {
      return failedCheck("the header of " + quoted(entry.header.relpath) + " has the size " +
                         std::to_string(entry.header.size) + ": give bytes, never less than 0");
    }
    const bool isLess = entry.bytes < entry.header.size && !entry.hasFailed && !entry.header.error;
    if (!isFile(entry) || (entry.bytes <= entry.header.size && !isLess)) continue;
    return failedCheck("behind the header of " + quoted(entry.header.relpath) + ", whose size is " +
                       std::to_string(entry.header.size) + ", came " + std::to_string(entry.bytes) +
                       " bytes: never send more, and a failure (x) for what is less");
  }
  return passed();
}

// Names joined by single slashes; the root itself has none.
bool staysBelow(std::string_view relpath) {
  std::size_t start = 0;
  while (true) {
    const std::size_t slash = relpath.find('/', start);
    if (!isSafeFabricName(relpath.substr(start, slash - start))) return false;
    if (slash == relpath.npos) return true;
    start = slash + 1;
  }
}

CheckVerdict pathsStayBelowTheRoot(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  for (const TreeEntry& entry : tree.entries) {
    if (staysBelow(entry.header.relpath)) continue;
    return failedCheck("the relpath " + quoted(entry.header.relpath) +
                       " is refused by readers: "
                       "join names below the root by \"/\", without a record for the root");
  }
  return passed();
}

CheckVerdict noEntryComesTwice(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  std::set<std::string_view> paths;
  for (const TreeEntry& entry : tree.entries) {
    if (paths.insert(entry.header.relpath).second) continue;
    return failedCheck("the entry " + quoted(entry.header.relpath) + " came twice: send each once");
  }
  return passed();
}

CheckVerdict foldersComeFirst(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  std::set<std::string_view> folders;
  for (const TreeEntry& entry : tree.entries) {
    const std::string_view path = entry.header.relpath;
    const std::size_t slash = path.rfind('/');
    if (slash != path.npos && !folders.contains(path.substr(0, slash))) {
      return failedCheck("the entry " + quoted(path) +
                         " came before its folder: send a folder, "
                         "then what is in it");
    }
    if (!isFile(entry)) folders.insert(path);
  }
  return passed();
}

std::string lastName(std::string_view path) {
  return std::string(path.substr(path.rfind('/') + 1));  // npos + 1 is 0
}

CheckVerdict noiseIsLeftOut(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  for (const TreeEntry& entry : tree.entries) {
    if (!TreeHeader::isNoise(lastName(entry.header.relpath))) continue;
    return failedCheck("the tree holds " + quoted(entry.header.relpath) +
                       ": leave out \".DS_Store\" "
                       "and names that begin with \"._\"");
  }
  const auto entries = entriesByName(host, tree.root);
  if (!entries) return skipped("needs check 501 to pass");
  for (const auto& [name, entry] : *entries) {
    if (TreeHeader::isNoise(name)) return passed();
  }
  return skipped("share a file named .DS_Store beside a file with content");
}

// What a listing and the tree's first level say differently; empty where nothing.
std::string difference(const EntriesByName& entries, const StreamedTree& tree) {
  std::map<std::string_view, const TreeEntry*> firstLevel;
  for (const TreeEntry& entry : tree.entries) {
    if (entry.header.relpath.find('/') == std::string::npos) {
      firstLevel[entry.header.relpath] = &entry;
    }
  }
  for (const auto& [path, entry] : firstLevel) {
    const auto same = entries.find(std::string(path));
    if (same == entries.end()) return quoted(path) + " is in the tree and not in the listing";
    if (same->second.isDirectory == isFile(*entry)) return quoted(path) + " has another kind";
  }
  for (const auto& [name, stat] : entries) {
    // A link to a folder is listed as a folder and not walked into.
    if (stat.isDirectory || TreeHeader::isNoise(name)) continue;
    const auto same = firstLevel.find(name);
    if (same == firstLevel.end()) return quoted(name) + " is in the listing and not in the tree";
    if (same->second->header.size != stat.size) return quoted(name) + " has another size";
  }
  return "";
}

CheckVerdict aTreeHasWhatItsListingHas(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  if (tree.course.end != End::eof) return skipped("needs check 822 to pass");
  const auto entries = entriesByName(host, tree.root);
  if (!entries) return skipped("needs check 501 to pass");
  const std::string fault = difference(*entries, tree);
  if (fault.empty()) return passed();
  // Something may have changed between the two.
  const StreamedTree again = readTreeStream(host, tree.root, "");
  const auto after = entriesByName(host, tree.root);
  if (!after) return skipped("needs check 501 to pass");
  if (difference(*after, again).empty() || *after != *entries) {
    return skipped("what is shared changes: share something at rest");
  }
  return failedCheck(fault + ", in the tree of " + quoted(tree.root) +
                     ": walk what `list` lists, but for noise");
}

CheckVerdict aTreeHasTheBytesOfReads(HostProbe& host) {
  const auto& file = host.material().file;
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  if (!file || !tree.kept) return skipped("needs check 829 to pass");
  const auto bytes = readOn(host, file->location, 0, Material::windowBytes,
                            static_cast<std::size_t>(Material::mostFileBytes));
  if (!bytes) return skipped("needs check 702 to pass");
  if (*bytes == *tree.kept) return passed();
  const auto size = sizeOf(host, file->location);
  if (!size || *size != file->stat.size)
    return skipped("the file changes: share something at rest");
  return failedCheck("the bytes of " + quoted(file->location) +
                     " in a tree are not those of its "
                     "reads: send the file as it is");
}

CheckVerdict theTreeOfAFileIsThatFile(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  if (auto verdict = cannotLook(host.treeStream().course, ground)) return *verdict;
  const std::string name = lastName(file->location);
  const StreamedTree tree = readTreeStream(host, file->location, name);
  const bool isAlone = tree.course.end == End::eof && tree.entries.size() == 1 &&
                       tree.entries.front().header.relpath == name && isFile(tree.entries.front());
  if (isAlone) return passed();
  return failedCheck("the tree of the file " + quoted(file->location) +
                     " is not one file with the "
                     "relpath " +
                     quoted(name) + ": send its header under its own name and its bytes");
}

CheckVerdict whatIsNotThereFails(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string location = below(host.material().shares.front(), "no-such-name-here");
  return failsWithOneFrame(host, {.op = ControlOp::readTreeStream, .name = location},
                           Kind::notFound);
}

CheckVerdict aTreeEndsCleanly(HostProbe& host) {
  const StreamCourse& course = host.treeStream().course;
  if (auto verdict = cannotLook(course, ground)) return *verdict;
  if (auto verdict = endsCleanly(course); verdict.outcome != CheckOutcome::pass) return verdict;
  return goesOnAfter(course);
}

CheckVerdict noTreeLeadsOut(HostProbe& host) {
  return leadsNowhere(host, ControlOp::readTreeStream);
}

CheckVerdict namesAreInTheirOrder(HostProbe& host) {
  const StreamedTree& tree = host.treeStream();
  if (auto verdict = cannotLook(tree.course, ground)) return *verdict;
  std::map<std::string_view, std::string_view> lastOf;  // by folder
  for (const TreeEntry& entry : tree.entries) {
    const std::string_view path = entry.header.relpath;
    const std::size_t slash = path.rfind('/');
    const std::string_view folder = slash == path.npos ? std::string_view() : path.substr(0, slash);
    const std::string_view name = path.substr(slash + 1);  // npos + 1 is 0
    const auto [last, isFirst] = lastOf.try_emplace(folder, name);
    if (!isFirst && textLess(name, last->second)) {
      return failedCheck("in a tree " + quoted(name) + " came behind " + quoted(last->second) +
                         ": send the names of a folder in the order of their composed forms");
    }
    last->second = name;
  }
  return passed();
}

constexpr std::array checks = {
    HostCheck{821, "a tree's frames are whole and known", framesAreWholeAndKnown},
    HostCheck{822, "a tree ends with an end frame", aTreeEnds},
    HostCheck{823, "bytes follow the file that they belong to", bytesFollowTheirFile},
    HostCheck{824, "a tree's files have the size of their headers", filesHaveTheirSize},
    HostCheck{825, "a tree's paths stay below its root", pathsStayBelowTheRoot},
    HostCheck{826, "no entry of a tree comes twice", noEntryComesTwice},
    HostCheck{827, "a folder comes before what is in it", foldersComeFirst},
    HostCheck{828, "noise names are left out of a tree", noiseIsLeftOut},
    HostCheck{829, "a tree has what its listing has", aTreeHasWhatItsListingHas},
    HostCheck{830, "a tree has the bytes of reads", aTreeHasTheBytesOfReads},
    HostCheck{831, "the tree of a file is that file under its name", theTreeOfAFileIsThatFile},
    HostCheck{832, "the tree of what is not there is one failure", whatIsNotThereFails},
    HostCheck{833, "a connection goes on after a tree", aTreeEndsCleanly},
    HostCheck{834, "no tree leads out of a share", noTreeLeadsOut},
    HostCheck{835, "a tree's names are in their order", namesAreInTheirOrder}};

}  // namespace

std::span<const HostCheck> treeStreamChecks() { return checks; }

}  // namespace tarnel
