// The node of the signals and the host's record through which it works.
#include <fmt/format.h>

#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/node_answer.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using comm::datalayer::Variant;
using core::FctResult;

/// What the functions in the host's record were called with, and what they answer; one check to a process.
Texts g_calls;
std::uint32_t g_result = 0x00100000;

void note(const std::string& function, const void* context, unsigned int signalId) {
  g_calls.push_back(fmt::format("{}({}, {})", function, context == nullptr ? "null" : "a context", signalId));
}

/// A started component whose record leads to functions that note their calls.
class NodeSubject : public Subject {
 public:
  explicit NodeSubject(const Bundle& bundle) : Subject(bundle) {
    start();
    host.sysIf.context = &host;
    host.sysIf.getSignal = [](void* context, unsigned int signalId, bool& value) {
      note("getSignal", context, signalId);
      value = true;
      return static_cast<FctResult>(g_result);
    };
    host.sysIf.setSignal = [](void* context, unsigned int signalId) {
      note("setSignal", context, signalId);
      return static_cast<FctResult>(g_result);
    };
    host.sysIf.resetSignal = [](void* context, unsigned int signalId) {
      note("resetSignal", context, signalId);
      return static_cast<FctResult>(g_result);
    };
  }
};

/// What a client may do with a signal.
struct Request {
  const char* name;
  const char* function;  ///< that it calls
  NodeAnswer (*make)(comm::datalayer::IProviderNode& node, const std::string& address);
  const char* failure;  ///< begins the text of a failure
};

template <bool VALUE>
NodeAnswer writeValue(comm::datalayer::IProviderNode& node, const std::string& address) {
  const Variant data(VALUE);
  return write(node, address, &data);
}

constexpr Request REQUESTS[] = {
    {"read", "getSignal", read, "Can not get signalId: "},
    {"write-true", "setSignal", writeValue<true>, "Can not set signalId: "},
    {"write-false", "resetSignal", writeValue<false>, "Can not reset signalId: "},
};

const std::string ADDRESS = SIGNALS_FOLDER + "/42";

NodeAnswer answerOf(const Subject& subject, const Request& request, const std::string& address = ADDRESS) {
  return request.make(nodeOf(subject, SIGNAL_NODE), address);
}

void usesRecord(const Bundle& bundle, const Request& request) {
  const NodeSubject subject(bundle);
  const auto answer = answerOf(subject, request);
  expectEqual("result", answer.result, comm::datalayer::DL_OK);
  expectEqual("calls through the record", g_calls, Texts{fmt::format("{}(null, 42)", request.function)});
}

void passesAnyNumber(const Bundle& bundle, const Request& request) {
  const NodeSubject subject(bundle);
  (void)answerOf(subject, request, SIGNALS_FOLDER + "/4294967295");
  expectEqual("calls through the record", g_calls, Texts{fmt::format("{}(null, 4294967295)", request.function)});
}

void functionMissing(const Bundle& bundle, const Request& request) {
  NodeSubject subject(bundle);
  subject.host.sysIf.getSignal = nullptr;
  subject.host.sysIf.setSignal = nullptr;
  subject.host.sysIf.resetSignal = nullptr;
  expectEqual(
      "answer", errorOf(answerOf(subject, request)),
      fmt::format("8001000A 090F2040 0C560270 motionSysIF.{}==nullptr ,DLResult: DL_INVALID_HANDLE", request.function));
}

void functionFails(const Bundle& bundle, const Request& request, std::uint32_t code, const std::string& detail) {
  const NodeSubject subject(bundle);
  g_result = code;
  expectEqual("answer", errorOf(answerOf(subject, request)),
              fmt::format("8001000A 090F2040 {} {}{} ,DLResult: DL_INVALID_HANDLE", detail, request.failure, ADDRESS));
}

void invalidSignal(const Bundle& bundle, const Request& request) {
  functionFails(bundle, request, 0xF010000C, "0C570101");
}
void otherFailure(const Bundle& bundle, const Request& request) {
  functionFails(bundle, request, 0xF0100001, "0C560270");
}
void notInitialised(const Bundle& bundle, const Request& request) {
  functionFails(bundle, request, 0xF010000E, "0C560270");
}

void otherSuccess(const Bundle& bundle, const Request& request) {
  const NodeSubject subject(bundle);
  g_result = 0x00100001;
  expectEqual("result", answerOf(subject, request).result, comm::datalayer::DL_OK);
}

/// Signal 100 through the component's own functions.
void signalBeyond(const Bundle& bundle, const Request& request) {
  Subject subject(bundle);
  subject.start();
  const auto address = SIGNALS_FOLDER + "/100";
  expectEqual("answer", errorOf(answerOf(subject, request, address)),
              fmt::format("8001000A 090F2040 0C570101 {}{} ,DLResult: DL_INVALID_HANDLE", request.failure, address));
  expectEqual("traces", subject.traces(), Texts{errorOf("signals", "beginAccess", "wrong id 100")});
}

}  // namespace

Checks signalNodeChecks() {
  struct Kind {
    const char* name;
    const char* sentence;
    void (*run)(const Bundle&, const Request&);
  };
  static constexpr Kind KINDS[] = {
      {"uses-record", "calls the function of the host's older record, with a null context", usesRecord},
      {"any-number", "passes any number of 32 bits on", passesAnyNumber},
      {"function-missing", "refuses when the record does not have its function", functionMissing},
      {"invalid-signal", "calls an invalid signal a bad request", invalidSignal},
      {"other-failure", "calls another failure of the function an internal one", otherFailure},
      {"not-initialised", "calls a function that is not available an internal failure", notInitialised},
      {"other-success", "takes every result that is no failure for success", otherSuccess},
      {"signal-100", "refuses signal 100 as a bad request", signalBeyond},
  };
  Checks checks;
  for (const auto& request : REQUESTS) {
    for (const auto& kind : KINDS) {
      checks.push_back({fmt::format("nodes.{}-{}", request.name, kind.name),
                        fmt::format("{} {}", request.name, kind.sentence),
                        [run = kind.run, request](const Bundle& bundle) { run(bundle, request); }});
    }
  }
  return checks;
}

}  // namespace motion::conformance
