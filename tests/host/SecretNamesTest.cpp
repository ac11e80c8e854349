#include <gtest/gtest.h>

#include <string>

#include "host/HiddenPaths.h"
#include "host/SecretNames.h"

namespace tarnel {
namespace {

TEST(SecretNames, namesThatStandForSecretsAreFoundInAnyCase) {
  for (const auto* name : {".env",
                           ".ENV",
                           ".envrc",
                           ".env.local",
                           ".Env.production",
                           ".netrc",
                           "_netrc",
                           ".npmrc",
                           ".git-credentials",
                           "credentials.json",
                           "service-account.json",
                           "id_rsa",
                           "ID_RSA",
                           "id_ed25519",
                           "id_ed25519_sk",
                           ".ssh",
                           ".gnupg",
                           ".aws",
                           ".kube",
                           ".password-store",
                           "server.pem",
                           "server.key",
                           "Server.KEY",
                           ".key",
                           "a.p12",
                           "a.pfx",
                           "a.jks",
                           "a.kdbx",
                           "login.keychain-db",
                           "x.ovpn"}) {
    EXPECT_TRUE(isSecretName(name)) << name;
  }
}

TEST(SecretNames, lettersThatFoldToThoseOfASecretHideItToo) {
  for (const auto* name :
       {".\u017f\u017fh", ".\u00dfh", "server.\u212aEY", ".e\u200bnv", "\u0441ертификат.PEM"}) {
    EXPECT_TRUE(isSecretName(name)) << name;
  }
  EXPECT_FALSE(isSecretName(".\u00e9nv"));
  EXPECT_FALSE(isSecretName("\u0441ертификат.txt"));
}

TEST(SecretNames, otherNamesAreNone) {
  for (const auto* name : {"",
                           "env",
                           ".environment",
                           ".env.",
                           "env.local",
                           ".env.example",
                           ".env.local.sample",
                           ".env.template",
                           ".env.dist",
                           "id_rsa.pub",
                           "id_rsa.txt",
                           "my_id_rsa",
                           "known_hosts",
                           "key",
                           "monkey",
                           "a.keys",
                           "a.key.txt",
                           "ssh",
                           ".sshd",
                           "credentials",
                           "notes.txt",
                           "pem",
                           "secrets.yaml.md"}) {
    EXPECT_FALSE(isSecretName(name)) << name;
  }
}

TEST(SecretNames, onlyTheEndsOfALongNameMatter) {
  const std::string filler(10'000, 'x');
  EXPECT_TRUE(isSecretName(filler + ".pem"));
  EXPECT_TRUE(isSecretName(".env." + filler));
  EXPECT_FALSE(isSecretName(".env." + filler + ".example"));
  EXPECT_FALSE(isSecretName(filler + ".env"));
  EXPECT_FALSE(isSecretName(filler + "id_rsa"));
}

TEST(HiddenPaths, everythingBelowASecretIsHidden) {
  const HiddenPaths hidden;
  for (const auto* path : {".env", "a/.env", ".ssh", ".ssh/config", "a/.ssh/b/c", "a/k.pem"}) {
    EXPECT_TRUE(hidden.hides(path)) << path;
  }
  for (const auto* path : {"", "a", "a/b", "a/env", "ssh/config"}) {
    EXPECT_FALSE(hidden.hides(path)) << path;
  }
}

TEST(HiddenPaths, whatWasChosenIsShownWithAllThatIsBelowIt) {
  const HiddenPaths hidden({"a/.ssh", ".env"});
  for (const auto* path : {".env", "a/.ssh", "a/.ssh/id_rsa", "a/.ssh/.env/x.pem"}) {
    EXPECT_FALSE(hidden.hides(path)) << path;
  }
  for (const auto* path : {"a/.env", ".ssh", ".ssh/a/.ssh", "b/a/.ssh"}) {
    EXPECT_TRUE(hidden.hides(path)) << path;
  }
}

}  // namespace
}  // namespace tarnel
