#include "ShareQuestion.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "control/Printable.h"

namespace tarnel {
namespace {

// More than a screen of them are read by nobody.
constexpr std::size_t mostListed = 40;

std::string counted(std::int64_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void tell(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// One line of standard input, as much of it as an answer needs; empty at its end.
std::string readAnswer() {
  constexpr std::size_t longest = 32;
  std::string answer;
  for (char c = 0; c != '\n';) {
    const ssize_t count = ::read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      tell("\n");  // the end of input, which leaves the cursor behind the question
      return {};
    }
    if (c != '\n' && answer.size() < longest) answer.push_back(c);
  }
  return answer;
}

std::string list(const ReviewSummary& review) {
  const std::size_t listed = std::min(review.secrets.size(), mostListed);
  std::string text;
  for (std::size_t i = 0; i < listed; ++i) text += "  " + printable(review.secrets[i]) + "\n";
  const std::int64_t more = review.excludedCount - static_cast<std::int64_t>(listed);
  if (more > 0) text += "  and " + std::to_string(more) + " more\n";
  return text;
}

std::string summary(const ReviewSummary& review, const std::string& folder) {
  const std::string shown = printable(folder);
  if (isWhollySecret(review)) return shown + " is a likely secret itself.\n";
  std::string text;
  if (review.excludedCount > 0) {
    text = shown + " holds " + secretsIn(review) + ":\n" + list(review);
  }
  if (!review.caps.empty()) text += "Not everything in " + shown + " was looked at:\n";
  for (const std::string& cap : review.caps) text += "  " + printable(cap) + "\n";
  return text;
}

}  // namespace

bool canAsk() { return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1; }

ShareDecision askAbout(const ReviewSummary& review, const std::string& folder,
                       const std::string& name) {
  tell(summary(review, folder));
  const bool canLeaveOut = !isWhollySecret(review);
  if (canLeaveOut) {
    tell("Without likely secrets, " +
         counted(review.sharedCount, "file or folder is", "files and folders are") +
         " shared as me/" + printable(name) + ".\n");
  }
  tell(canLeaveOut ? "Share without them (y), everything (e) or nothing (n)? [n] "
                   : "Share everything (e) or nothing (n)? [n] ");
  const std::string answer = readAnswer();
  if (answer == "e" || answer == "everything") return ShareDecision::everything;
  const bool isYes = answer == "y" || answer == "yes";
  return isYes && canLeaveOut ? ShareDecision::withoutSecrets : ShareDecision::nothing;
}

std::string secretsIn(const ReviewSummary& review) {
  return counted(review.excludedCount, "likely secret", "likely secrets");
}

bool isWhollySecret(const ReviewSummary& review) {
  return review.secrets.size() == 1 && review.secrets.front() == ".";
}

}  // namespace tarnel
