// A signal that ends a copy. It must do so at once, also while the host is silent or a disk is
// slow: sockets are shut down, which wakes whoever waits for them, and the temporary file of the
// moment is removed even when the copying thread cannot do it itself.
// Threads: any.
#pragma once

#include <string>

#include "control/Mutex.h"

namespace tarnel {

class Interruption {
 public:
  // Wakes the copy. From now on no socket can be added and `raised` is true.
  void raise();
  [[nodiscard]] bool raised() const;
  // Removes the pending file, if there is one still. For a process that ends without its copy.
  void removePendingFile();

  // False, with the socket shut down, when the copy was interrupted.
  bool addSocket(int fd);
  void removeSocket(int fd);  // before it is closed

  // The temporary file that is being written, in the folder of this descriptor; at most one.
  void setPendingFile(int folder, const std::string& name);
  void clearPendingFile();

 private:
  static constexpr int maxSockets = 4;

  mutable Mutex lock;  // guards all below; held across shutdown and unlink, which do not wait
  bool isRaised GUARDED_BY(lock) = false;
  int sockets[maxSockets] GUARDED_BY(lock) = {-1, -1, -1, -1};
  int pendingFolder GUARDED_BY(lock) = -1;
  std::string pendingName GUARDED_BY(lock);
};

}  // namespace tarnel
