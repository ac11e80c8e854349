#include "host/AccountNames.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "control/Text.h"
#include "host/Refusal.h"

namespace tarnel {
namespace {

constexpr std::size_t firstBuffer = 4'096;
constexpr std::size_t largestBuffer = 1'048'576;  // a group's record lists its members

// ask(buffer, size, name) returns what getpwuid_r does.
template <class Ask>
std::optional<std::string> nameOrNumber(id_t number, Ask ask) {
  const char* name = nullptr;
  std::vector<char> buffer;
  int error = ERANGE;
  for (std::size_t size = firstBuffer; error == ERANGE && size <= largestBuffer; size *= 4) {
    buffer.resize(size);
    error = ask(buffer.data(), size, name);
  }
  if (refusalFor(error) == Refusal::exhausted) return std::nullopt;
  if (error != 0 || name == nullptr || !isValidUtf8(name)) return std::to_string(number);
  return name;
}

std::optional<std::string> askOwner(id_t uid) {
  return nameOrNumber(uid, [uid](char* buffer, std::size_t size, const char*& name) {
    passwd record;
    passwd* found = nullptr;
    const int error = ::getpwuid_r(uid, &record, buffer, size, &found);
    if (found != nullptr) name = found->pw_name;
    return error;
  });
}

std::optional<std::string> askGroup(id_t gid) {
  return nameOrNumber(gid, [gid](char* buffer, std::size_t size, const char*& name) {
    ::group record;
    ::group* found = nullptr;
    const int error = ::getgrgid_r(gid, &record, buffer, size, &found);
    if (found != nullptr) name = found->gr_name;
    return error;
  });
}

}  // namespace

AccountNames::AccountNames() : owners(askOwner), groups(askGroup) {}

std::string AccountNames::Known::name(id_t id) {
  {
    MutexLock hold(lock);
    if (const auto known = names.find(id); known != names.end()) return known->second;
  }
  auto name = ask(id);
  if (!name) return std::to_string(id);
  MutexLock hold(lock);
  return names.try_emplace(id, std::move(*name)).first->second;
}

}  // namespace tarnel
