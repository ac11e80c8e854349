// Which names stand for secrets by custom, so that nobody shares them without having been asked.
//
// Case is ignored as file systems do that ignore it. A folder with such a name is a secret with all
// that it holds.
//   whole names   .env .envrc .netrc _netrc .pgpass .my.cnf .npmrc .pypirc .htpasswd .dockercfg
//                 .git-credentials .vault-token credentials.json secrets.json secrets.yaml
//                 secrets.yml service-account.json wallet.dat logins.json key3.db key4.db
//                 id_rsa id_dsa id_ecdsa id_ed25519 id_ecdsa_sk id_ed25519_sk
//   folders       .ssh .gnupg .aws .azure .kube .docker .password-store
//   beginnings    .env. unless the name ends in .example, .sample, .template or .dist
//   endings       .pem .key .p12 .pfx .ppk .jks .keystore .keytab .kdb .kdbx .keychain
//                 .keychain-db .ovpn
// Threads: pure.
#pragma once

#include <string_view>

namespace tarnel {

// Of one component of a path.
[[nodiscard]] bool isSecretName(std::string_view name);

}  // namespace tarnel
