#include "get/ProgressLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

namespace tarnel {
namespace {

constexpr std::chrono::milliseconds interval{100};
constexpr std::size_t usualColumns = 80;

std::string sizeText(double bytes) {
  static constexpr std::array units{"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  std::size_t unit = 0;
  while (bytes >= 1023.95 && unit + 1 < units.size()) {
    bytes /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
  return text;
}

std::string filesText(std::int64_t files) {
  return std::to_string(files) + (files == 1 ? " file" : " files");
}

std::string durationText(std::int64_t seconds) {
  char text[48];
  if (seconds >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                  static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld", static_cast<long long>(seconds / 60),
                  static_cast<long long>(seconds % 60));
  }
  return text;
}

std::size_t columnsOf(int fd) {
  winsize size{};
  return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualColumns;
}

}  // namespace

std::string progressText(const CopyProgress& progress, std::size_t columns) {
  const double seconds = static_cast<double>(progress.elapsed.count()) / 1000;
  const double rate = seconds > 0 ? static_cast<double>(progress.received) / seconds : 0;
  std::string bytes = sizeText(static_cast<double>(progress.bytes));
  std::string files = filesText(progress.files);
  std::string left;
  // A tree that grows may bring more than was counted.
  if (progress.totals && progress.bytes <= progress.totals->bytes) {
    bytes += " of " + sizeText(static_cast<double>(progress.totals->bytes));
    if (progress.files <= progress.totals->files) {
      files = std::to_string(progress.files) + " of " + filesText(progress.totals->files);
    }
    const double rest = static_cast<double>(progress.totals->bytes - progress.bytes);
    if (rate > 0 && rest / rate < 360'000) {
      left = durationText(static_cast<std::int64_t>(std::ceil(rest / rate))) + " left";
    }
  }
  const std::string speed = sizeText(rate) + "/s";

  std::string text;
  // Added while they fit: bytes, then what is left, then the rate, then the files; shown in another
  // order.
  const std::vector<std::vector<std::string>> choices = {
      {bytes, files, speed, left}, {bytes, speed, left}, {bytes, left}, {bytes}};
  for (const auto& pieces : choices) {
    text.clear();
    for (const std::string& piece : pieces) {
      if (!piece.empty()) text += (text.empty() ? "" : ", ") + piece;
    }
    if (text.size() < columns) return text;
  }
  return {};
}

// Old text is covered with blanks: every terminal can do that.
void ProgressLine::draw(const CopyProgress& progress) {
  next = Clock::now() + interval;
  const std::size_t columns = columnsOf(fd);
  std::string text = progressText(progress, columns);
  const std::size_t length = text.size();
  text.resize(std::clamp(shown, length, std::max(length, columns - 1)), ' ');
  write("\r" + text);
  shown = length;
}

void ProgressLine::clear() {
  if (shown == 0) return;
  write("\r" + std::string(std::min(shown, columnsOf(fd) - 1), ' ') + "\r");
  shown = 0;
}

// A line that cannot be drawn is no failure of the copy.
void ProgressLine::write(const std::string& text) const {
  (void)!::write(fd, text.data(), text.size());
}

}  // namespace tarnel
