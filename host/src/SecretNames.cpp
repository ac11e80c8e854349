#include "host/SecretNames.h"

#include <algorithm>
#include <array>
#include <string>

#include "control/AsciiCase.h"
#include "control/Text.h"

namespace tarnel {
namespace {

constexpr std::array<std::string_view, 34> names = {".env",         ".envrc",
                                                    ".netrc",       "_netrc",
                                                    ".pgpass",      ".my.cnf",
                                                    ".npmrc",       ".pypirc",
                                                    ".htpasswd",    ".dockercfg",
                                                    "key3.db",      ".git-credentials",
                                                    ".vault-token", "credentials.json",
                                                    "secrets.json", "secrets.yaml",
                                                    "secrets.yml",  "wallet.dat",
                                                    "logins.json",  "service-account.json",
                                                    "key4.db",      "id_rsa",
                                                    "id_dsa",       "id_ecdsa",
                                                    "id_ed25519",   "id_ecdsa_sk",
                                                    ".ssh",         "id_ed25519_sk",
                                                    ".gnupg",       ".aws",
                                                    ".azure",       ".kube",
                                                    ".docker",      ".password-store"};

constexpr std::array<std::string_view, 13> endings = {
    ".pem",    ".key", ".p12",  ".pfx",      ".ppk",         ".jks", ".keystore",
    ".keytab", ".kdb", ".kdbx", ".keychain", ".keychain-db", ".ovpn"};

constexpr std::string_view environment = ".env.";
constexpr std::array<std::string_view, 4> examples = {".example", ".sample", ".template", ".dist"};

// Longer than any name that is compared as a whole.
constexpr std::size_t longest = 24;

template <std::size_t count>
bool endsInOneOf(const std::array<std::string_view, count>& all, std::string_view text) {
  return std::any_of(all.begin(), all.end(),
                     [&](std::string_view ending) { return text.ends_with(ending); });
}

bool isSecret(std::string_view name) {
  // Only the ends matter, so a long name costs no more than a short one.
  const std::size_t kept = std::min(name.size(), longest);
  std::array<char, longest> memory;
  std::transform(name.end() - static_cast<std::ptrdiff_t>(kept), name.end(), memory.begin(),
                 [](char c) { return asciiLower(c); });
  const std::string_view tail(memory.data(), kept);
  if (endsInOneOf(endings, tail)) return true;
  if (name.size() == kept && std::find(names.begin(), names.end(), tail) != names.end()) {
    return true;
  }
  const bool isEnvironment =
      name.size() > environment.size() &&
      std::equal(environment.begin(), environment.end(), name.begin(),
                 [](char expected, char c) { return expected == asciiLower(c); });
  return isEnvironment && !endsInOneOf(examples, tail);
}

}  // namespace

bool isSecretName(std::string_view spelled) {
  // Where the file system ignores case, other letters than those of ASCII can lead to such a name.
  if (!isAscii(spelled)) return isSecret(caseFolded(spelled));
  return isSecret(spelled);
}

}  // namespace tarnel
