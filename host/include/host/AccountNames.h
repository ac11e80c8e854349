// The names of users and groups, each asked of the system once in the life of the process.
//
// An id without a name, or with one that is not valid UTF-8, is its number as text; so is one for
// which there is no descriptor left to look with, until it is asked for again.
// Threads: any.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <unordered_map>

#include "control/Mutex.h"

namespace tarnel {

class AccountNames {
 public:
  AccountNames();

  [[nodiscard]] std::string owner(uid_t uid) { return owners.name(uid); }
  [[nodiscard]] std::string group(gid_t gid) { return groups.name(gid); }

 private:
  class Known {
   public:
    // nullopt when the system had no means to look.
    using Ask = std::optional<std::string> (*)(id_t id);

    explicit Known(Ask question) : ask(question) {}
    [[nodiscard]] std::string name(id_t id);

   private:
    const Ask ask;
    Mutex lock;  // guards the names; never held across a question to the system
    std::unordered_map<id_t, std::string> names GUARDED_BY(lock);
  };

  Known owners;
  Known groups;
};

}  // namespace tarnel
