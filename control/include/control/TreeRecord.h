// What a tree stream is made of: what a writer puts into frames, and what a reader makes of them.
//
// A stream is a sequence of entries, each file's bytes behind its entry, and ends with one `eof`
// frame, or with one `error` frame when the walk as a whole fails. A file that cannot be delivered
// is a `fileFailed` record in its place; the walk goes on. Writers make the two last frames with
// ControlStreamFrame::encode. Threads: plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "control/Bytes.h"
#include "control/ControlStreamFrame.h"
#include "control/TreeHeader.h"

namespace tarnel {

// A piece of the file that was announced last.
struct TreeBytes {
  Bytes bytes;

  friend bool operator==(const TreeBytes&, const TreeBytes&) = default;
};

// Why the file that was announced last cannot be delivered.
struct FileFailed {
  std::string message;

  friend bool operator==(const FileFailed& a, const FileFailed& b);
};

struct TreeRecord {
  std::variant<TreeHeader, TreeBytes, FileFailed> content;

  [[nodiscard]] static TreeRecord entry(TreeHeader header);
  [[nodiscard]] static TreeRecord bytes(Bytes bytes);
  [[nodiscard]] static TreeRecord fileFailed(std::string message);

  // The complete frame. A header that cannot be encoded (a text that is not UTF-8) gives a `header`
  // frame without payload, which its reader refuses.
  [[nodiscard]] Bytes frame() const;

  friend bool operator==(const TreeRecord&, const TreeRecord&) = default;
};

// The stream as a whole failed.
struct TreeError {
  std::string message;

  friend bool operator==(const TreeError& a, const TreeError& b);
};

struct TreeEof {
  friend bool operator==(const TreeEof&, const TreeEof&) = default;
};

struct TreeFrame {
  std::variant<TreeRecord, TreeError, TreeEof> content;

  // The meaning of a frame; nullopt for an unknown tag and for a header that does not decode: what
  // then becomes of the stream is the reader's decision. Messages are repaired (repairedUtf8); the
  // payload of an `eof` is ignored.
  [[nodiscard]] static std::optional<TreeFrame> of(std::uint8_t tag, Bytes payload);

  friend bool operator==(const TreeFrame&, const TreeFrame&) = default;
};

}  // namespace tarnel
