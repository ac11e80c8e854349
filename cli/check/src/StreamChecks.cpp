// 80x, 81x: the stream of one file.
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "CheckGroups.h"
#include "FileBytes.h"
#include "HostProbe.h"
#include "StreamVerdicts.h"
#include "control/ControlWire.h"

namespace tarnel {
namespace {

using End = StreamCourse::End;
using Kind = FabricSourceError::Kind;

constexpr int ground = 803;

CheckVerdict isLineOrFrame(const StreamCourse& course, const char* operation) {
  if (course.end == End::noFrame) {
    return failedCheck(std::string(operation) + " was answered with a first byte of " +
                       quoted(course.fault) +
                       ": send frames, or one line of JSON where it is not "
                       "served");
  }
  if (course.end != End::notServed) return passed();
  const auto response = ControlWire::decode<ControlResponse>(course.message);
  if (response && response->status == ControlResponse::Status::error) return passed("not served");
  return failedCheck(std::string(operation) + " was answered with the line " +
                     quoted(course.message) + ": answer status error where it is not served");
}

CheckVerdict anUnservedOperationIsALine(HostProbe& host) {
  if (!host.material().file) return skipped("share a file with content");
  auto verdict = isLineOrFrame(host.fileStream().course, "readStream");
  if (verdict.outcome != CheckOutcome::pass) return verdict;
  return isLineOrFrame(host.treeStream().course, "readTreeStream");
}

CheckVerdict framesAreWhole(HostProbe& host) {
  const StreamCourse& course = host.fileStream().course;
  if (course.end == End::broken) {
    return failedCheck("in the stream of " + quoted(host.fileStream().location) + " " +
                       course.fault +
                       ": send a tag, four bytes of length and as many bytes, at "
                       "most 8 MiB, and an end frame");
  }
  if (course.end == End::badFrame) return passed();
  return cannotLook(course, 801).value_or(passed());
}

CheckVerdict framesHaveTheirPlace(HostProbe& host) {
  const StreamCourse& course = host.fileStream().course;
  if (course.end == End::badFrame) {
    return failedCheck("the stream of a file held " + course.fault +
                       ": send data frames (D), then the end (E), or a failure (X)");
  }
  return cannotLook(course, 802).value_or(passed());
}

CheckVerdict aFilesStreamEnds(HostProbe& host) {
  const StreamedFile& stream = host.fileStream();
  if (auto verdict = cannotLook(stream.course, ground)) return *verdict;
  if (stream.course.end == End::eof) return passed();
  return failedCheck("the stream of " + quoted(stream.location) +
                     ", which can be read, failed with " + quoted(stream.course.message) +
                     ": send its bytes and an end frame");
}

CheckVerdict theEndIsEmpty(HostProbe& host) {
  const StreamCourse& course = host.fileStream().course;
  if (auto verdict = cannotLook(course, ground)) return *verdict;
  if (course.end != End::eof || course.endPayloadBytes == 0) return passed();
  return failedCheck("the end frame had " + std::to_string(course.endPayloadBytes) +
                     " bytes, which nobody reads: send it empty");
}

CheckVerdict nothingComesBehindTheEnd(HostProbe& host) {
  const StreamCourse& course = host.fileStream().course;
  if (auto verdict = cannotLook(course, ground)) return *verdict;
  return endsCleanly(course);
}

CheckVerdict theConnectionGoesOn(HostProbe& host) {
  const StreamCourse& course = host.fileStream().course;
  if (auto verdict = cannotLook(course, ground)) return *verdict;
  return goesOnAfter(course);
}

CheckVerdict aStreamHasTheBytesOfReads(HostProbe& host) {
  const StreamedFile& stream = host.fileStream();
  if (auto verdict = cannotLook(stream.course, ground)) return *verdict;
  if (stream.course.end != End::eof) return skipped("needs check 804 to pass");
  const auto bytes = readOn(host, stream.location, 0, Material::windowBytes,
                            static_cast<std::size_t>(Material::mostFileBytes));
  if (!bytes) return skipped("needs check 702 to pass");
  if (*bytes == stream.bytes) return passed();
  const StreamedFile again = readFileStream(host, stream.location);
  if (again.bytes != stream.bytes) return skipped("the file changes: share something at rest");
  return failedCheck("the stream of " + quoted(stream.location) + " has " +
                     std::to_string(stream.bytes.size()) + " bytes and its reads " +
                     std::to_string(bytes->size()) + ", or others: send the file as it is");
}

CheckVerdict anEmptyFilesStreamHasNoBytes(HostProbe& host) {
  const auto& file = host.material().emptyFile;
  if (!file) return skipped("share an empty file");
  if (auto verdict = cannotLook(host.fileStream().course, ground)) return *verdict;
  if (host.fileStream().course.end != End::eof) return skipped("needs check 804 to pass");
  const StreamedFile stream = readFileStream(host, file->location);
  if (stream.course.end == End::eof && stream.bytes.empty()) return passed();
  return failedCheck("the stream of the empty file " + quoted(file->location) +
                     " is not an end frame alone: send that");
}

CheckVerdict whatIsNotThereFails(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string location = below(host.material().shares.front(), "no-such-name-here");
  return failsWithOneFrame(host, {.op = ControlOp::readStream, .name = location}, Kind::notFound);
}

CheckVerdict aFolderFails(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  return failsWithOneFrame(host,
                           {.op = ControlOp::readStream, .name = host.material().shares.front()},
                           Kind::isDirectory);
}

CheckVerdict theConnectionGoesOnAfterAFailure(HostProbe& host) {
  if (host.material().shares.empty()) return skipped("share a folder");
  const std::string location = below(host.material().shares.front(), "no-such-name-here");
  const StreamedFile stream = readFileStream(host, location);
  if (auto verdict = cannotLook(stream.course, 810)) return *verdict;
  if (auto verdict = endsCleanly(stream.course); verdict.outcome != CheckOutcome::pass) {
    return verdict;
  }
  return goesOnAfter(stream.course);
}

CheckVerdict aClientThatLeavesHarmsNobody(HostProbe& host) {
  const Material& material = host.material();
  const auto& file = material.largeFile ? material.largeFile : material.file;
  if (auto verdict = cannotLook(host.fileStream().course, ground)) return *verdict;
  {
    auto talk = host.talk();
    if (!talk) return talk.error();
    const ControlRequest request{.op = ControlOp::readStream, .name = file->location};
    if (auto sent = talk->send(textOf(request) + "\n"); !sent) return sent.error();
    (void)talk->wire.nextByte(host.answerDeadline());
  }
  const auto answer = host.ask(sharesRequest());
  return answer ? passed() : answer.error();
}

CheckVerdict noStreamLeadsOut(HostProbe& host) { return leadsNowhere(host, ControlOp::readStream); }

CheckVerdict framesKeepToTheWindow(HostProbe& host) {
  constexpr std::size_t enough = 16;  // frames
  const auto& file = host.material().largeFile;
  if (!file) return skipped("share a file of more than 256 KiB");
  if (auto verdict = cannotLook(host.fileStream().course, ground)) return *verdict;
  std::size_t longest = 0;
  std::size_t frames = 0;
  (void)readStream(host, {.op = ControlOp::readStream, .name = file->location},
                   [&](const StreamFrame& frame) -> std::optional<std::string> {
                     longest = std::max(longest, frame.payload.size());
                     return ++frames < enough ? std::nullopt : std::optional<std::string>("enough");
                   });
  if (std::cmp_less_equal(longest, ControlStreamFrame::window)) return passed();
  return failedCheck("a data frame of " + quoted(file->location) + " had " +
                     std::to_string(longest) + " bytes: send at most 262,144 in one");
}

CheckVerdict aRangeIsKept(HostProbe& host) {
  const StreamedFile& whole = host.fileStream();
  if (auto verdict = cannotLook(whole.course, ground)) return *verdict;
  if (whole.course.end != End::eof) return skipped("needs check 804 to pass");
  Bytes bytes;
  const StreamCourse course = readStream(
      host, {.op = ControlOp::readStream, .name = whole.location, .offset = 1, .length = 3},
      [&](const StreamFrame& frame) -> std::optional<std::string> {
        bytes.append(frame.payload);
        return bytes.size() > 3 ? std::optional<std::string>("more") : std::nullopt;
      });
  const BytesView expected =
      BytesView(whole.bytes).substr(std::min<std::size_t>(1, whole.bytes.size()), 3);
  if (course.end == End::eof && bytes == expected) return passed();
  return failedCheck("a stream of 3 bytes from offset 1 of " + quoted(whole.location) +
                     " was not those: keep to offset and length, and end");
}

constexpr std::array checks = {
    HostCheck{801, "a stream that is not served is refused with a line",
              anUnservedOperationIsALine},
    HostCheck{802, "a stream's frames are whole and of at most 8 MiB", framesAreWhole},
    HostCheck{803, "a file's stream has its own frames alone", framesHaveTheirPlace},
    HostCheck{804, "a file's stream ends with an end frame", aFilesStreamEnds},
    HostCheck{805, "an end frame is empty", theEndIsEmpty},
    HostCheck{806, "nothing comes behind a stream's end", nothingComesBehindTheEnd},
    HostCheck{807, "a connection goes on after a stream", theConnectionGoesOn},
    HostCheck{808, "a file's stream has the bytes of its reads", aStreamHasTheBytesOfReads},
    HostCheck{809, "an empty file's stream has no bytes", anEmptyFilesStreamHasNoBytes},
    HostCheck{810, "the stream of what is not there is one failure", whatIsNotThereFails},
    HostCheck{811, "the stream of a folder is one failure", aFolderFails},
    HostCheck{812, "a connection goes on after a failed stream", theConnectionGoesOnAfterAFailure},
    HostCheck{813, "a client that leaves a stream harms nobody", aClientThatLeavesHarmsNobody},
    HostCheck{814, "no stream leads out of a share", noStreamLeadsOut},
    HostCheck{815, "a data frame has at most 256 KiB", framesKeepToTheWindow},
    HostCheck{816, "a stream's range is kept", aRangeIsKept}};

}  // namespace

std::span<const HostCheck> streamChecks() { return checks; }

}  // namespace tarnel
