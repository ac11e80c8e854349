// The faults that a host can have, each with the checks that have to tell of it.
#pragma once

#include <cctype>
#include <ostream>
#include <string>
#include <vector>

#include "FaultyHost.h"

namespace tarnel::test {

struct FaultCase {
  std::string name;
  int meant;                   // the check that is there for this fault
  std::vector<int> following;  // others that fail because of it
  Fault fault;

  // In letters, digits and underscores, as names of tests are.
  [[nodiscard]] std::string testName() const {
    std::string text = std::to_string(meant) + "_";
    for (const char c : name) text += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return text;
  }
  friend std::ostream& operator<<(std::ostream& out, const FaultCase& shown) {
    return out << shown.testName();
  }
};

[[nodiscard]] std::vector<FaultCase> answerFaults();   // lines, spelling, refusals
[[nodiscard]] std::vector<FaultCase> contentFaults();  // shares, stat, list, read
[[nodiscard]] std::vector<FaultCase> streamFaults();
// The host says nothing where it should: found only once a time limit has passed.
[[nodiscard]] std::vector<FaultCase> silentFaults();

}  // namespace tarnel::test
