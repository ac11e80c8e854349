// Reads a whole tree from a host in one stream: a line for each entry, then the totals.
//   read-tree SOCKET LOCATION      for example: read-tree /tmp/s me/Docs
// Exits with 1 when an entry or the stream failed.
//
// It only prints the paths. A reader that makes files of them has to refuse absolute ones, "..",
// NUL and a path below a file, and must not follow links of its own folder.
#include <cstdint>
#include <iostream>
#include <string>
#include <variant>

#include "control/ControlClient.h"
#include "control/Printable.h"
#include "control/TreeRecord.h"

namespace tarnel::examples {

int fail(const std::string& why) {
  std::cerr << "read-tree: " << printable(why) << std::endl;
  return 1;
}

class TreePrinter {
 public:
  void take(const TreeHeader& header) {
    ++entries;
    const bool isDirectory = header.kind == TreeHeader::Kind::dir;
    std::cout << printable(header.relpath) << (isDirectory ? "/" : "") << "\n";
    if (header.error) takeFailure(header.relpath, *header.error);
    current = header.relpath;
  }
  void take(const TreeBytes& piece) { bytes += piece.bytes.size(); }
  void take(const FileFailed& failure) { takeFailure(current, failure.message); }

  [[nodiscard]] int finish() const {
    std::cout << entries << " entries, " << bytes << " bytes, " << failures << " failed\n";
    return failures == 0 ? 0 : 1;
  }

 private:
  void takeFailure(const std::string& relpath, const std::string& message) {
    ++failures;
    (void)fail(relpath + ": " + message);
  }

  std::string current;  // the entry that bytes and failures belong to
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;
  std::uint64_t failures = 0;
};

int readTree(ControlClient& client, const std::string& location) {
  const auto text = [](const auto& error) { return description(error); };
  const auto sent = client.sendRaw({.op = ControlOp::readTreeStream, .name = location});
  if (!sent) return fail(std::visit(text, sent.error()));
  const auto refusal = client.streamRefusal();
  if (!refusal) return fail(std::visit(text, refusal.error()));
  if (*refusal) return fail((*refusal)->message.value_or("this host streams no trees"));
  TreePrinter printer;
  while (true) {
    auto frame = client.readFrame();
    if (!frame) return fail(description(frame.error()));
    const auto meaning = TreeFrame::of(frame->tag, std::move(frame->payload));
    if (!meaning) return fail("a frame that means nothing in a tree stream");
    if (const auto* error = std::get_if<TreeError>(&meaning->content)) return fail(error->message);
    if (std::holds_alternative<TreeEof>(meaning->content)) return printer.finish();
    std::visit([&](const auto& record) { printer.take(record); },
               std::get<TreeRecord>(meaning->content).content);
  }
}

int run(int argc, char** argv) {
  if (argc != 3) return fail("usage: read-tree SOCKET LOCATION");
  auto client = ControlClient::connect(argv[1]);
  if (!client) return fail(description(client.error()));
  client->setDeadline(30);  // seconds of silence
  const int status = readTree(*client, argv[2]);
  client->close();
  return status;
}

}  // namespace tarnel::examples

int main(int argc, char** argv) { return tarnel::examples::run(argc, argv); }
