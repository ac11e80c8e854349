#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/DirectoryNames.h"
#include "support/FileTree.h"

namespace tarnel {
namespace {

using Kind = DirectoryNames::Kind;

class DirectoryNamesTest : public testing::Test {
 protected:
  HostResult<DirectoryNames> read(std::size_t budget = DirectoryNames::maxBytes) {
    return DirectoryNames::read(
        UniqueFd(::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), budget,
        [](std::string_view name) { return name != "unwanted"; });
  }
  static std::vector<std::string> textsOf(const DirectoryNames& names) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < names.size(); ++i) texts.emplace_back(names[i].text);
    return texts;
  }
  using Texts = std::vector<std::string>;

  test::FileTree tree;
};

TEST_F(DirectoryNamesTest, namesAreSortedAndHaveTheirKind) {
  tree.link("c", "nowhere");
  tree.folder("b");
  tree.file("a");
  tree.fifo("fifo");
  tree.file("unwanted");
  const auto names = read();
  ASSERT_TRUE(names);
  EXPECT_EQ(textsOf(*names), (Texts{"a", "b", "c"}));
  EXPECT_EQ((*names)[0].kind, Kind::file);
  EXPECT_EQ((*names)[1].kind, Kind::directory);
  EXPECT_EQ((*names)[2].kind, Kind::link);
}

TEST_F(DirectoryNamesTest, theComposedFormsDecideTheOrderAndTheBytesStay) {
  const Texts expected = {"a", "z", "\xc3\xa9", "e\xcc\x81x", "\xc3\xa9y"};
  for (auto name = expected.rbegin(); name != expected.rend(); ++name) tree.file(*name);
  EXPECT_EQ(textsOf(*read()), expected);
}

TEST_F(DirectoryNamesTest, anEmptyFolderHasNone) {
  const auto names = read(0);
  ASSERT_TRUE(names);
  EXPECT_EQ(names->size(), 0U);
  EXPECT_EQ(names->bytes(), 0U);
}

TEST_F(DirectoryNamesTest, moreThanTheBudgetIsRefused) {
  for (int i = 0; i < 10; ++i) tree.file("name" + std::to_string(i));
  const auto names = read();
  ASSERT_TRUE(names);
  EXPECT_EQ(names->bytes(), 10U * (5 + 6));
  EXPECT_TRUE(read(110));
  const auto refused = read(109);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error(), Refusal::folderTooLarge);
}

}  // namespace
}  // namespace tarnel
