#include "host/Refusal.h"

#include <cerrno>

namespace tarnel {

std::string_view description(Refusal refusal) {
  switch (refusal) {
    case Refusal::noSuchFile:
      return "no such file";
    case Refusal::isDirectory:
      return "is a directory";
    case Refusal::notDirectory:
      return "not a directory";
    case Refusal::permissionDenied:
      return "permission denied";
    case Refusal::ioError:
      return "i/o error";
    case Refusal::exhausted:
      return "out of descriptors or memory";
    case Refusal::listingTooLarge:
      return "listing too large for one answer";
    case Refusal::folderTooLarge:
      return "folder with too many names";
    case Refusal::folderTooDeep:
      return "folder too deep";
    case Refusal::fileBecameShorter:
      return "file became shorter while it was sent";
    case Refusal::noLocation:
      return "no location given";
    case Refusal::invalidOffset:
      return "invalid offset";
    case Refusal::invalidLength:
      return "invalid length";
    case Refusal::invalidLimit:
      return "invalid limit";
    case Refusal::malformedRequest:
      return "malformed request";
    case Refusal::notServed:
      return "operation not served";
    case Refusal::unusableShareName:
      return "not a usable share name";
    case Refusal::shareNameTaken:
      return "another share has this name";
    case Refusal::noSuchShare:
      return "no such share";
    case Refusal::folderNotAbsolute:
      return "the folder's path must be absolute";
    case Refusal::folderIsOwnMount:
      return "the folder lies on a mounted Tarnel volume";
    case Refusal::folderIsSecret:
      return "the folder itself is a likely secret: nothing is left without it";
    case Refusal::tooManyShares:
      return "too many shares";
    case Refusal::tooManyReviews:
      return "too many reviews in waiting: confirm or cancel one";
    case Refusal::noReviewWaiting:
      return "no review waits under this name";
    case Refusal::notReviewed:
      return "includeSecrets names a path that the review does not";
    case Refusal::capsNotAcknowledged:
      return "the review is not complete: confirm it with ackCaps";
  }
  __builtin_unreachable();
}

Refusal refusalFor(int error) {
  switch (error) {
    case ENOENT:
    case ENAMETOOLONG:
    case EILSEQ:  // some file systems take only names in UTF-8
    case ESTALE:
    case ELOOP:  // a link where the walk has just seen none
    case EXDEV:
    case ENXIO:  // a socket, or a device without its driver
    case ENODEV:
      return Refusal::noSuchFile;
    case EISDIR:
      return Refusal::isDirectory;
    case ENOTDIR:
      return Refusal::notDirectory;
    case EACCES:
    case EPERM:
      return Refusal::permissionDenied;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
      return Refusal::exhausted;
    default:
      return Refusal::ioError;
  }
}

}  // namespace tarnel
