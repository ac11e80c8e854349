// 7xx: `stat`, `list` and `read` tell of the same files. What changes while it is looked at is
// looked at again, and skipped in the end.
#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "CheckGroups.h"
#include "FileBytes.h"
#include "HostProbe.h"
#include "Statuses.h"
#include "fs/FabricLocation.h"

namespace tarnel {
namespace {

constexpr int attempts = 3;
constexpr std::size_t mostCompared = 20;  // entries of one listing
constexpr const char* alwaysChanging =
    "what is shared changes all the time: share something at rest";

std::string differenceOf(const ControlStat& listed, const ControlStat& stat) {
  if (listed.name != stat.name) return "name";
  if (listed.size != stat.size) return "size";
  if (listed.mtimeMs != stat.mtimeMs) return "mtimeMs";
  if (listed.isDirectory != stat.isDirectory) return "isDirectory";
  if (listed.mode != stat.mode) return "mode";
  if (listed.nlink != stat.nlink) return "nlink";
  if (listed.owner != stat.owner) return "owner";
  return "group";
}

// Of two listings, what `stat` in between said differently. Nothing where the two differ
// themselves.
std::string disagreement(const std::string& location, const ControlStat& before,
                         const std::optional<ControlStat>& stat, const EntriesByName& after) {
  const auto still = after.find(before.name);
  if (still == after.end() || !(still->second == before)) return "";
  if (!stat) return quoted(location) + " is listed and has no status";
  if (*stat == before) return "";
  return "`list` and `stat` give " + quoted(location) + " a different " +
         differenceOf(before, *stat);
}

CheckVerdict statAgreesWithList(HostProbe& host) {
  const Material& material = host.material();
  if (!material.folder) return skipped("share a folder with something in it");
  for (const auto& folder : {material.folder, material.subfolder}) {
    if (!folder) continue;
    const auto before = entriesByName(host, *folder);
    if (!before) return before.error();
    std::vector<std::pair<const ControlStat*, std::optional<ControlStat>>> looked;
    for (const auto& [name, entry] : *before) {
      if (looked.size() >= mostCompared) break;
      const auto answer = host.ask(statRequest(below(*folder, name)));
      if (!answer) return answer.error();
      looked.emplace_back(&entry, answer->response.stat);
    }
    const auto after = entriesByName(host, *folder);
    if (!after) return after.error();
    for (const auto& [entry, stat] : looked) {
      const std::string fault = disagreement(below(*folder, entry->name), *entry, stat, *after);
      if (!fault.empty()) return failedCheck(fault + ": take both from the same place");
    }
  }
  return passed();
}

// What a file was while its bytes were read, if it was the same before and after.
template <class Look>
CheckVerdict atRest(HostProbe& host, const std::string& location, Look look) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const auto before = host.ask(statRequest(location));
    if (!before) return before.error();
    const CheckVerdict verdict = look();
    const auto after = host.ask(statRequest(location));
    if (!after) return after.error();
    if (verdict.outcome != CheckOutcome::fail) return verdict;
    const bool isSame = before->response.stat && before->response.stat == after->response.stat;
    if (isSame || !before->response.stat) return verdict;
  }
  return skipped(alwaysChanging);
}

CheckVerdict sizeAgreesWithBytes(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  return atRest(host, file->location, [&]() -> CheckVerdict {
    const auto size = sizeOf(host, file->location);
    if (!size) return size.error();
    if (*size > Material::mostFileBytes) return skipped(alwaysChanging);
    const auto most = static_cast<std::size_t>(std::max<std::int64_t>(*size, 0));
    const auto bytes = readOn(host, file->location, 0, Material::windowBytes, most);
    if (!bytes) return bytes.error();
    if (bytes->size() == most) return passed();
    const bool isMore = bytes->size() > most;
    return failedCheck("the size of " + quoted(file->location) + " is " + std::to_string(*size) +
                       " and " +
                       (isMore ? "more than that" : "only " + std::to_string(bytes->size())) +
                       " can be read: an empty answer comes at the size, not before and not later");
  });
}

CheckVerdict twoReadsAgree(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  return atRest(host, file->location, [&]() -> CheckVerdict {
    const auto first = readOnce(host, file->location, 0, Material::windowBytes);
    if (!first) return first.error();
    const auto second = readOnce(host, file->location, 0, Material::windowBytes);
    if (!second) return second.error();
    const std::size_t common = std::min(first->size(), second->size());
    if (BytesView(*first).substr(0, common) == BytesView(*second).substr(0, common)) {
      return passed();
    }
    return failedCheck("two reads of the same range of " + quoted(file->location) +
                       " gave different bytes: read at the offset, on every connection alike");
  });
}

CheckVerdict piecesAgreeWithTheWhole(HostProbe& host) {
  constexpr std::int64_t most = 64 * 1'024;
  constexpr std::int64_t requests = 50;
  const auto& file = host.material().file;
  if (!file) return skipped("share a file with content");
  return atRest(host, file->location, [&]() -> CheckVerdict {
    const auto whole = readOn(host, file->location, 0, Material::windowBytes, most);
    if (!whole) return whole.error();
    // Pieces of an odd length stand at offsets of every kind.
    const auto size = static_cast<std::int64_t>(whole->size());
    const std::int64_t piece = std::max<std::int64_t>(1, size / requests) | 1;
    for (std::int64_t at = 0; at < size; at += piece) {
      const auto bytes = readOnce(host, file->location, at, piece);
      if (!bytes) return bytes.error();
      const auto expected = BytesView(*whole).substr(static_cast<std::size_t>(at));
      const std::size_t common = std::min(expected.size(), bytes->size());
      if (common > 0 && BytesView(*bytes).substr(0, common) == expected.substr(0, common)) continue;
      return failedCheck("the bytes of " + quoted(file->location) + " from offset " +
                         std::to_string(at) +
                         " differ between a long and a short read: read at "
                         "the offset that is asked for");
    }
    return passed();
  });
}

CheckVerdict windowsAgreeWithTheSize(HostProbe& host) {
  constexpr std::size_t most = 2 * 1'024 * 1'024;
  const auto& file = host.material().largeFile;
  if (!file) return skipped("share a file of more than 256 KiB");
  return atRest(host, file->location, [&]() -> CheckVerdict {
    const auto size = sizeOf(host, file->location);
    if (!size) return size.error();
    const auto bytes = readOn(host, file->location, 0, Material::windowBytes, most);
    if (!bytes) return bytes.error();
    if (bytes->size() > most || static_cast<std::int64_t>(bytes->size()) == *size) return passed();
    return failedCheck("after " + std::to_string(bytes->size()) + " bytes of " +
                       quoted(file->location) + " an empty answer came, and its size is " +
                       std::to_string(*size) + ": an answer is empty at the end alone");
  });
}

CheckVerdict namesAgreeWithEntries(HostProbe& host) {
  const auto& folder = host.material().folder;
  if (!folder) return skipped("share a folder with something in it");
  ControlRequest request = listRequest(*folder);
  request.namesOnly = true;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const auto before = entriesByName(host, *folder);
    if (!before) return before.error();
    const auto answer = host.ask(request);
    if (!answer) return answer.error();
    if (!answer->response.names) return skipped("names alone are not answered");
    std::map<std::string, bool> names;
    for (const ControlName& name : *answer->response.names) {
      if (isSafeFabricName(name.name)) names[name.name] = name.isDirectory;
    }
    std::map<std::string, bool> expected;
    for (const auto& [name, entry] : *before) expected[name] = entry.isDirectory;
    if (names == expected) return passed();
    const auto after = entriesByName(host, *folder);
    if (!after) return after.error();
    if (*before != *after) continue;
    return failedCheck("the listing of " + quoted(*folder) +
                       " has other names, or other kinds, "
                       "with namesOnly: take both from the same place");
  }
  return skipped(alwaysChanging);
}

CheckVerdict twoListingsAgree(HostProbe& host) {
  const auto& folder = host.material().folder;
  if (!folder) return skipped("share a folder with something in it");
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const auto first = entriesByName(host, *folder);
    if (!first) return first.error();
    const auto second = entriesByName(host, *folder);
    if (!second) return second.error();
    if (*first == *second) return passed();
    const auto third = entriesByName(host, *folder);
    if (!third) return third.error();
    if (*first != *third) continue;  // never twice the same: it may be changing
    return failedCheck("two listings of " + quoted(*folder) + " differ: list everything each time");
  }
  return skipped(alwaysChanging);
}

constexpr std::array checks = {
    HostCheck{701, "stat agrees with list", statAgreesWithList},
    HostCheck{702, "a file has as many bytes as its size says", sizeAgreesWithBytes},
    HostCheck{703, "two reads of a range agree", twoReadsAgree},
    HostCheck{704, "short reads agree with a long one", piecesAgreeWithTheWhole},
    HostCheck{705, "a large file has as many bytes as its size says", windowsAgreeWithTheSize},
    HostCheck{706, "names alone agree with the listing", namesAgreeWithEntries},
    HostCheck{707, "two listings agree", twoListingsAgree}};

}  // namespace

std::span<const HostCheck> agreementChecks() { return checks; }

}  // namespace tarnel
