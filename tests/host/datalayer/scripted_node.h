// Nodes whose behaviour a test decides, and lists of scopes.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "comm/datalayer/i_provider_node.h"
#include "schemas/datalayer/metadata_generated.h"
#include "schemas/datalayer/scopes_generated.h"

namespace motion::host::test {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;

/// What came in, and the way to answer it.
struct NodeCall {
  std::string_view operation;
  const std::string& address;
  const Variant* data;
  const comm::datalayer::IProviderNode::ResponseCallback& answer;
};

inline Variant metadataWith(const std::string& description) {
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(comm::datalayer::CreateMetadataDirect(builder, 3, 0, description.c_str()));
  return Variant::fromFlatBuffer(builder.GetBufferSpan());
}

/// Says for each operation its name and the address, unless a test has another script.
class ScriptedNode final : public comm::datalayer::IProviderNode {
 public:
  using Script = std::function<void(const NodeCall& call)>;

  explicit ScriptedNode(Script script = sayWhatWasAsked) : m_script(std::move(script)) {}

  [[nodiscard]] int calls() const noexcept { return m_calls; }

  static void sayWhatWasAsked(const NodeCall& call) {
    const std::string text = std::string(call.operation) + " " + call.address;
    if (call.operation == "browse") {
      const Variant names(Variant::Strings{"listed"});
      call.answer(comm::datalayer::DL_OK, &names);
    } else {
      const Variant value = call.operation == "metadata" ? metadataWith(text) : Variant(text);
      call.answer(comm::datalayer::DL_OK, &value);
    }
  }

  void onCreate(const std::string& address, const Variant* data, const ResponseCallback& callback) override {
    play({"create", address, data, callback});
  }
  void onRemove(const std::string& address, const ResponseCallback& callback) override {
    play({"remove", address, nullptr, callback});
  }
  void onBrowse(const std::string& address, const ResponseCallback& callback) override {
    play({"browse", address, nullptr, callback});
  }
  void onRead(const std::string& address, const Variant* data, const ResponseCallback& callback) override {
    play({"read", address, data, callback});
  }
  void onWrite(const std::string& address, const Variant* data, const ResponseCallback& callback) override {
    play({"write", address, data, callback});
  }
  void onMetadata(const std::string& address, const ResponseCallback& callback) override {
    play({"metadata", address, nullptr, callback});
  }

 private:
  void play(const NodeCall& call) {
    ++m_calls;
    m_script(call);
  }

  Script m_script;
  std::atomic<int> m_calls{0};
};

struct TestScope {
  std::string identifier;
  std::vector<std::string> r;
  std::vector<std::string> rw;
  std::vector<std::string> x;
  std::vector<std::string> rwx;
};

inline Variant listOfScopes(const std::vector<TestScope>& scopes) {
  flatbuffers::FlatBufferBuilder builder;
  std::vector<flatbuffers::Offset<comm::datalayer::Scope>> offsets;
  for (const TestScope& scope : scopes) {
    offsets.push_back(
        comm::datalayer::CreateScope(builder, builder.CreateString(scope.identifier), 0, 0,
                                     builder.CreateVectorOfStrings(scope.r), builder.CreateVectorOfStrings(scope.rw),
                                     builder.CreateVectorOfStrings(scope.x), builder.CreateVectorOfStrings(scope.rwx)));
  }
  builder.Finish(comm::datalayer::CreateScopesDirect(builder, &offsets));
  return Variant::fromFlatBuffer(builder.GetBufferSpan());
}

}  // namespace motion::host::test
