// Addresses of the component's nodes and memories in the data layer.
#pragma once

#include <string>

namespace motion::kavo {

inline const std::string kavoBaseNodeUri = "motion/state/functions/kavo";
inline const std::string signalsNodeUri = kavoBaseNodeUri + "/signals/";
inline const std::string rtDataNodeUri = kavoBaseNodeUri + "/rt-data/";
/// Last level of an address that stands for every node of its folder.
inline const std::string WILDCARD = "*";

}  // namespace motion::kavo
