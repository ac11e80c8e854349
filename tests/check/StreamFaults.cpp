#include <functional>

#include "Faults.h"

namespace tarnel::test {
namespace {

using Frames = std::vector<StreamFrame>;

constexpr std::uint8_t dataTag = ControlStreamFrame::data;

// The streams of one location, or of all where it is empty.
Fault changingFrames(ControlOp op, std::string location, std::function<void(Frames&)> change) {
  return [op, location, change](const Exchange& exchange) {
    const bool isMeant = location.empty() || exchange.isAbout(location);
    if (!exchange.is(op) || !isMeant) return rightReply(exchange);
    Frames frames = exchange.frames;
    if (frames.back().tag == ControlStreamFrame::eof) change(frames);
    return replyOf(frames);
  };
}

Fault changingFile(std::function<void(Frames&)> change) {
  return changingFrames(ControlOp::readStream, "", std::move(change));
}
Fault changingTree(std::function<void(Frames&)> change) {
  return changingFrames(ControlOp::readTreeStream, "me/Docs", std::move(change));
}

StreamFrame header(const std::string& json) {
  return {.tag = ControlStreamFrame::header, .payload = json};
}

void addFileFaults(std::vector<FaultCase>& faults) {
  faults.push_back({"an unknown first byte", 801, {}, [](const Exchange& e) {
                      return e.is(ControlOp::readStream) ? HostReply().answer("OK") : rightReply(e);
                    }});
  faults.push_back(
      {"a frame over the limit", 802, {}, [](const Exchange& e) {
         if (!e.is(ControlOp::readStream)) return rightReply(e);
         return HostReply().send(std::string("D\x00\x80\x00\x01", 5) + "bytes").hangUp();
       }});
  faults.push_back({"a hang-up in the place of an end", 802, {}, [](const Exchange& e) {
                      if (!e.is(ControlOp::readStream)) return rightReply(e);
                      Frames frames = e.frames;
                      frames.pop_back();
                      return replyOf(frames).hangUp();
                    }});
  faults.push_back({"a header in a file's stream", 803, {}, changingFile([](Frames& frames) {
                      frames.insert(frames.begin(), header("{}"));
                    })});
  faults.push_back({"a failure behind all bytes", 804, {}, changingFile([](Frames& frames) {
                      frames.back() = {.tag = ControlStreamFrame::error, .payload = "done"};
                    })});
  faults.push_back({"an end with a payload", 805, {}, changingFile([](Frames& frames) {
                      frames.back().payload = "end";
                    })});
  faults.push_back({"bytes behind the end", 806, {}, changingFile([](Frames& frames) {
                      frames.push_back({.tag = dataTag, .payload = "more"});
                    })});
  faults.push_back({"a stream that lacks bytes", 808, {}, changingFile([](Frames& frames) {
                      if (frames.front().payload.size() > 3)
                        frames.front().payload.resize(frames.front().payload.size() / 2);
                    })});
  faults.push_back({"data frames of any length",
                    815,
                    {},
                    changingFrames(ControlOp::readStream, "me/Docs/big", [](Frames& frames) {
                      frames[0].payload += frames[1].payload;
                      frames.erase(frames.begin() + 1);
                    })});
  faults.push_back({"the whole file for a range", 816, {}, [](const Exchange& e) {
                      if (!e.is(ControlOp::readStream) || !e.request->length) return rightReply(e);
                      return replyOf(
                          {{.tag = dataTag, .payload = "the whole file"}, e.frames.back()});
                    }});
  faults.push_back({"a line for a stream that cannot start", 810, {811}, [](const Exchange& e) {
                      const bool fails = e.is(ControlOp::readStream) &&
                                         e.frames.back().tag == ControlStreamFrame::error;
                      if (!fails) return rightReply(e);
                      return replyOf(ControlResponse::error(e.frames.back().payload));
                    }});
}

void addTreeFaults(std::vector<FaultCase>& faults) {
  faults.push_back(
      {"names in a tree in another order", 835, {829}, changingTree([](Frames& frames) {
         const StreamFrame last = header(R"({"relpath":"z","kind":"dir","mode":0,"size":0})");
         const StreamFrame first = header(R"({"relpath":"none","kind":"dir","mode":0,"size":0})");
         frames = {last, first, frames.back()};
       })});
  faults.push_back({"headers without a size", 821, {}, changingTree([](Frames& frames) {
                      frames.front() = header(R"({"relpath":"a","kind":"file","mode":420})");
                    })});
  faults.push_back({"bytes before the first header", 823, {}, changingTree([](Frames& frames) {
                      frames.insert(frames.begin(), {.tag = dataTag, .payload = "early"});
                    })});
  faults.push_back({"more bytes than the header says", 824, {829}, changingTree([](Frames& frames) {
                      Frames more = {
                          header(R"({"relpath":"!new","kind":"file","mode":420,"size":1})"),
                          {.tag = dataTag, .payload = "two"}};
                      frames.insert(frames.begin(), more.begin(), more.end());
                    })});
  faults.push_back({"an absolute path in a tree", 825, {827}, changingTree([](Frames& frames) {
                      frames.insert(
                          frames.begin(),
                          header(R"({"relpath":"\/etc\/x","kind":"dir","mode":0,"size":0})"));
                    })});
  faults.push_back({"a path out of the tree", 825, {827}, changingTree([](Frames& frames) {
                      frames.insert(
                          frames.begin(),
                          header(R"({"relpath":"..\/x","kind":"dir","mode":0,"size":0})"));
                    })});
  faults.push_back({"a record for the root", 825, {829}, changingTree([](Frames& frames) {
                      frames.insert(frames.begin(),
                                    header(R"({"relpath":"","kind":"dir","mode":0,"size":0})"));
                    })});
  faults.push_back({"an entry twice", 826, {}, changingTree([](Frames& frames) {
                      Frames last = {frames.back()};
                      do {
                        frames.pop_back();
                        last.insert(last.begin(), frames.back());
                      } while (frames.back().tag != ControlStreamFrame::header);
                      frames.insert(frames.end(), last.begin() + 1, last.end() - 1);
                      frames.insert(frames.end(), last.begin(), last.end());
                    })});
  faults.push_back({"contents before their folder", 827, {}, changingTree([](Frames& frames) {
                      frames.insert(
                          frames.begin(),
                          header(R"({"relpath":"later\/x","kind":"dir","mode":0,"size":0})"));
                    })});
  faults.push_back({"noise in a tree", 828, {}, changingTree([](Frames& frames) {
                      frames.insert(
                          frames.begin(),
                          header(R"({"relpath":".DS_Store","kind":"file","mode":420,"size":0})"));
                    })});
  faults.push_back({"a tree without one of its files", 829, {}, changingTree([](Frames& frames) {
                      std::erase_if(frames, [](const StreamFrame& frame) {
                        return frame.payload.find("\"relpath\":\"empty\"") != std::string::npos;
                      });
                    })});
  faults.push_back({"the tree of a file under another name",
                    831,
                    {},
                    changingFrames(ControlOp::readTreeStream, "me/Docs/a.txt", [](Frames& frames) {
                      frames.front() =
                          header(R"({"relpath":".","kind":"file","mode":420,"size":5000})");
                    })});
}

}  // namespace

std::vector<FaultCase> streamFaults() {
  std::vector<FaultCase> faults;
  addFileFaults(faults);
  addTreeFaults(faults);
  return faults;
}

}  // namespace tarnel::test
