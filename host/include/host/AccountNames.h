// The names of users and groups, each asked of the system once in the life of the process.
//
// An id without a name, or with one that is not valid UTF-8, is its number as text; so is one for
// which there is no descriptor left to look with, until it is asked for again.
// Threads: any.
#pragma once

#include <sys/types.h>

#include <string>
#include <unordered_map>

#include "control/Mutex.h"

namespace tarnel {

class AccountNames {
 public:
  [[nodiscard]] std::string owner(uid_t uid);
  [[nodiscard]] std::string group(gid_t gid);

 private:
  Mutex lock;  // guards both maps; never held across a question to the system
  std::unordered_map<uid_t, std::string> owners GUARDED_BY(lock);
  std::unordered_map<gid_t, std::string> groups GUARDED_BY(lock);
};

}  // namespace tarnel
