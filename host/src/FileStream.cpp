#include "FileStream.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "control/ControlStreamFrame.h"

namespace tarnel {
namespace {

std::optional<Refusal> sendFile(const BeneathResolver& share, const std::string& path,
                                std::int64_t offset, std::int64_t length, StreamWriter& writer) {
  const auto file = share.openFile(path);
  if (!file) return file.error();
  struct stat status;
  if (::fstat(file->get(), &status) != 0) return refusalFor(errno);
  const bool isSized = status.st_size > 0;
  if (isSized) length = std::min(length, std::max<std::int64_t>(status.st_size - offset, 0));
  return isSized ? writer.file(file->get(), offset, length)
                 : writer.toTheEnd(file->get(), offset, length);
}

}  // namespace

bool FileStream::send(const BeneathResolver& share, const std::string& path, std::int64_t offset,
                      std::optional<std::int64_t> length, AnswerSink& sink) {
  StreamWriter writer(sink);
  const auto failure = sendFile(share, path, offset,
                                length.value_or(std::numeric_limits<std::int64_t>::max()), writer);
  if (failure) {
    writer.error(*failure);
  } else {
    writer.frame(ControlStreamFrame::eof, {});
  }
  return writer.finish();
}

}  // namespace tarnel
