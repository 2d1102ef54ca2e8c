// The rights to motion nodes that can be granted to clients of the data layer.
#include "impl/provider/access_scopes.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "schemas/datalayer/scopes_generated.h"

namespace motion::kavo {

namespace {

using comm::datalayer::ScopesT;
using comm::datalayer::ScopeT;

std::unique_ptr<ScopeT> makeScope(const char* identifier, const char* name, const char* description) {
  auto scope = std::make_unique<ScopeT>();
  scope->identifier = identifier;
  scope->name = name;
  scope->description = description;
  return scope;
}

}  // namespace

comm::datalayer::Variant makeAccessScopes() {
  ScopesT scopes;
  auto view =
      makeScope("motion.view", "Motion view", "Read access to motion related state and configuration datalayer nodes");
  view->permissionsR = {"motion/state/**"};
  auto operate = makeScope("motion.operate", "Motion operate",
                           "Read access to motion related state and configuration datalayer nodes, execute motion commands "
                           "with current configuration");
  operate->permissionsR = {"motion/state/**"};
  operate->permissionsRW = {"motion/state/functions/kavo/signals/*"};
  auto manage = makeScope("motion.manage", "Motion manage",
                          "Full access for motion: Read and write access to all motion related datalayer nodes, execute "
                          "motion commands");
  manage->permissionsRWX = {"motion/**"};
  for (auto* const scope : {&view, &operate, &manage}) {
    scopes.scopes.push_back(std::move(*scope));
  }
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(comm::datalayer::CreateScopes(builder, &scopes));
  return comm::datalayer::Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

}  // namespace motion::kavo
