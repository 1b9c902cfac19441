// The policy references of a configuration as a Graphviz graph, for the
// people who debug policies: `dot -Tsvg` draws it.
#pragma once

#include <string>

#include "Scenario.h"

namespace Scenario {

/// Route maps (boxes) with an edge to each sub-route-map and dynamic prefix
/// list (ellipses) their sequences name, dynamic prefix lists with an edge to
/// their match maps, and the other parts of the agent that list a policy
/// (notes) with an edge to it. Policies listed in the policy map are filled;
/// names only referred to are dashed.
std::string policyGraph(Inputs const& inputs);

}  // namespace Scenario
