#include "Sharing.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "control/Printable.h"
#include "host/SecretNames.h"
#include "host/SecretScan.h"

namespace tarnel {
namespace {

// As the secret's path, when the folder is one itself.
constexpr std::string_view wholeFolder = ".";

bool isForced(const ControlRequest& request) { return request.policy == SharePolicy::force; }

HostResult<std::string> nameIn(const ControlRequest& request) {
  constexpr std::size_t longest = 255;
  if (!request.name || !isUsableShareName(*request.name) || request.name->size() > longest) {
    return std::unexpected(Refusal::unusableShareName);
  }
  return *request.name;
}

HostResult<UniqueFd> folderIn(const ControlRequest& request, const IsOwnMount& isOwnMount) {
  if (!request.folder || !request.folder->starts_with('/')) {
    return std::unexpected(Refusal::folderNotAbsolute);
  }
  // No path holds NUL, and the system would look only at what stands before it.
  if (request.folder->find('\0') != std::string::npos) return std::unexpected(Refusal::noSuchFile);
  auto folder = openSharedFolder(*request.folder, isOwnMount);
  if (folder) return std::move(*folder);
  if (folder.error().kind == HostStartError::Kind::ownMount) {
    return std::unexpected(Refusal::folderIsOwnMount);
  }
  return std::unexpected(refusalFor(folder.error().error));
}

// True for a folder like ~/.ssh, and for everything below it.
bool isSecretFolder(const std::string& folder) {
  std::error_code error;
  const auto real = std::filesystem::canonical(folder, error);
  if (error) return true;  // it has just been opened: somebody is exchanging it
  return std::any_of(real.begin(), real.end(),
                     [](const auto& component) { return isSecretName(component.native()); });
}

ReviewSummary summaryOf(const SecretScan& found) {
  return {.sharedCount = found.sharedCount,
          .excludedCount = found.excludedCount,
          .secrets = found.secrets,
          .caps = found.caps,
          .isRemote = false};
}

bool isReviewed(const std::vector<std::string>& chosen, const SecretScan& found) {
  return std::all_of(chosen.begin(), chosen.end(), [&](const std::string& path) {
    return std::find(found.secrets.begin(), found.secrets.end(), path) != found.secrets.end();
  });
}

// What is hidden once the owner has chosen; nullopt when nothing is.
HostResult<std::optional<HiddenPaths>> hiddenBy(const ControlRequest& request,
                                                const SecretScan& found) {
  const std::vector<std::string> shown =
      request.includeSecrets.value_or(std::vector<std::string>());
  if (!isReviewed(shown, found)) return std::unexpected(Refusal::notReviewed);
  if (found.secrets.empty() || found.secrets.front() != wholeFolder) return HiddenPaths(shown);
  if (shown.empty()) return std::unexpected(Refusal::folderIsSecret);
  return std::nullopt;
}

}  // namespace

HostResult<ControlResponse> Sharing::share(const ControlRequest& request, AnswerSink& sink) {
  const auto name = nameIn(request);
  if (!name) return std::unexpected(name.error());
  if (table.find(localPeer, *name)) return std::unexpected(Refusal::shareNameTaken);
  auto folder = folderIn(request, options.isOwnMount);
  if (!folder) return std::unexpected(folder.error());
  sink.reviews.erase(*name);
  if (isForced(request)) return offer(*name, std::move(*folder), std::nullopt);
  auto found = lookThrough(*request.folder, folder->get(), sink);
  if (!found) return std::unexpected(found.error());
  const bool isClean = found->secrets.empty() && found->caps.empty();
  if (!isClean && request.policy != SharePolicy::yes) {
    return keepForReview(*name, {std::move(*folder), std::move(*found)}, sink.reviews);
  }
  auto hidden = hiddenBy(request, *found);
  if (!hidden) return std::unexpected(hidden.error());
  auto response = offer(*name, std::move(*folder), std::move(*hidden));
  if (response && !isClean) response->review = summaryOf(*found);
  return response;
}

HostResult<SecretScan> Sharing::lookThrough(const std::string& path, int folderFD,
                                            const AnswerSink& sink) const {
  if (isSecretFolder(path)) {
    return SecretScan{.excludedCount = 1, .secrets = {std::string(wholeFolder)}};
  }
  auto found = SecretScan::of(folderFD, options.isOwnMount, options.secretScan,
                              [&] { return sink.isOver(); });
  // Nobody waits for the review any more: what was found may not be all.
  if (sink.isOver()) return std::unexpected(Refusal::ioError);
  return found;
}

HostResult<ControlResponse> Sharing::keepForReview(const std::string& name, ShareReview review,
                                                   ShareReviews& reviews) {
  if (reviews.size() >= maxReviewsInWaiting) return std::unexpected(Refusal::tooManyReviews);
  ControlResponse response{.status = ControlResponse::Status::review,
                           .review = summaryOf(review.found)};
  reviews.emplace(name, std::move(review));
  return response;
}

HostResult<ControlResponse> Sharing::confirm(const ControlRequest& request, ShareReviews& reviews) {
  const auto waiting = request.name ? reviews.find(*request.name) : reviews.end();
  if (waiting == reviews.end()) return std::unexpected(Refusal::noReviewWaiting);
  const SecretScan& found = waiting->second.found;
  std::optional<HiddenPaths> hidden;
  if (!isForced(request)) {
    if (!found.caps.empty() && !request.ackCaps.value_or(false)) {
      return std::unexpected(Refusal::capsNotAcknowledged);
    }
    auto chosen = hiddenBy(request, found);
    if (!chosen) return std::unexpected(chosen.error());
    hidden = std::move(*chosen);
  }
  ShareReview review = std::move(waiting->second);
  reviews.erase(waiting);
  return offer(*request.name, std::move(review.folder), std::move(hidden));
}

HostResult<ControlResponse> Sharing::cancel(const ControlRequest& request, ShareReviews& reviews) {
  if (!request.name || reviews.erase(*request.name) == 0) {
    return std::unexpected(Refusal::noReviewWaiting);
  }
  return ControlResponse::ok();
}

HostResult<ControlResponse> Sharing::unshare(const ControlRequest& request) {
  if (request.all.value_or(false)) {
    table.removeAllLocal();
    log("nothing of this host's own is shared any more");
    return ControlResponse::ok();
  }
  if (!request.name || !table.removeLocal(*request.name)) {
    return std::unexpected(Refusal::noSuchShare);
  }
  log("no longer sharing " + printable(*request.name));
  return ControlResponse::ok();
}

HostResult<ControlResponse> Sharing::offer(const std::string& name, UniqueFd folder,
                                           std::optional<HiddenPaths> hidden) {
  const auto added = table.add({.peer = std::string(localPeer),
                                .name = name,
                                .root = std::move(folder),
                                .hidden = std::move(hidden)});
  if (!added) return std::unexpected(added.error());
  log("sharing " + printable(name));
  return ControlResponse::ok();
}

void Sharing::log(const std::string& line) const {
  if (options.log) options.log(line);
}

}  // namespace tarnel
