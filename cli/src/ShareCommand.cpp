#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Console.h"
#include "HostDialog.h"
#include "ShareQuestion.h"
#include "control/JsonWriter.h"

namespace tarnel {
namespace {

struct Offer {
  std::string name;
  std::string folder;  // absolute
};

std::optional<Offer> offerIn(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) return std::nullopt;
  const std::string folder = text.substr(equals + 1);
  std::error_code error;
  auto whole = std::filesystem::canonical(folder, error);
  // What does not exist is named as it was given; the host says what is wrong with it.
  if (error) whole = std::filesystem::absolute(folder, error);
  return Offer{.name = text.substr(0, equals), .folder = error ? folder : whole.string()};
}

SharePolicy policyOf(const ShareArguments& arguments) {
  if (arguments.force) return SharePolicy::force;
  return arguments.yes ? SharePolicy::yes : SharePolicy::interactive;
}

int cannot(const Offer& offer, const std::optional<std::string>& message) {
  return fail("cannot share " + offer.folder + " as " + offer.name + ": " +
              message.value_or("the host does not say why"));
}

void printJson(const ControlResponse& response, const Offer& offer) {
  JsonWriter json;
  json.beginObject();
  json.field("status", response.status);
  json.field("name", offer.name);
  json.field("folder", offer.folder);
  json.field("review", response.review);
  json.endObject();
  print(json.finish().value_or("") + "\n");
}

int tellShared(const ControlResponse& response, const Offer& offer, bool json, bool isWithout) {
  if (json) {
    printJson(response, offer);
  } else {
    std::string line = "sharing " + shown(offer.folder) + " as me/" + shown(offer.name);
    const auto& review = response.review;
    if (isWithout && review && review->excludedCount > 0) {
      line += ", without " + secretsIn(*review);
    }
    print(line + "\n");
  }
  return statusAfterPrinting();
}

// Nobody can be asked: say what to give instead of an answer.
int refuseReview(const ReviewSummary& review, const Offer& offer) {
  if (isWhollySecret(review)) {
    return cannot(offer, "the folder is a likely secret itself: use --force to share it");
  }
  std::string why;
  if (review.excludedCount > 0) {
    constexpr std::size_t mostNamed = 3;
    why = "it holds " + secretsIn(review) + " (";
    for (std::size_t i = 0; i < review.secrets.size() && i < mostNamed; ++i) {
      why += (i == 0 ? "" : ", ") + review.secrets[i];
    }
    why += review.excludedCount > static_cast<std::int64_t>(mostNamed) ? ", ...)" : ")";
  }
  if (!review.caps.empty())
    why += std::string(why.empty() ? "it" : " and") + " is too much to look through";
  return cannot(offer,
                why + ": use --yes to leave likely secrets out, or --force to share everything");
}

int answerReview(HostDialog& host, ControlResponse reviewed, const Offer& offer) {
  const auto decision = askAbout(*reviewed.review, offer.folder, offer.name);
  if (decision == ShareDecision::nothing) {
    (void)host.ask({.op = ControlOp::cancel, .name = offer.name});
    return fail("nothing is shared as " + offer.name);
  }
  const bool everything = decision == ShareDecision::everything;
  const auto confirmed =
      host.ask({.op = ControlOp::confirm,
                .name = offer.name,
                .policy = everything ? std::optional(SharePolicy::force) : std::nullopt,
                .ackCaps = true});
  if (!confirmed) return fail(confirmed.error());
  if (confirmed->status != ControlResponse::Status::ok) return cannot(offer, confirmed->message);
  return tellShared(reviewed, offer, false, !everything);
}

}  // namespace

int runShare(const ShareArguments& arguments) {
  const auto offer = offerIn(arguments.share);
  if (!offer) {
    fail("share wants NAME=DIR, not " + arguments.share + " (see `tarnel share --help`)");
    return usage;
  }
  auto host = HostDialog::open(arguments.socket);
  if (!host) return fail(host.error());
  const auto response = host->ask({.op = ControlOp::share,
                                   .name = offer->name,
                                   .folder = offer->folder,
                                   .policy = policyOf(arguments)});
  if (!response) return fail(response.error());
  if (response->status == ControlResponse::Status::ok) {
    return tellShared(*response, *offer, arguments.json, true);
  }
  if (response->status == ControlResponse::Status::error || !response->review) {
    return cannot(*offer, response->message);
  }
  if (!arguments.json && canAsk()) return answerReview(*host, *response, *offer);
  if (arguments.json) printJson(*response, *offer);
  return refuseReview(*response->review, *offer);
}

int runUnshare(const UnshareArguments& arguments) {
  // As `tarnel shares` lists it, or the name alone.
  constexpr std::string_view own = "me/";
  const std::string name =
      arguments.name.starts_with(own) ? arguments.name.substr(own.size()) : arguments.name;
  auto host = HostDialog::open(arguments.socket);
  if (!host) return fail(host.error());
  const auto response = host->ask({.op = ControlOp::unshare, .name = name});
  if (!response) return fail(response.error());
  if (response->status != ControlResponse::Status::ok) {
    return fail(name + ": " + response->message.value_or("the host does not say why"));
  }
  if (arguments.json) {
    JsonWriter json;
    json.beginObject();
    json.field("status", response->status);
    json.field("name", name);
    json.endObject();
    print(json.finish().value_or("") + "\n");
  } else {
    print("no longer sharing me/" + shown(name) + "\n");
  }
  return statusAfterPrinting();
}

}  // namespace tarnel
