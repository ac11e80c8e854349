// The document for a host's author lists the checks as they are.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "check/HostCheck.h"

namespace tarnel::test {
namespace {

std::string rowOf(const HostCheck& check) {
  return "| " + std::to_string(check.number) + " | " + std::string(check.title) + " |";
}

std::vector<std::string> documentedRows() {
  std::ifstream document(TARNEL_DOCS_SOURCE_DIR "/check-host.md");
  std::vector<std::string> rows;
  for (std::string line; std::getline(document, line);) {
    const bool isRow =
        line.starts_with("| ") && line.size() > 2 && line[2] >= '1' && line[2] <= '9';
    if (isRow) rows.push_back(line);
  }
  return rows;
}

TEST(CheckHostDocument, listsEveryCheckWithItsNumberAndTitle) {
  std::vector<std::string> rows;
  for (const HostCheck& check : hostChecks()) rows.push_back(rowOf(check));
  EXPECT_EQ(documentedRows(), rows);
}

TEST(HostChecks, areAtLeastFortyWithRisingNumbersAndTitlesOfTheirOwn) {
  EXPECT_GE(hostChecks().size(), 40U);
  int last = 100;
  std::set<std::string_view> titles;
  for (const HostCheck& check : hostChecks()) {
    EXPECT_GT(check.number, last);
    EXPECT_LT(check.number, 1'000);
    EXPECT_TRUE(titles.insert(check.title).second) << check.title;
    last = check.number;
  }
}

}  // namespace
}  // namespace tarnel::test
