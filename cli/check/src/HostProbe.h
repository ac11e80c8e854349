// What checks ask a host through: connections of raw bytes, and the files and folders that the host
// has to ask about.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Material.h"
#include "RawConnection.h"
#include "Streams.h"
#include "Verdict.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"

namespace tarnel {

struct Answer {
  Bytes line;
  ControlResponse response;
};

// One connection. What goes wrong on it is the verdict that ends the check.
class Talk {
 public:
  Talk(RawConnection connection, const HostProbe& probe)
      : wire(std::move(connection)), host(&probe) {}

  // A request as text, without its line feed, and the line that answers it.
  [[nodiscard]] Checked<Bytes> askLine(std::string_view request);
  // The same with the answer read as a response.
  [[nodiscard]] Checked<Answer> askText(std::string_view request);
  [[nodiscard]] Checked<Answer> ask(const ControlRequest& request);

  [[nodiscard]] Checked<void> send(BytesView bytes);
  // The next answer; `request` is for the note alone.
  [[nodiscard]] Checked<Bytes> line(std::string_view request);

  RawConnection wire;

 private:
  const HostProbe* host;
};

class HostProbe {
 public:
  HostProbe(std::string socketPath, const CheckLimits& chosen);

  [[nodiscard]] const CheckLimits& limits() const { return bounds; }
  [[nodiscard]] const std::string& path() const { return socket; }
  // From now on, but never past the end of the whole run.
  [[nodiscard]] Deadline in(std::chrono::milliseconds time) const;
  [[nodiscard]] Deadline answerDeadline() const { return in(bounds.answer); }
  [[nodiscard]] bool isOver() const { return std::chrono::steady_clock::now() >= end; }

  [[nodiscard]] Checked<Talk> talk() const;
  // Each on a connection of its own.
  [[nodiscard]] Checked<Answer> ask(const ControlRequest& request) const;
  [[nodiscard]] Checked<Answer> askText(std::string_view request) const;

  // Searched for when first wanted.
  [[nodiscard]] const Material& material();
  // Of a file with content, and of the folder that it stands in; asked for when first wanted.
  [[nodiscard]] const StreamedFile& fileStream();
  [[nodiscard]] const StreamedTree& treeStream();

 private:
  const std::string socket;
  const CheckLimits bounds;
  const Deadline end;
  std::optional<Material> found;
  std::optional<StreamedFile> file;
  std::optional<StreamedTree> tree;
};

// A request's text, without its line feed.
[[nodiscard]] std::string textOf(const ControlRequest& request);

[[nodiscard]] ControlRequest sharesRequest();
[[nodiscard]] ControlRequest statRequest(const std::string& location);
[[nodiscard]] ControlRequest listRequest(const std::string& location);
[[nodiscard]] ControlRequest readRequest(const std::string& location, std::int64_t offset,
                                         std::int64_t length);

}  // namespace tarnel
