// The operations `share`, `confirm`, `cancel` and `unshare`: folders offered and withdrawn while
// the host runs.
//
// `share` wants a name and an absolute folder. A folder with likely secrets, or one that could not
// be looked through, is answered with a `review`, which waits for `confirm` or `cancel` under the
// same name on the same connection. `confirm` shares the folder without its secrets, but with those
// that its includeSecrets lists as the review did; a review that has caps needs ackCaps. The policy
// `yes` does both at once, and tells in the answer's `review` what it left out; `force`, to either
// operation, shares everything without looking. What was shared in any other way than by force goes
// on hiding secrets that appear later. `unshare` withdraws one of the host's own shares by name, or
// with `all` every one; a request that has begun is still answered from it.
// Threads: any; the reviews belong to one connection's thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "AnswerSink.h"
#include "ShareReviews.h"
#include "control/ControlRequest.h"
#include "control/ControlResponse.h"
#include "host/HostOptions.h"
#include "host/Refusal.h"
#include "host/ShareTable.h"

namespace tarnel {

class Sharing {
 public:
  Sharing(ShareTable& shareTable, const HostOptions& hostOptions)
      : table(shareTable), options(hostOptions) {}

  [[nodiscard]] HostResult<ControlResponse> share(const ControlRequest& request, AnswerSink& sink);
  [[nodiscard]] HostResult<ControlResponse> confirm(const ControlRequest& request,
                                                    ShareReviews& reviews);
  [[nodiscard]] static HostResult<ControlResponse> cancel(const ControlRequest& request,
                                                          ShareReviews& reviews);
  [[nodiscard]] HostResult<ControlResponse> unshare(const ControlRequest& request);

 private:
  [[nodiscard]] HostResult<SecretScan> lookThrough(const std::string& path, int folderFD,
                                                   const AnswerSink& sink) const;
  [[nodiscard]] static HostResult<ControlResponse> keepForReview(const std::string& name,
                                                                 ShareReview review,
                                                                 ShareReviews& reviews);
  [[nodiscard]] HostResult<ControlResponse> offer(const std::string& name, UniqueFd folder,
                                                  std::optional<HiddenPaths> hidden);
  void log(const std::string& line) const;

  ShareTable& table;
  const HostOptions& options;
};

}  // namespace tarnel
