// Mounting through the system's own programs, with programs and a mount table of the test's.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

#include "control/UniqueFd.h"
#include "support/OpenDescriptors.h"
#include "support/TempDir.h"
#include "systemmount/SystemMount.h"
#include "systemmount/SystemTool.h"

namespace tarnel::test {
namespace {

using Lines = std::vector<std::string>;

class SystemMountTest : public testing::Test {
 protected:
  SystemMountTest() {
    std::filesystem::create_directory(folder);
    // Says what it was run with, then mounts what the table then shows.
    program("for one in \"$@\"; do echo \"$one\" >> " + temp / "arguments" + "; done; touch " +
            temp / "mounted");
  }

  void program(const std::string& body) const {
    const std::string path = temp / "mount";
    std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
    ::chmod(path.c_str(), 0755);
  }

  [[nodiscard]] Lines arguments() const {
    std::ifstream file(temp / "arguments");
    Lines lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  [[nodiscard]] TypeOfMount table(std::string type = "tarnelfs") const {
    return [mark = temp / "mounted", type, own = folder](const std::string& asked) {
      return asked == own && std::filesystem::exists(mark) ? type : std::string();
    };
  }

  [[nodiscard]] SystemMount::Request request() const {
    return {.folder = folder, .program = temp / "mount", .typeOfMount = table()};
  }

  [[nodiscard]] Lines failure(const SystemMount::Request& asked) const {
    const auto mounted = SystemMount::mount(asked);
    if (!mounted) return mounted.error();
    ADD_FAILURE() << "it mounted";
    return {};
  }

  TempDir temp;
  const std::string folder = temp / "volume";
  const std::string hint =
      "is the extension switched on? System Settings > General > Login Items & Extensions >"
      " Extensions > By Category > File System Extensions > Tarnel";
};

TEST_F(SystemMountTest, theSystemsMountGetsTypeResourceAndFolder) {
  EXPECT_TRUE(SystemMount::mount(request()));
  EXPECT_EQ(arguments(), (Lines{"-F", "-t", "tarnelfs", "tarnel://volume", folder}));
}

TEST_F(SystemMountTest, optionsComeBeforeTheResource) {
  auto asked = request();
  asked.options = {"nobrowse"};
  EXPECT_TRUE(SystemMount::mount(asked));
  EXPECT_EQ(arguments(),
            (Lines{"-F", "-t", "tarnelfs", "-o", "nobrowse", "tarnel://volume", folder}));
}

TEST_F(SystemMountTest, aFailureIsToldInMountsOwnWordsAndSaysWhereToEnable) {
  program("echo 'File system named tarnelfs not found'; echo; echo 'mount: no' >&2; exit 69");
  EXPECT_EQ(failure(request()), (Lines{"File system named tarnelfs not found", "mount: no",
                                       temp / "mount" + " failed with status 69", hint}));
}

TEST_F(SystemMountTest, aMountThatIsKilledIsAFailure) {
  program("kill -KILL $$");
  EXPECT_EQ(failure(request()), (Lines{temp / "mount" + " failed with status 137", hint}));
}

TEST_F(SystemMountTest, aProgramThatIsMissingIsAFailure) {
  auto asked = request();
  asked.program = temp / "none";
  EXPECT_EQ(failure(asked), (Lines{temp / "none" + ": cannot be run (ENOENT)", hint}));
}

TEST_F(SystemMountTest, itIsNotMountedUntilTheTableShowsOurType) {
  program("exit 0");
  auto asked = request();
  asked.patience = std::chrono::milliseconds(1);
  EXPECT_EQ(failure(asked), (Lines{folder + ": nothing of ours is mounted there, though mount said"
                                            " so; `umount -f` takes the mount away"}));
}

TEST_F(SystemMountTest, anotherTypesMountIsNotOurs) {
  auto asked = request();
  asked.patience = std::chrono::milliseconds(1);
  asked.typeOfMount = table("apfs");
  EXPECT_EQ(failure(asked).size(), 1u);
}

TEST_F(SystemMountTest, aMountThatShowsLateIsWaitedFor) {
  program("exit 0");
  auto asked = request();
  int looks = 0;
  asked.typeOfMount = [&looks](const std::string&) {
    return ++looks > 3 ? std::string("tarnelfs") : std::string();
  };
  EXPECT_TRUE(SystemMount::mount(asked));
}

TEST_F(SystemMountTest, aRootThatNeverAnswersIsLeftAndTold) {
  auto asked = request();
  asked.patience = std::chrono::milliseconds(1);
  auto stuck = std::make_shared<std::promise<void>>();
  auto left = std::make_shared<std::promise<void>>();
  asked.typeOfMount = [stuck, left, first = std::make_shared<bool>(true)](const std::string&) {
    if (std::exchange(*first, false)) return std::string();
    stuck->get_future().wait();
    left->set_value();
    return std::string("tarnelfs");
  };
  EXPECT_EQ(failure(asked), (Lines{folder + ": the root does not answer; `umount -f` takes the"
                                            " mount away"}));
  stuck->set_value();
  left->get_future().wait();
}

TEST_F(SystemMountTest, aRootThatAnswersWithAnErrorIsTold) {
  program("rmdir " + folder + "; touch " + temp / "mounted");
  EXPECT_EQ(failure(request()), (Lines{folder + ": the root cannot be read (ENOENT); `umount -f`"
                                                " takes the mount away"}));
}

TEST_F(SystemMountTest, aFolderThatIsMountedAlreadyIsNotMountedAgain) {
  std::ofstream(temp / "mounted");
  EXPECT_EQ(failure(request()), (Lines{folder + ": the volume is mounted there already"}));
  EXPECT_EQ(arguments(), Lines{});
}

TEST_F(SystemMountTest, whatIsNoFolderIsRefusedBeforeMountIsRun) {
  std::filesystem::remove(folder);
  EXPECT_EQ(failure(request()), (Lines{folder + ": not a folder: make it first"}));
  std::ofstream(folder).close();
  EXPECT_EQ(failure(request()), (Lines{folder + ": not a folder: make it first"}));
  EXPECT_EQ(arguments(), Lines{});
}

TEST_F(SystemMountTest, onlyOptionsThatCanWorkHereAreTaken) {
  EXPECT_EQ(SystemMount::optionsFor({}), Lines{});
  EXPECT_EQ(SystemMount::optionsFor({.options = {"ro,nobrowse", "ro"}}), Lines{"nobrowse"});
  EXPECT_EQ(SystemMount::optionsFor({.options = {"", "ro,,nobrowse,"}}), Lines{"nobrowse"});
  std::string named(SystemMount::optionNames);
  std::erase(named, ' ');
  EXPECT_TRUE(SystemMount::optionsFor({.options = {named}})) << "what the help names";
  for (const char* option : {"attr_timeout=1", "entry_timeout=0", "ro,attr_timeout=2"}) {
    const auto taken = SystemMount::optionsFor({.options = {option}});
    ASSERT_FALSE(taken) << option;
    EXPECT_NE(taken.error().find("the system itself decides"), std::string::npos);
  }
  for (const char* option : {"rw", "allow_other", "default_permissions", "nobrowse=1"}) {
    const auto taken = SystemMount::optionsFor({.options = {"ro", option}});
    ASSERT_FALSE(taken) << option;
    EXPECT_EQ(taken.error(),
              std::string(option) + ": not an option here, where ro and nobrowse are");
  }
}

TEST_F(SystemMountTest, whatTheSystemDecidesCannotBeWishedFor) {
  const auto reason = [](const SystemMount::Wishes& wishes) {
    return SystemMount::optionsFor(wishes).error();
  };
  EXPECT_TRUE(reason({.socket = true}).starts_with("--socket: "));
  EXPECT_TRUE(reason({.foreground = true}).starts_with("-f: "));
  EXPECT_TRUE(reason({.debug = true}).starts_with("--debug: "));
}

TEST_F(SystemMountTest, aMountOfOursIsUnmountedAndNoOther) {
  EXPECT_EQ(SystemMount::unmount(folder, temp / "mount", table()).error(),
            (Lines{folder + ": no Tarnel volume is mounted there"}));
  std::ofstream(temp / "mounted").close();
  EXPECT_FALSE(SystemMount::unmount(folder, temp / "mount", table("apfs")));
  EXPECT_EQ(arguments(), Lines{});
  EXPECT_TRUE(SystemMount::unmount(folder, temp / "mount", table()));
  EXPECT_EQ(arguments(), Lines{folder});
}

TEST_F(SystemMountTest, anUnmountThatFailsIsToldInItsOwnWords) {
  std::ofstream(temp / "mounted").close();
  program("echo 'Resource busy' >&2; exit 1");
  EXPECT_EQ(SystemMount::unmount(folder, temp / "mount", table()).error(),
            (Lines{"Resource busy", temp / "mount" + " failed with status 1"}));
}

TEST_F(SystemMountTest, aToolReadsNothingAndLeavesNoDescriptor) {
  program("cat; echo done");
  std::ofstream(temp / "typed") << "what the user types\n";
  const UniqueFd kept(::dup(STDIN_FILENO));
  const UniqueFd typed(::open((temp / "typed").c_str(), O_RDONLY));
  ASSERT_EQ(::dup2(typed.get(), STDIN_FILENO), STDIN_FILENO);
  const std::size_t before = openDescriptors();
  EXPECT_EQ(runTool({temp / "mount"}), (ToolOutcome{.status = 0, .words = {"done"}}));
  EXPECT_EQ(openDescriptors(), before);
  ::dup2(kept.get(), STDIN_FILENO);
}

TEST_F(SystemMountTest, aToolHasTheBrokenPipeSignalThatThisProgramIgnores) {
  program("kill -PIPE $$; echo alive");
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(runTool({temp / "mount"}), (ToolOutcome{.status = 128 + SIGPIPE, .words = {}}));
  ::signal(SIGPIPE, before);
}

TEST_F(SystemMountTest, aToolThatTalksWithoutEndIsHeardOutButNotKept) {
  program(
      "i=0; while [ $i -lt 2000 ]; do echo 'a line of some hundred bytes, more or less: "
      "........................................................'; i=$((i+1)); done");
  const auto outcome = runTool({temp / "mount"});
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->status, 0);
  EXPECT_LT(outcome->words.size(), 1'000u);
}

}  // namespace
}  // namespace tarnel::test
