// Why the host does not answer a request with a payload.
//
// The texts are fixed and hold no name: a reader looks for words in them to tell one refusal from
// another ("is a directory", "not a directory"; anything else means that the path is missing), and
// a path may hold those very words. Threads: plain values.
#pragma once

#include <expected>
#include <string_view>

namespace tarnel {

enum class Refusal {
  noSuchFile,  // missing, unsafe, or left out: links that lead out, devices and their like
  isDirectory,
  notDirectory,
  permissionDenied,
  ioError,
  exhausted,  // no descriptor or no memory left: says nothing of the path, so no answer tells it
  listingTooLarge,
  folderTooLarge,
  folderTooDeep,
  fileBecameShorter,
  noLocation,
  invalidOffset,
  invalidLength,
  invalidLimit,
  malformedRequest,
  notServed,
  // Of the sharing operations.
  unusableShareName,
  shareNameTaken,
  noSuchShare,
  folderNotAbsolute,
  folderIsOwnMount,
  folderIsSecret,
  tooManyShares,
  tooManyReviews,
  noReviewWaiting,
  notReviewed,
  capsNotAcknowledged,
};
[[nodiscard]] std::string_view description(Refusal refusal);

// What a failed system call on a path means to the one who asked.
[[nodiscard]] Refusal refusalFor(int error);

template <class T>
using HostResult = std::expected<T, Refusal>;

}  // namespace tarnel
