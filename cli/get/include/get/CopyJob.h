// One run of `tarnel get`: paths of the volume, copied into a folder or under a new name.
//
// What fails is told in the report, and the rest is copied. Threads: one; the Interruption ends it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "get/CopyContext.h"
#include "get/CopyDestination.h"
#include "get/FolderChain.h"
#include "get/ProgressLine.h"

namespace tarnel {

struct CopyOptions {
  std::string socket;
  std::vector<std::string> paths;
  std::string destination;
  CopyRules rules = {};
  int terminal = -1;  // where progress is drawn; none without one
};

class CopyJob {
 public:
  CopyJob(CopyOptions chosen, Interruption& interruption);
  // Once.
  const CopyReport& run();

 private:
  void copyPath(const std::string& path);
  void copyShares(const std::string& peer, const std::string& local);
  // To resume: the destination is the copy of this folder, made under a new name.
  [[nodiscard]] bool isCopyItself(const std::string& remote, const std::string& name);
  // Whether the volume has this name there, as a folder or as a file. Valid until the next question
  // about a folder; none when that cannot be told.
  using HasEntry = std::function<bool(const std::string& name, bool isFolder)>;
  [[nodiscard]] HasEntry entriesOf(const std::string& remote);
  void copyOne(const std::string& remote, const std::string& local);
  void showProgress();
  [[nodiscard]] FolderChain makeChain();

  const CopyOptions options;
  Interruption& interruption;
  CopySource source;
  CopyReport report;
  CopyContext context;
  CopyDestination destination;
  ProgressLine line;
  std::optional<CopyTotals> totals;
  ProgressLine::Clock::time_point start = ProgressLine::Clock::now();
};

}  // namespace tarnel
