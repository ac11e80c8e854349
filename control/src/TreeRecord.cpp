#include "control/TreeRecord.h"

#include <utility>

#include "control/JsonReader.h"
#include "control/JsonWriter.h"
#include "control/Text.h"

namespace tarnel {
namespace {

Bytes frameOf(const TreeHeader& header) {
  JsonWriter json;
  json.value(header);
  return ControlStreamFrame::encode(ControlStreamFrame::header, json.finish().value_or(""));
}

Bytes frameOf(const TreeBytes& piece) {
  return ControlStreamFrame::encode(ControlStreamFrame::data, piece.bytes);
}

Bytes frameOf(const FileFailed& failure) {
  return ControlStreamFrame::encode(ControlStreamFrame::fileError, failure.message);
}

}  // namespace

bool operator==(const FileFailed& a, const FileFailed& b) {
  return textEqual(a.message, b.message);
}

bool operator==(const TreeError& a, const TreeError& b) { return textEqual(a.message, b.message); }

TreeRecord TreeRecord::entry(TreeHeader header) { return {std::move(header)}; }

TreeRecord TreeRecord::bytes(Bytes bytes) { return {TreeBytes{std::move(bytes)}}; }

TreeRecord TreeRecord::fileFailed(std::string message) { return {FileFailed{std::move(message)}}; }

Bytes TreeRecord::frame() const {
  return std::visit([](const auto& record) { return frameOf(record); }, content);
}

std::optional<TreeFrame> TreeFrame::of(std::uint8_t tag, Bytes payload) {
  switch (tag) {
    case ControlStreamFrame::data:
      return TreeFrame{TreeRecord::bytes(std::move(payload))};
    case ControlStreamFrame::eof:
      return TreeFrame{TreeEof{}};
    case ControlStreamFrame::fileError:
      return TreeFrame{TreeRecord::fileFailed(repairedUtf8(payload))};
    case ControlStreamFrame::error:
      return TreeFrame{TreeError{repairedUtf8(payload)}};
    case ControlStreamFrame::header: {
      auto header = readJson<TreeHeader>(payload);
      if (!header) return std::nullopt;
      return TreeFrame{TreeRecord::entry(std::move(*header))};
    }
    default:
      return std::nullopt;
  }
}

}  // namespace tarnel
