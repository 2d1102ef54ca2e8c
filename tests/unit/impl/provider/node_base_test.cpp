// What all nodes have in common: the answer to what they do not offer, and the order of their operations.
#include "impl/provider/node_base.h"

#include <stdexcept>
#include <type_traits>

#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;

constexpr const char* NOT_IMPLEMENTED = "not implemented ,DLResult: DL_UNSUPPORTED";
constexpr std::size_t CREATE_SLOT = 2;  // behind the two entries of the destructor
constexpr std::size_t SLOT_END = 8;

class NodeBaseTest : public ProviderTest {
 protected:
  /// Calls the operation at that place with whatever arguments it takes.
  void callOperation(std::size_t slot, const NodeBase::ResponseCallback& callback) {
    const std::string address = "motion/state";
    const bool takesData = slot == CREATE_SLOT || slot == 5 || slot == 6;
    if (takesData) {
      callSlot<void, const std::string*, const Variant*, const NodeBase::ResponseCallback*>(&m_sut, slot, &address, nullptr,
                                                                                            &callback);
    } else {
      callSlot<void, const std::string*, const NodeBase::ResponseCallback*>(&m_sut, slot, &address, &callback);
    }
  }

  std::unique_ptr<ProviderMgr> m_manager = makeManager();
  NodeBase m_sut{{"a description", "an url", 3, 1}, *m_manager};
};

TEST_F(NodeBaseTest, SaysWhatItWasGiven) {
  EXPECT_EQ(m_sut.getDescription(), "a description");
  EXPECT_EQ(m_sut.getDescriptionUrl(), "an url");
  EXPECT_EQ(&m_sut.getMotionSysIF(), &m_host.sysIf);
}

TEST_F(NodeBaseTest, IsANodeOfTheDataLayer) {
  EXPECT_TRUE((std::is_base_of_v<IProviderNode, NodeBase>));
  EXPECT_TRUE(std::has_virtual_destructor_v<NodeBase>);
}

TEST_F(NodeBaseTest, KeepsItsDescriptionItsCodesAndTheManagerInThisOrder) {
  const auto* const begin = reinterpret_cast<const std::byte*>(&m_sut);
  const std::byte* const description = begin + sizeof(void*);
  const std::byte* const codes = description + 2 * sizeof(std::string);
  EXPECT_EQ(reinterpret_cast<const std::byte*>(&m_sut.getDescription()), description);
  EXPECT_EQ(reinterpret_cast<const std::byte*>(&m_sut.getDescriptionUrl()), description + sizeof(std::string));
  EXPECT_EQ(reinterpret_cast<const std::uint32_t*>(codes)[0], 3U);
  EXPECT_EQ(reinterpret_cast<const std::uint32_t*>(codes)[1], 1U);
  EXPECT_EQ(*reinterpret_cast<const ProviderMgr* const*>(codes + 8), m_manager.get());
}

TEST_F(NodeBaseTest, RefusesEveryOperation) {
  const Variant data(true);
  Answers answers;
  m_sut.onCreate("an/address", &data, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onRemove("an/address", answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onBrowse("an/address", answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onRead("an/address", nullptr, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onWrite("an/address", &data, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onMetadata("an/address", answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
}

TEST_F(NodeBaseTest, RefusesEveryOperationThroughItsSlot) {
  for (std::size_t slot = CREATE_SLOT; slot < SLOT_END; ++slot) {
    Answers answers;
    callOperation(slot, answers.callback());
    SCOPED_TRACE(slot);
    expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  }
}

/// A node that says which of its operations was called.
class TellingNode : public NodeBase {
 public:
  using NodeBase::NodeBase;
  void onCreate(const std::string& /*a*/, const Variant* /*d*/, const ResponseCallback& /*c*/) noexcept override {
    m_called = "onCreate";
  }
  void onRemove(const std::string& /*a*/, const ResponseCallback& /*c*/) noexcept override { m_called = "onRemove"; }
  void onBrowse(const std::string& /*a*/, const ResponseCallback& /*c*/) noexcept override { m_called = "onBrowse"; }
  void onRead(const std::string& /*a*/, const Variant* /*d*/, const ResponseCallback& /*c*/) noexcept override {
    m_called = "onRead";
  }
  void onWrite(const std::string& /*a*/, const Variant* /*d*/, const ResponseCallback& /*c*/) noexcept override {
    m_called = "onWrite";
  }
  void onMetadata(const std::string& /*a*/, const ResponseCallback& /*c*/) noexcept override { m_called = "onMetadata"; }

  const char* m_called = "";
};

TEST_F(NodeBaseTest, HasItsOperationsInAFixedOrder) {
  TellingNode sut({}, *m_manager);
  const std::string address;
  const NodeBase::ResponseCallback callback;
  const char* const names[] = {"onCreate", "onRemove", "onBrowse", "onRead", "onWrite", "onMetadata"};
  for (std::size_t i = 0; i < std::size(names); ++i) {
    callSlot<void, const std::string*, const void*, const void*>(&sut, CREATE_SLOT + i, &address, &callback, &callback);
    EXPECT_STREQ(sut.m_called, names[i]);
  }
}

TEST_F(NodeBaseTest, IsDeletedThroughItsSecondSlot) {
  auto* const sut = new NodeBase({"a description that takes memory of its own", "", 3, 1}, *m_manager);
  const long before = test::liveAllocations();
  callSlot<void>(sut, 1);
  EXPECT_EQ(test::liveAllocations(), before - 2) << "the node and its description";
}

TEST_F(NodeBaseTest, AnswersOnceWhateverCannotBeAllocated) {
  for (std::size_t slot = CREATE_SLOT; slot < SLOT_END; ++slot) {
    Answers answers;
    const int failures = withEachAllocationFailing([&] { callOperation(slot, answers.callback()); },
                                                   [&](bool hasFailed) {
                                                     const Answer answer = answers.only();
                                                     EXPECT_EQ(answer.result.code(), hasFailed ? 0x80010003U : 0x80010002U);
                                                     EXPECT_EQ(answer.hasData, !hasFailed);
                                                     answers.clear();
                                                   });
    EXPECT_GT(failures, 0) << slot;
  }
}

TEST_F(NodeBaseTest, LetsNoExceptionOfTheCallbackOut) {
  for (std::size_t slot = CREATE_SLOT; slot < SLOT_END; ++slot) {
    int calls = 0;
    callOperation(slot, [&calls](DlResult /*result*/, const Variant* /*data*/) {
      ++calls;
      throw std::runtime_error("no");
    });
    EXPECT_EQ(calls, 1) << slot;
    callOperation(slot, nullptr);
  }
}

}  // namespace
}  // namespace motion::kavo
