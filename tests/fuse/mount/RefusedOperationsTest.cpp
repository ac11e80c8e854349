// Nothing can be changed: what the kernel refuses on a mount flagged read-only, and what the
// adapter refuses by itself on one that is not.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

#include "LocalMount.h"
#include "ScriptedMountFixture.h"

namespace tarnel::test {
namespace {

struct Operation {
  const char* name;
  std::function<int(const std::string& folder)> call;  // below 0: errno tells
};

int openAndClose(const std::string& path, int flags) {
  return UniqueFd(::open(path.c_str(), flags | O_CLOEXEC, 0600)).get();
}

// Everything that would change `folder`, which holds the file "a" and the folder "box".
const std::vector<Operation>& changes() {
  static const std::vector<Operation> all = {
      {"open for writing", [](auto& f) { return openAndClose(f + "/a", O_WRONLY); }},
      {"open for both", [](auto& f) { return openAndClose(f + "/a", O_RDWR); }},
      {"open for appending", [](auto& f) { return openAndClose(f + "/a", O_WRONLY | O_APPEND); }},
      {"open and truncate", [](auto& f) { return openAndClose(f + "/a", O_WRONLY | O_TRUNC); }},
      {"create", [](auto& f) { return openAndClose(f + "/new", O_WRONLY | O_CREAT); }},
      {"create for reading", [](auto& f) { return openAndClose(f + "/new", O_RDONLY | O_CREAT); }},
      {"truncate", [](auto& f) { return ::truncate((f + "/a").c_str(), 0); }},
      {"mkdir", [](auto& f) { return ::mkdir((f + "/new").c_str(), 0700); }},
      {"mknod", [](auto& f) { return ::mknod((f + "/new").c_str(), S_IFREG | 0600, 0); }},
      {"mkfifo", [](auto& f) { return ::mkfifo((f + "/new").c_str(), 0600); }},
      {"unlink", [](auto& f) { return ::unlink((f + "/a").c_str()); }},
      {"rmdir", [](auto& f) { return ::rmdir((f + "/box").c_str()); }},
      {"rename", [](auto& f) { return ::rename((f + "/a").c_str(), (f + "/new").c_str()); }},
      {"rename onto another",
       [](auto& f) { return ::rename((f + "/a").c_str(), (f + "/b").c_str()); }},
      {"exchange",
       [](auto& f) {
         return ::renameat2(AT_FDCWD, (f + "/a").c_str(), AT_FDCWD, (f + "/b").c_str(),
                            RENAME_EXCHANGE);
       }},
      {"link", [](auto& f) { return ::link((f + "/a").c_str(), (f + "/new").c_str()); }},
      {"symlink", [](auto& f) { return ::symlink("a", (f + "/new").c_str()); }},
      {"chmod", [](auto& f) { return ::chmod((f + "/a").c_str(), 0600); }},
      {"chmod of a folder", [](auto& f) { return ::chmod(f.c_str(), 0700); }},
      {"chown", [](auto& f) { return ::chown((f + "/a").c_str(), 1, 1); }},
      {"utimensat", [](auto& f) { return ::utimensat(AT_FDCWD, (f + "/a").c_str(), nullptr, 0); }},
      {"fchmod",
       [](auto& f) {
         const UniqueFd fd(::open((f + "/a").c_str(), O_RDONLY | O_CLOEXEC));
         return ::fchmod(fd.get(), 0600);
       }},
  };
  return all;
}

int setAttribute(const std::string& path) { return ::setxattr(path.c_str(), "user.x", "1", 1, 0); }

int removeAttribute(const std::string& path) { return ::removexattr(path.c_str(), "user.x"); }

void fill(TreeHost& host) {
  host.file("me/Docs/a", "bytes of a");
  host.file("me/Docs/b", "bytes of b");
  host.folder("me/Docs/box");
}

void expectNoExtendedAttributes(const std::string& path) {
  char value[8];
  EXPECT_EQ(errnoOf([&] { return ::getxattr(path.c_str(), "user.x", value, sizeof value); }),
            ENOTSUP);
  EXPECT_EQ(errnoOf([&] { return ::listxattr(path.c_str(), value, sizeof value); }), ENOTSUP);
}

void expectNoLink(const std::string& path) {
  char target[8];
  EXPECT_EQ(errnoOf([&] { return ::readlink(path.c_str(), target, sizeof target); }), EINVAL);
}

class RefusedOperationsTest : public ScriptedMountFixture {
 protected:
  RefusedOperationsTest() { fill(host); }
};

TEST_F(RefusedOperationsTest, aReadOnlyMountRefusesEveryChange) {
  mountTree();
  for (const Operation& operation : changes()) {
    EXPECT_EQ(named(errnoOf([&] { return operation.call(at("")); })), "EROFS") << operation.name;
  }
  EXPECT_EQ(named(errnoOf([&] { return setAttribute(at("a")); })), "EROFS");
  EXPECT_EQ(named(errnoOf([&] { return removeAttribute(at("a")); })), "EROFS");
  EXPECT_EQ(named(errnoOf([&] { return ::access(at("a").c_str(), W_OK); })), "EROFS");
  EXPECT_EQ(contentOf(at("a")), "bytes of a");
}

TEST_F(RefusedOperationsTest, theAdapterItselfRefusesEveryChange) {
  const LocalMount local(host.path());
  const std::string folder = local / "me/Docs";
  for (const Operation& operation : changes()) {
    EXPECT_EQ(named(errnoOf([&] { return operation.call(folder); })), "EROFS") << operation.name;
  }
  EXPECT_EQ(named(errnoOf([&] { return setAttribute(folder + "/a"); })), "EOPNOTSUPP");
  EXPECT_EQ(named(errnoOf([&] { return removeAttribute(folder + "/a"); })), "EOPNOTSUPP");
  EXPECT_EQ(contentOf(folder + "/a"), "bytes of a");
}

TEST_F(RefusedOperationsTest, whatNeedsAWritableDescriptorFindsNone) {
  const LocalMount local(host.path());
  const UniqueFd fd(::open((local / "me/Docs/a").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(fd.valid());
  EXPECT_EQ(errnoOf([&] { return ::write(fd.get(), "x", 1); }), EBADF);
  EXPECT_EQ(errnoOf([&] { return ::ftruncate(fd.get(), 0); }), EINVAL);
  EXPECT_EQ(errnoOf([&] { return ::fallocate(fd.get(), 0, 0, 10); }), EBADF);
}

TEST_F(RefusedOperationsTest, refusalsAskTheHostNothing) {
  const LocalMount local(host.path());
  const std::string folder = local / "me/Docs";
  const UniqueFd fd(::open(folder.c_str(), O_PATH | O_CLOEXEC));
  EXPECT_EQ(named(errnoOf([&] { return ::mkdirat(fd.get(), "new", 0700); })), "EROFS");
  EXPECT_EQ(host.asked({.op = ControlOp::share}), 0U);
  EXPECT_EQ(host.asked(ControlOp::read), 0U);
  EXPECT_EQ(host.asked(ControlOp::list), 0U);
}

TEST_F(RefusedOperationsTest, thereAreNoLinksAndNoExtendedAttributes) {
  mountTree();
  expectNoLink(at("a"));
  expectNoLink(at("box"));
  expectNoExtendedAttributes(at("a"));
  expectNoExtendedAttributes(at("box"));
}

TEST_F(RefusedOperationsTest, flushingHasNothingToDo) {
  mountTree();
  for (const char* name : {"a", "box"}) {
    const UniqueFd fd(::open(at(name).c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(fd.valid());
    EXPECT_EQ(errnoOf([&] { return ::fsync(fd.get()); }), 0) << name;
  }
}

TEST_F(RefusedOperationsTest, aFolderIsNotReadAndAFileIsNotListed) {
  mountTree();
  EXPECT_EQ(contentOf(at("box")), std::unexpected(EISDIR));
  EXPECT_EQ(contentOf(mount->path()), std::unexpected(EISDIR));
  EXPECT_EQ(errnoOf([&] { return openAndClose(at("a"), O_RDONLY | O_DIRECTORY); }), ENOTDIR);
  struct stat status{};
  EXPECT_EQ(errnoOf([&] { return ::stat(at("a/b").c_str(), &status); }), ENOTDIR);
}

}  // namespace
}  // namespace tarnel::test
