// 6xx: reads.
#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "CheckGroups.h"
#include "FileBytes.h"
#include "HostProbe.h"
#include "Refusals.h"
#include "control/AsciiCase.h"
#include "control/Base64.h"

namespace tarnel {
namespace {

using Kind = FabricSourceError::Kind;

constexpr const char* noFile = "share a file with content";

CheckVerdict aFilesStartIsRead(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const auto bytes = readOnce(host, file->location, 0, Material::windowBytes);
  if (!bytes) return bytes.error();
  if (!bytes->empty()) return passed();
  return failedCheck("the first bytes of " + quoted(file->location) +
                     " are said to be none: an "
                     "empty answer is the end of the file");
}

// The text of an answer, whatever it is.
Checked<std::string> textOfRead(const HostProbe& host, const std::string& location,
                                std::int64_t offset, std::int64_t length) {
  const auto answer = host.ask(readRequest(location, offset, length));
  if (!answer) return std::unexpected(answer.error());
  return answer->response.dataBase64.value_or("");
}

bool isBase64Letter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '/' || c == '=';
}

CheckVerdict base64HasTheStandardAlphabet(HostProbe& host) {
  const Material& material = host.material();
  if (!material.file) return skipped(noFile);
  // Other offsets put other letters of the alphabet on the same bytes.
  for (const std::int64_t offset : {0, 1, 2}) {
    const auto text = textOfRead(host, material.file->location, offset, Material::windowBytes);
    if (!text) return text.error();
    const auto wrong = std::find_if_not(text->begin(), text->end(), isBase64Letter);
    if (wrong == text->end()) continue;
    return failedCheck("dataBase64 holds the character " + quoted(std::string(1, *wrong)) +
                       ": use the alphabet that ends with + and /, without line breaks");
  }
  return passed();
}

CheckVerdict base64IsPadded(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  for (const std::int64_t length : {1, 2, 3, 4}) {
    if (length > file->stat.size) break;
    const auto text = textOfRead(host, file->location, 0, length);
    if (!text) return text.error();
    const bool isWhole = text->size() % 4 == 0 && !text->empty();
    const auto padding = static_cast<std::int64_t>(std::count(text->begin(), text->end(), '='));
    const auto end = text->find('=');
    const bool isAtEnd =
        end == std::string::npos || text->find_first_not_of('=', end) == std::string::npos;
    // A short answer is no fault here: 3 * groups less the padding is what it carries.
    if (isWhole && isAtEnd && padding <= 2) continue;
    return failedCheck(std::to_string(length) + " bytes were sent as " + quoted(*text) +
                       ": pad with = to a multiple of four characters");
  }
  return passed();
}

CheckVerdict noMoreThanAskedComes(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  for (const std::int64_t length : {1, 2, 3, 100}) {
    if (const auto bytes = readOnce(host, file->location, 0, length); !bytes) return bytes.error();
  }
  return passed();
}

CheckVerdict aReadOfNothingIsEmpty(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const auto bytes = readOnce(host, file->location, 0, 0);
  return bytes ? passed() : bytes.error();
}

CheckVerdict isEmptyAt(HostProbe& host, const std::string& location, std::int64_t offset) {
  const auto bytes = readOnce(host, location, offset, 4'096);
  if (!bytes) return bytes.error();
  if (bytes->empty()) return passed();
  return failedCheck(std::to_string(bytes->size()) + " bytes came from offset " +
                     std::to_string(offset) + " of " + quoted(location) +
                     ", where its size says "
                     "that none are: answer an empty text there");
}

CheckVerdict theEndIsEmpty(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const auto size = sizeOf(host, file->location);
  if (!size) return size.error();
  return isEmptyAt(host, file->location, std::max<std::int64_t>(*size, 0));
}

CheckVerdict pastTheEndIsEmpty(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const auto size = sizeOf(host, file->location);
  if (!size) return size.error();
  for (const std::int64_t offset :
       {std::max<std::int64_t>(*size, 0) + 1, std::int64_t{1} << 40, std::int64_t{1} << 62,
        std::numeric_limits<std::int64_t>::max()}) {
    auto verdict = isEmptyAt(host, file->location, offset);
    if (verdict.outcome != CheckOutcome::pass) return verdict;
  }
  return passed();
}

CheckVerdict acrossTheEndIsTheRest(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const auto size = sizeOf(host, file->location);
  if (!size) return size.error();
  if (*size < 1) return skipped("the file became empty");
  const auto bytes = readOnce(host, file->location, *size - 1, 4'096);
  if (!bytes) return bytes.error();
  if (bytes->size() == 1) return passed();
  return failedCheck("from the last byte of " + quoted(file->location) + " on " +
                     std::to_string(bytes->size()) + " bytes came: send what is left, 1 byte");
}

CheckVerdict anEmptyFileReadsAsEmpty(HostProbe& host) {
  const auto& file = host.material().emptyFile;
  if (!file) return skipped("share an empty file");
  return isEmptyAt(host, file->location, 0);
}

CheckVerdict badRangesAreRefused(HostProbe& host) {
  const auto& file = host.material().file;
  if (!file) return skipped(noFile);
  const std::int64_t least = std::numeric_limits<std::int64_t>::min();
  using Range = std::pair<std::int64_t, std::int64_t>;
  for (const auto& [offset, length] :
       {Range(-1, 1), Range(least, 1), Range(0, -1), Range(0, least)}) {
    auto verdict = isRefused(host, readRequest(file->location, offset, length));
    if (verdict.outcome != CheckOutcome::pass) return verdict;
  }
  return passed();
}

CheckVerdict aHugeLengthFitsALine(HostProbe& host) {
  const Material& material = host.material();
  const auto& file = material.largeFile ? material.largeFile : material.file;
  if (!file) return skipped(noFile);
  for (const std::int64_t length :
       {std::int64_t{64} << 20, std::numeric_limits<std::int64_t>::max()}) {
    const auto bytes = readOnce(host, file->location, 0, length);
    if (!bytes) return bytes.error();
    if (bytes->empty()) {
      return failedCheck("a read of " + std::to_string(length) +
                         " bytes was answered with none, "
                         "which is the end of the file: send the first of them");
    }
  }
  return passed();
}

CheckVerdict aFolderCannotBeRead(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const Material& material = host.material();
  const std::string& folder = material.subfolder ? *material.subfolder : material.shares.front();
  return isRefusedAs(host, readRequest(folder, 0, 16), {Kind::isDirectory});
}

CheckVerdict whatIsNotThereCannotBeRead(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string& share = host.material().shares.front();
  return isRefusedAs(host, readRequest(below(share, "no-such-name-here"), 0, 16), {Kind::notFound});
}

bool saysMissing(const std::string& said) {
  const std::string message = asciiLower(said);
  for (const char* const words : {"no such", "not found", "does not exist", "missing"}) {
    if (message.find(words) != std::string::npos) return true;
  }
  return false;
}

CheckVerdict whatMayNotBeReadIsNotMissing(HostProbe& host) {
  const auto& file = host.material().unreadable;
  if (!file) return skipped("share a file that the host may not read");
  const auto answer = host.ask(readRequest(file->location, 0, 1));
  if (!answer) return answer.error();
  if (answer->response.dataBase64) return skipped("the file can be read by now");
  if (const auto size = sizeOf(host, file->location); !size) return skipped("the file has gone");
  const std::string message = answer->response.message.value_or("");
  const bool isOther =
      isRefusedAs(host, readRequest(file->location, 0, 1), {Kind::notFound}).outcome !=
      CheckOutcome::pass;
  if (!message.empty() && !isOther && !saysMissing(message)) return passed();
  return failedCheck("the read of " + quoted(file->location) +
                     ", which `stat` shows, is refused "
                     "with " +
                     quoted(message) + ": say why, as in \"permission denied\"");
}

constexpr std::array checks = {
    HostCheck{601, "a file's first bytes are read", aFilesStartIsRead},
    HostCheck{602, "base64 has the standard alphabet", base64HasTheStandardAlphabet},
    HostCheck{603, "base64 is padded", base64IsPadded},
    HostCheck{604, "no more comes than was asked for", noMoreThanAskedComes},
    HostCheck{605, "a read of no bytes is empty", aReadOfNothingIsEmpty},
    HostCheck{606, "a read at the end is empty", theEndIsEmpty},
    HostCheck{607, "a read past the end is empty", pastTheEndIsEmpty},
    HostCheck{608, "a read across the end is the rest", acrossTheEndIsTheRest},
    HostCheck{609, "an empty file reads as empty", anEmptyFileReadsAsEmpty},
    HostCheck{610, "a negative offset or length is refused", badRangesAreRefused},
    HostCheck{611, "a huge length is answered within a line", aHugeLengthFitsALine},
    HostCheck{612, "a folder's read is understood as a directory", aFolderCannotBeRead},
    HostCheck{613, "the read of what is not there is understood as missing",
              whatIsNotThereCannotBeRead},
    HostCheck{614, "what may not be read is not called missing", whatMayNotBeReadIsNotMissing}};

}  // namespace

std::span<const HostCheck> readChecks() { return checks; }

}  // namespace tarnel
