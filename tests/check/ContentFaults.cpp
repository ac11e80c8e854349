#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "Faults.h"
#include "control/Base64.h"
#include "control/ControlWire.h"

namespace tarnel::test {
namespace {

// The right response, changed.
Fault changing(std::function<void(const ControlRequest&, ControlResponse&)> change) {
  return [change](const Exchange& exchange) {
    if (exchange.isStream() || !exchange.request) return rightReply(exchange);
    ControlResponse response = exchange.response();
    change(*exchange.request, response);
    return replyOf(response);
  };
}

// The right statuses, changed, in `stat` and `list` alike.
Fault changingStats(std::function<void(ControlStat&)> change) {
  return changing([change](const ControlRequest&, ControlResponse& response) {
    if (response.stat) change(*response.stat);
    if (!response.entries) return;
    for (ControlStat& entry : *response.entries) change(entry);
  });
}

Fault changingEntries(std::function<void(std::vector<ControlStat>&)> change) {
  return changing([change](const ControlRequest& request, ControlResponse& response) {
    if (request.limit || !response.entries || response.entries->empty()) return;
    change(*response.entries);
  });
}

Fault changingBase64(std::function<void(const ControlRequest&, std::string&)> change) {
  return changing([change](const ControlRequest& request, ControlResponse& response) {
    if (response.dataBase64) change(request, *response.dataBase64);
  });
}

// Refusals with these words get other ones.
Fault saying(std::string words, std::string others) {
  return changing([words, others](const ControlRequest&, ControlResponse& response) {
    if (response.message == words) response.message = others;
  });
}

// A refusal of one request, whatever the right answer is.
Fault refusingAs(ControlOp op, std::string location, std::string message) {
  return changing(
      [op, location, message](const ControlRequest& request, ControlResponse& response) {
        if (request.op == op && request.name == location)
          response = ControlResponse::error(message);
      });
}

// Listings with one key of every record, and its value, written as something else.
Fault withoutKey(std::string key, std::string instead) {
  return [key, instead](const Exchange& exchange) {
    std::string answer = exchange.answer;
    if (!exchange.is(ControlOp::list)) return rightReply(exchange);
    for (std::size_t at = 0; (at = answer.find(key, at)) != std::string::npos;) {
      const std::size_t end = answer.find_first_of(",}", at);
      answer.replace(at, end - at, instead);
      at += instead.size();
    }
    return HostReply().answer(answer);
  };
}

std::int64_t offsetOf(const ControlRequest& request) { return request.offset.value_or(0); }

void addShareFaults(std::vector<FaultCase>& faults) {
  faults.push_back({"shares with names that are no names",
                    302,
                    {},
                    changing([](const ControlRequest&, ControlResponse& response) {
                      if (response.shares)
                        response.shares->push_back({.name = "..", .isRemote = false});
                    })});
  faults.push_back({"a share that is said to be a file",
                    303,
                    {406},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (response.stat && request.name == "me/Docs") {
                        response.stat->isDirectory = false;
                      }
                    })});
  faults.push_back({"what leads out of a share served",
                    306,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (request.op != ControlOp::stat || response.stat) return;
                      if (!request.name || request.name->find("/..") == std::string::npos) return;
                      response = ControlResponse::ok();
                      response.stat.emplace().isDirectory = true;
                    })});
}

void addStatFaults(std::vector<FaultCase>& faults) {
  faults.push_back({"the whole location as a status's name",
                    403,
                    {701},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (response.stat) response.stat->name = request.name.value_or("");
                    })});
  faults.push_back({"negative sizes in a status",
                    404,
                    {606, 607, 701, 702, 705},
                    changing([](const ControlRequest&, ControlResponse& response) {
                      if (response.stat && !response.stat->isDirectory) response.stat->size = -1;
                    })});
  faults.push_back({"times in seconds", 405, {}, changingStats([](ControlStat& stat) {
                      stat.mtimeMs /= 1'000;
                    })});
  faults.push_back({"modes of another kind", 406, {}, changingStats([](ControlStat& stat) {
                      if (stat.isDirectory) stat.mode = 0100644;
                    })});
  faults.push_back({"refusals that name the location",
                    408,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (response.message == "no such file")
                        *response.message += ": " + request.name.value_or("");
                    })});
}

void addListFaults(std::vector<FaultCase>& faults) {
  faults.push_back({"listings without a kind", 501, {}, withoutKey("\"isDirectory\":", "\"x\":0")});
  faults.push_back({"null in a key that must have a value",
                    501,
                    {},
                    withoutKey("\"owner\":", "\"owner\":null")});
  faults.push_back({"\".\" and \"..\" listed", 502, {}, changingEntries([](auto& entries) {
                      for (const char* const name : {".", ".."}) {
                        entries.push_back(entries.front());
                        entries.back().name = name;
                      }
                    })});
  faults.push_back({"a name listed twice", 503, {}, changingEntries([](auto& entries) {
                      entries.push_back(entries.front());
                    })});
  faults.push_back({"negative sizes listed", 504, {701, 829}, changingEntries([](auto& entries) {
                      for (ControlStat& entry : entries) {
                        if (entry.size == 0 && !entry.isDirectory) entry.size = -1;
                      }
                    })});
  faults.push_back({"an empty folder without a list",
                    505,
                    {},
                    changing([](const ControlRequest&, ControlResponse& response) {
                      if (response.entries && response.entries->empty()) response.entries.reset();
                    })});
  faults.push_back({"names alone answered with records",
                    506,
                    {},
                    changing([](const ControlRequest&, ControlResponse& response) {
                      if (!response.names) return;
                      response.entries.emplace();
                      for (const auto& name : *response.names)
                        response.entries->emplace_back().name = name.name;
                      response.names.reset();
                    })});
  faults.push_back({"the listing's limit not kept",
                    507,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (request.limit != 1 || !response.entries) return;
                      response.entries->push_back(response.entries->front());
                    })});
  faults.push_back({"a negative limit taken for none",
                    507,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (request.limit.value_or(0) >= 0) return;
                      response = ControlResponse::ok();
                      response.entries.emplace();
                    })});
  faults.push_back(
      {"a file's listing called missing", 508, {}, saying("not a directory", "no such file")});
  faults.push_back(
      {"sizes that differ between list and stat", 701, {829}, changingEntries([](auto& entries) {
         for (ControlStat& entry : entries) {
           if (entry.name == "empty") entry.size = 7;
         }
       })});
  faults.push_back({"listings that lack a name now and then",
                    707,
                    {},
                    [count = std::make_shared<std::atomic<int>>(0)](const Exchange& exchange) {
                      const bool isPlain = exchange.is(ControlOp::list) &&
                                           exchange.isAbout("me/Docs") &&
                                           !exchange.request->limit && !exchange.request->namesOnly;
                      if (!isPlain) return rightReply(exchange);
                      ControlResponse response = exchange.response();
                      if (count->fetch_add(1) % 2 == 1) response.entries->pop_back();
                      return replyOf(response);
                    }});
}

void addReadFaults(std::vector<FaultCase>& faults) {
  faults.push_back({"base64 for URLs",
                    602,
                    {601, 604, 611, 702, 703, 704, 705},
                    changingBase64([](const ControlRequest&, std::string& text) {
                      std::replace(text.begin(), text.end(), '+', '-');
                      std::replace(text.begin(), text.end(), '/', '_');
                    })});
  faults.push_back({"base64 with line breaks",
                    602,
                    {601, 604, 611, 702, 703, 704, 705},
                    changingBase64([](const ControlRequest&, std::string& text) {
                      if (text.size() > 76) text.insert(76, "\n");
                    })});
  faults.push_back({"base64 without padding",
                    603,
                    {601, 604, 608, 611, 702, 703, 704, 705},
                    changingBase64([](const ControlRequest&, std::string& text) {
                      while (text.ends_with('=')) text.pop_back();
                    })});
  faults.push_back({"more bytes than were asked for",
                    604,
                    {},
                    changingBase64([](const ControlRequest& request, std::string& text) {
                      if (request.length == 1 && !text.empty()) text = base64::encode("two");
                    })});
  faults.push_back({"a refusal at the end of a file",
                    606,
                    {605, 607, 609, 702, 704, 705},
                    changing([](const ControlRequest&, ControlResponse& response) {
                      if (response.dataBase64 == "")
                        response = ControlResponse::error("end of file");
                    })});
  faults.push_back({"bytes past the end",
                    607,
                    {},
                    changingBase64([](const ControlRequest& request, std::string& text) {
                      if (offsetOf(request) > 1'000'000) text = "AAAA";
                    })});
  faults.push_back({"other bytes at odd offsets",
                    704,
                    {},
                    changingBase64([](const ControlRequest& request, std::string& text) {
                      if (offsetOf(request) % 2 == 1 && text.size() > 8) text.replace(0, 4, "AAAA");
                    })});
  faults.push_back({"a short read presented as the end",
                    702,
                    {608, 705, 808, 830},
                    changingBase64([](const ControlRequest& request, std::string& text) {
                      constexpr std::int64_t end = 3'000;
                      Bytes bytes = base64::decode(text).value_or("");
                      const auto left = std::max<std::int64_t>(0, end - offsetOf(request));
                      if (std::cmp_greater(bytes.size(), left)) {
                        bytes.resize(static_cast<std::size_t>(left));
                      }
                      text = base64::encode(bytes);
                    })});
  faults.push_back(
      {"a folder's read called missing", 612, {}, saying("is a directory", "cannot open")});
  faults.push_back({"a folder's read answered as an empty file",
                    612,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (request.op != ControlOp::read || response.message != "is a directory")
                        return;
                      response.dataBase64 = "";
                    })});
  faults.push_back({"a missing permission called a missing file",
                    614,
                    {},
                    refusingAs(ControlOp::read, "me/Docs/secret", "no such file")});
  faults.push_back({"a negative offset answered",
                    610,
                    {},
                    changing([](const ControlRequest& request, ControlResponse& response) {
                      if (request.op == ControlOp::read && offsetOf(request) < 0) {
                        response = ControlResponse::ok();
                        response.dataBase64 = "";
                      }
                    })});
}

}  // namespace

std::vector<FaultCase> contentFaults() {
  std::vector<FaultCase> faults;
  addShareFaults(faults);
  addStatFaults(faults);
  addListFaults(faults);
  addReadFaults(faults);
  return faults;
}

}  // namespace tarnel::test
