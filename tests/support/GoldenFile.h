// The golden cases: what the platform's own coders and texts answer, one JSON object a line. The
// folder is tests/golden, or the one that the environment variable TARNEL_GOLDEN_DIR names.
//
// Reads these files alone, with code of its own, so that what is tested does not read its own
// cases: flat objects whose strings hold no escapes.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel::test {

class GoldenLine {
 public:
  // Adds a failure to the test when the line is not of the shape above.
  GoldenLine(std::string_view json, std::size_t number);

  [[nodiscard]] bool has(const std::string& key) const { return values.contains(key); }
  [[nodiscard]] const std::string& text(const std::string& key) const;  // a value as it stands
  [[nodiscard]] std::string bytes(const std::string& key) const;        // a base64 text, decoded
  [[nodiscard]] std::vector<std::string> list(const std::string& key) const;  // of base64 texts
  [[nodiscard]] bool flag(const std::string& key) const { return has(key) && text(key) == "true"; }
  [[nodiscard]] std::size_t number() const { return lineNumber; }  // from 1

 private:
  std::map<std::string, std::string> values;  // strings without their quotes
  std::size_t lineNumber;
};

// Adds a failure to the test when the file is missing or holds nothing.
[[nodiscard]] std::vector<GoldenLine> readGolden(const std::string& fileName);

// Bytes for a failure's message: printable ASCII as it is, everything else as \xNN.
[[nodiscard]] std::string readable(std::string_view bytes);

}  // namespace tarnel::test
