// Floors of the data layer.
#include "bench/datalayer_floors.h"

#include <utility>

namespace motion::bench {

using comm::datalayer::Variant;

namespace {

class ConstantNode final : public comm::datalayer::IProviderNode {
 public:
  ConstantNode(Variant value, Variant names, Variant metadata)
      : m_value(std::move(value)), m_names(std::move(names)), m_metadata(std::move(metadata)) {}

  void onCreate(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, nullptr);
  }
  void onRemove(const std::string& /*address*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, nullptr);
  }
  void onBrowse(const std::string& /*address*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, &m_names);
  }
  void onRead(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, &m_value);
  }
  void onWrite(const std::string& /*address*/, const Variant* /*data*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, nullptr);
  }
  void onMetadata(const std::string& /*address*/, const ResponseCallback& callback) override {
    callback(comm::datalayer::DL_OK, &m_metadata);
  }

 private:
  const Variant m_value;
  const Variant m_names;
  const Variant m_metadata;
};

/// Takes the first level off the rest of an address.
std::string_view takeLevel(std::string_view& rest) noexcept {
  const std::size_t slash = rest.find('/');
  const std::string_view level = rest.substr(0, slash);
  rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
  return level;
}

}  // namespace

std::unique_ptr<comm::datalayer::IProviderNode> makeConstantNode(Variant value, Variant names, Variant metadata) {
  return std::make_unique<ConstantNode>(std::move(value), std::move(names), std::move(metadata));
}

void LevelsFloor::add(std::string_view address) {
  for (std::size_t i = 0; !address.empty(); ++i) {
    if (i == m_levels.size()) {
      m_levels.emplace_back();
    }
    m_levels[i].emplace(takeLevel(address));
  }
}

std::size_t LevelsFloor::countKnown(std::string_view address) const {
  std::size_t known = 0;
  for (std::size_t i = 0; !address.empty() && i < m_levels.size(); ++i) {
    known += m_levels[i].contains(takeLevel(address)) ? 1U : 0U;
  }
  return known;
}

}  // namespace motion::bench
