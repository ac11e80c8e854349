#include <string>

#include "Fuzz.h"
#include "control/SourcesAnnouncement.h"
#include "control/WireEnvelope.h"
#include "control/WireVersion.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tarnel;
  using fuzz::check;
  const std::string_view input = fuzz::inputOf(data, size);
  const auto decoded = WireEnvelope::decode<SourcesAnnouncement>(WireVersion::sources, input);
  if (const auto* mismatch = std::get_if<VersionMismatch>(&decoded)) {
    check(mismatch->theirs != mismatch->ours, "only another version is a mismatch");
    const auto theirs = WireEnvelope::decode<SourcesAnnouncement>(mismatch->theirs, input);
    check(!std::holds_alternative<VersionMismatch>(theirs), "the version that was found is theirs");
  }
  const auto announcement = SourcesAnnouncement::decode(input);
  check(announcement.has_value() == std::holds_alternative<SourcesAnnouncement>(decoded),
        "an announcement is an envelope that is ok");
  if (!announcement) return 0;
  const Bytes again = announcement->encoded();
  check(!again.empty(), "what was decoded can be encoded");
  check(SourcesAnnouncement::decode(again) == announcement,
        "what was encoded decodes to an equal announcement");
  return 0;
}
