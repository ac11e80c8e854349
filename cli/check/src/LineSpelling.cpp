#include "LineSpelling.h"

#include "control/JsonReader.h"
#include "control/Text.h"

namespace tarnel {

bool hasRawControlCharacter(BytesView line) {
  bool inText = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') {
      inText = !inText;
    } else if (inText && line[i] == '\\') {
      ++i;
    } else if (inText && static_cast<unsigned char>(line[i]) < 0x20) {
      return true;
    }
  }
  return false;
}

bool isNotUtf8(BytesView line) { return !isValidUtf8(line); }

bool hasNullKey(BytesView line) {
  JsonReader json(line);
  std::string_view key;
  if (!json.enterObject()) return false;
  while (json.nextKey(key)) {
    if (json.takeNull()) return true;
    json.skipValue();
  }
  return false;
}

}  // namespace tarnel
