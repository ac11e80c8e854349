// What every part of one copy shares. Threads: one, but for the interruption.
#pragma once

#include <functional>
#include <string_view>

#include "get/CopyReport.h"
#include "get/CopySource.h"
#include "get/Interruption.h"

namespace tarnel {

struct CopyRules {
  bool force = false;   // files and links that are in the way are replaced
  bool resume = false;  // files that are whole already stay
};

struct CopyContext {
  CopySource& source;
  CopyReport& report;
  Interruption& interruption;
  CopyRules rules;
  std::function<void()> onProgress;  // called often
  bool isFull = false;               // nothing more can be written: the copy is over

  // Tells what went wrong, unless it is that the copy was interrupted.
  void fail(std::string_view path, const CopyError& error) {
    if (error.error == ENOSPC || error.error == EDQUOT) isFull = true;
    if (!interruption.raised()) report.fail(path, error);
  }
  [[nodiscard]] bool isOver() const { return isFull || interruption.raised(); }
};

}  // namespace tarnel
