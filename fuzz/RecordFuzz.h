// The property of a record's coders: what was decoded is encoded, and that decodes to an equal
// record with the same encoding.
#pragma once

#include "Fuzz.h"
#include "control/ControlWire.h"

namespace tarnel::fuzz {

template <class Record>
void decodeEncodeDecode(std::string_view line) {
  const auto first = ControlWire::decode<Record>(line);
  if (!first) return;
  auto frame = ControlWire::encode(*first);
  check(frame.has_value(), "what was decoded can be encoded");
  check(frame->find('\n') == frame->size() - 1, "a frame ends with its only line feed");
  frame->pop_back();
  const auto second = ControlWire::decode<Record>(*frame);
  check(second.has_value(), "what was encoded can be decoded");
  check(*first == *second, "what was encoded decodes to an equal record");
  check(ControlWire::encode(*second) == *frame + "\n", "the encoding of equal records is the same");
}

}  // namespace tarnel::fuzz
