#include "Statuses.h"

#include <utility>
#include <vector>

#include "fs/FabricLocation.h"

namespace tarnel {

Checked<ControlStat> statOf(const HostProbe& host, const std::string& location) {
  auto answer = host.ask(statRequest(location));
  if (!answer) return std::unexpected(answer.error());
  if (answer->response.stat) return std::move(*answer->response.stat);
  return failing(quoted(location) +
                 " was listed and has no status: answer `stat` for what `list` shows");
}

Checked<EntriesByName> entriesByName(const HostProbe& host, const std::string& folder) {
  auto answer = host.ask(listRequest(folder));
  if (!answer) return std::unexpected(answer.error());
  EntriesByName entries;
  for (ControlStat& entry : answer->response.entries.value_or(std::vector<ControlStat>())) {
    if (isSafeFabricName(entry.name)) entries[entry.name] = std::move(entry);
  }
  return entries;
}

}  // namespace tarnel
