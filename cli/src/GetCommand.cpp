// get: files and folders of the volume, copied.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "Commands.h"
#include "Console.h"
#include "EndSignals.h"
#include "HostAbsence.h"
#include "control/ErrnoName.h"
#include "control/JsonWriter.h"
#include "control/Mutex.h"
#include "control/Printable.h"
#include "control/Text.h"
#include "control/Thread.h"
#include "get/CopyJob.h"

namespace tarnel {
namespace {

// A copy that is interrupted has this long to put itself in order, then the process ends without.
constexpr std::chrono::milliseconds grace{600};

// Ends this process by the signal, as its parent expects of Ctrl-C.
[[noreturn]] void dieOf(int number) {
  ::signal(number, SIG_DFL);
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, number);
  ::pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
  ::raise(number);
  std::_Exit(128 + number);
}

// Takes the signals on a thread of its own: the copy may be anywhere, blocked in any call.
class SignalWatch {
 public:
  explicit SignalWatch(Interruption& copyToEnd) : interruption(copyToEnd), ends(blockEndSignals()) {
    startThread("tarnel-signals", [this] { watch(); }).detach();
  }
  // The copy is over. Does not return when a signal ended it.
  void finish() {
    int number = 0;
    {
      MutexLock hold(lock);
      number = taken;
      isFinished = true;
    }
    if (number == 0) return;
    fail("interrupted");
    dieOf(number);
  }

 private:
  void watch() {
    int number = 0;
    while (::sigwait(&ends, &number) != 0) {
    }
    {
      MutexLock hold(lock);
      if (isFinished) dieOf(number);  // the report may wait for whoever reads it
      taken = number;
    }
    interruption.raise();
    std::this_thread::sleep_for(grace);
    interruption.removePendingFile();
    dieOf(number);
  }

  Interruption& interruption;
  const sigset_t ends;
  Mutex lock;  // guards both below
  int taken GUARDED_BY(lock) = 0;
  bool isFinished GUARDED_BY(lock) = false;
};

std::string textOf(const std::string& text) { return isValidUtf8(text) ? text : printable(text); }

void printJson(const CopyReport& report) {
  for (const CopyReport::Failure& failure : report.failures()) {
    JsonWriter json;
    json.beginObject();
    json.field("path", textOf(failure.path));
    json.field("error", errnoName(failure.error.error));
    if (!failure.error.detail.empty()) json.field("message", textOf(failure.error.detail));
    json.endObject();
    print(json.finish().value_or("") + "\n");
  }
  JsonWriter json;
  json.beginObject();
  json.field("files", report.files);
  json.field("folders", report.folders);
  json.field("skipped", report.skipped);
  json.field("bytes", report.bytes);
  json.field("failed", report.failed());
  json.endObject();
  print(json.finish().value_or("") + "\n");
}

void printFailures(const CopyReport& report) {
  for (const CopyReport::Failure& failure : report.failures()) {
    fail(failure.path + ": " + description(failure.error));
  }
  const auto untold = report.failed() - static_cast<std::int64_t>(report.failures().size());
  if (untold > 0) fail("and " + std::to_string(untold) + " more");
}

// A host that went away meanwhile: what to do is said once, behind what failed.
void tellLostHost(const CopyReport& report, const std::string& socket) {
  const bool isLost = std::ranges::any_of(
      report.failures(), [](const auto& failure) { return failure.error.error == ENOTCONN; });
  if (!isLost) return;
  if (const auto reason = whyNoHost(socket)) fail(*reason + "; --resume copies the rest");
}

}  // namespace

int runGet(const GetArguments& arguments) {
  if (arguments.paths.size() < 2) {
    fail("get wants PATH... and DEST (see `tarnel get --help`)");
    return usage;
  }
  if (const auto reason = whyNoHost(arguments.socket)) return fail(*reason);
  CopyOptions options{.socket = arguments.socket,
                      .paths = {arguments.paths.begin(), arguments.paths.end() - 1},
                      .destination = arguments.paths.back(),
                      .rules = {.force = arguments.force, .resume = arguments.resume}};
  if (!arguments.json && ::isatty(STDERR_FILENO) == 1) options.terminal = STDERR_FILENO;

  // Neither ends before the process: the signal's thread uses both.
  static Interruption interruption;
  static SignalWatch signals(interruption);
  CopyJob job(std::move(options), interruption);
  const CopyReport& report = job.run();
  signals.finish();
  if (arguments.json) printJson(report);
  printFailures(report);
  tellLostHost(report, arguments.socket);
  const int status = statusAfterPrinting();
  return report.failed() == 0 ? status : failed;
}

}  // namespace tarnel
