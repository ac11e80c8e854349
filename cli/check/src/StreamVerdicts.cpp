#include "StreamVerdicts.h"

#include "fs/ControlFabricSource.h"

namespace tarnel {
namespace {

using End = StreamCourse::End;

// Where no frame but the last has its place, one is enough to know.
const OnFrame nothing = [](const StreamFrame& frame) -> std::optional<std::string> {
  return std::string(1, static_cast<char>(frame.tag)) + " frame";
};

const StreamCourse& usualCourse(HostProbe& host, ControlOp op) {
  return op == ControlOp::readStream ? host.fileStream().course : host.treeStream().course;
}

}  // namespace

std::optional<CheckVerdict> cannotLook(const StreamCourse& course, int ground) {
  switch (course.end) {
    case End::notAsked:
      return skipped("share a file with content");
    case End::notServed:
      return skipped("serve the stream, to have it checked");
    case End::tooMuch:
      return skipped("share less, so that the stream ends sooner");
    case End::noFrame:
    case End::broken:
    case End::badFrame:
      return skipped("needs check " + std::to_string(ground) + " to pass");
    case End::eof:
    case End::error:
      return std::nullopt;
  }
  __builtin_unreachable();
}

CheckVerdict failsWithOneFrame(HostProbe& host, const ControlRequest& request,
                               FabricSourceError::Kind kind) {
  const StreamCourse course = readStream(host, request, nothing);
  const StreamCourse& usual = usualCourse(host, request.op);
  if (usual.end != End::notAsked) {
    if (auto verdict = cannotLook(usual, 803)) return *verdict;
  } else if (course.end == End::notServed) {
    return cannotLook(course, 803).value_or(passed());
  }
  const std::string asked = quoted(textOf(request));
  if (course.end != End::error || course.framesBefore != 0) {
    return failedCheck(asked + " has to fail and did not" +
                       (course.fault.empty() ? "" : " (" + quoted(course.fault) + ")") +
                       ": answer with one frame, tag X, whose payload says why");
  }
  if (ControlFabricSource::classify(course.message).kind == kind) return passed();
  return failedCheck("the failure " + quoted(course.message) + " of " + asked +
                     " is understood as something else: say \"no such file\" or \"is a "
                     "directory\", without the location");
}

CheckVerdict leadsNowhere(HostProbe& host, ControlOp op) {
  if (host.material().shares.empty()) return skipped("share a folder");
  for (const char* const way : {"/..", "/../..", "/../../../../../../../../etc/passwd"}) {
    const std::string location = host.material().shares.front() + way;
    const StreamCourse course = readStream(host, {.op = op, .name = location}, nothing);
    if (course.end == End::notServed && usualCourse(host, op).end == End::notServed) {
      return cannotLook(course, 803).value_or(passed());
    }
    if (course.framesBefore == 0 && course.end != End::eof) continue;
    return failedCheck(quoted(location) +
                       " leads out of the share and was streamed: refuse every "
                       "location with a component \"..\"");
  }
  return passed();
}

CheckVerdict endsCleanly(const StreamCourse& course) {
  if (course.after.empty()) return passed();
  return failedCheck("behind the end of the stream more came, " + quoted(course.after) +
                     ": send nothing behind the end frame until the next request");
}

CheckVerdict goesOnAfter(const StreamCourse& course) {
  if (!course.after.empty()) return skipped("what came behind the end stands in the way");
  if (course.goesOn) return passed();
  return failedCheck("the request after a stream was not answered: keep the connection");
}

}  // namespace tarnel
