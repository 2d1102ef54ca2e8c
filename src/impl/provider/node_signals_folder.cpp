// The folder of the signal nodes.
#include "impl/provider/node_signals_folder.h"

#include "impl/provider/node_answer.h"

namespace motion::kavo {

namespace {

constexpr std::uint32_t FOLDER_CLASS = 7;

}  // namespace

NodeSignalsFolder::NodeSignalsFolder(const ProviderMgr& manager)
    : NodeBase({"Kavo signals", "", FOLDER_CLASS, 0}, manager) {}

void NodeSignalsFolder::onMetadata(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerOnce(callback,
             [this](const ResponseCallback& answer) { ProviderHelper::createMetaData("", info(), answer, "", true); });
}

}  // namespace motion::kavo
