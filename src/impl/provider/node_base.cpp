// The answers of a node to what it does not offer.
#include "impl/provider/node_base.h"

#include <utility>

#include "impl/diagnosis_codes.h"
#include "impl/provider/node_answer.h"
#include "impl/provider/provider_mgr.h"

namespace motion::kavo {

using comm::datalayer::Variant;

namespace {

void answerNotImplemented(const NodeBase::ResponseCallback& callback) noexcept {
  answerOnce(callback, [](const NodeBase::ResponseCallback& answer) {
    ProviderHelper::sendDlErrorResponse(answer, comm::datalayer::DL_UNSUPPORTED, diagnosis::MAIN_NODE_ERROR,
                                        diagnosis::DETAIL_NOT_IMPLEMENTED, "%s", "not implemented");
  });
}

}  // namespace

NodeBase::NodeBase(MetaDataInfo info, const ProviderMgr& manager) : m_info(std::move(info)), m_manager(manager) {}

const core::MotionSysIfT& NodeBase::getMotionSysIF() const noexcept {
  return m_manager.getMotionSysIF();
}

void NodeBase::onCreate(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

void NodeBase::onRemove(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

void NodeBase::onBrowse(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

void NodeBase::onRead(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

void NodeBase::onWrite(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

void NodeBase::onMetadata(const std::string& /*address*/, const ResponseCallback& callback) noexcept {
  answerNotImplemented(callback);
}

}  // namespace motion::kavo
