// Applying engine commands to the model tree, printing it and comparing two.
#include "Rib/EngineModel.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <tuple>

#include "Orb/Text.h"

namespace Rib {

bool replacesValues(std::string_view commandName) noexcept {
  return std::find(replacingCommands.begin(), replacingCommands.end(), commandName) !=
         replacingCommands.end();
}

namespace {

int kindRank(PathElement::Kind kind) {
  switch (kind) {
    case PathElement::Kind::pathId:
      return 0;
    case PathElement::Kind::u32Key:
      return 1;
    case PathElement::Kind::stringKey:
      return 2;
  }
  return 3;
}

// Spelled as in the command line, so a node reads like the path that made it.
std::string elementText(PathElement const& e) {
  std::string out = std::to_string(e.tag);
  switch (e.kind) {
    case PathElement::Kind::pathId:
      break;
    case PathElement::Kind::u32Key:
      out += '=' + std::to_string(e.number);
      break;
    case PathElement::Kind::stringKey:
      out += '=' + Orb::quote(e.text.view());
      break;
  }
  return out;
}

bool isWithin(std::vector<PathElement> const& path, std::vector<PathElement> const& node) {
  return node.size() >= path.size() && std::equal(path.begin(), path.end(), node.begin());
}

}  // namespace

bool EngineModel::elementLess(PathElement const& a, PathElement const& b) noexcept {
  // The rank of the kind sorts path ids first, and the number and text
  // settle what the rank leaves open, so the order agrees with ==.
  bool const aKey = a.kind != PathElement::Kind::pathId;
  bool const bKey = b.kind != PathElement::Kind::pathId;
  return std::forward_as_tuple(aKey, a.tag, kindRank(a.kind), a.number, a.text) <
         std::forward_as_tuple(bKey, b.tag, kindRank(b.kind), b.number, b.text);
}

bool EngineModel::PathLess::operator()(std::vector<PathElement> const& a,
                                       std::vector<PathElement> const& b) const noexcept {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), elementLess);
}

void EngineModel::execute(CogOp const& op) {
  pending_.push_back(RecordedCommand::of(op));
}

void EngineModel::commit(CommitKind /*kind*/) {
  // Both kinds end the transaction; the synchronous one only makes the
  // library wait, which a model never has to.
  for (RecordedCommand const& command : pending_)
    run(command);
  pending_.clear();
  ++commits_;
}

void EngineModel::apply(RecordedCommand const& record) {
  switch (record.kind) {
    case RecordedCommand::Kind::command:
      pending_.push_back(record);
      return;
    case RecordedCommand::Kind::commit:
      commit(CommitKind::transaction);
      return;
    case RecordedCommand::Kind::syncCommit:
      commit(CommitKind::synchronous);
      return;
  }
}

void EngineModel::run(RecordedCommand const& command) {
  std::vector<PathElement> const& path = command.path;
  if (command.isDelete) {
    // The node goes with everything below it; its values, if the command
    // carries any, mean nothing. A node that is not there leaves nothing to
    // do, as the library relies on when it deletes before it writes.
    auto first = nodes_.lower_bound(path);
    auto last = first;
    while (last != nodes_.end() && isWithin(path, last->first))
      ++last;
    nodes_.erase(first, last);
    forgetEmptyAncestors(path);
    return;
  }
  // Writing a node brings every node above it into being, bare: the engine
  // creates the containers a path runs through.
  for (std::size_t depth = 1; depth < path.size(); ++depth)
    nodes_.try_emplace(std::vector<PathElement>(path.begin(), path.begin() + depth));
  Node& node = nodes_[path];
  if (replacesValues(command.name.view())) node.values.clear();
  // Each value overwrites the one under its tag and leaves the others be; a
  // reset returns its tag to the default, which the model shows as absent.
  for (TaggedValue const& v : command.values) {
    if (std::holds_alternative<Reset>(v.data)) {
      node.values.erase(v.tag);
    } else {
      node.values.insert_or_assign(v.tag, v.data);
    }
  }
  node.written = true;
  node.writer = command.name;
}

void EngineModel::forgetEmptyAncestors(std::vector<PathElement> const& path) {
  // Only a delete empties a node, and only the nodes on its path can have
  // lost their last child. A node only created as an ancestor has no values,
  // so nothing below it means nothing in it. The walk stops at the first node
  // that stays: everything above it still holds it.
  for (std::size_t depth = path.size(); depth-- > 1;) {
    auto it = nodes_.find(std::vector<PathElement>(path.begin(), path.begin() + depth));
    if (it == nodes_.end() || it->second.written) return;
    auto next = std::next(it);
    if (next != nodes_.end() && isWithin(it->first, next->first)) return;
    nodes_.erase(it);
  }
}

std::size_t EngineModel::nodes() const noexcept {
  return nodes_.size() - nodes_.count({});
}

void EngineModel::clear() noexcept {
  nodes_.clear();
  pending_.clear();
  commits_ = 0;
}

std::string EngineModel::lineOf(std::vector<PathElement> const& path, Node const& node) {
  std::string line;
  if (path.empty()) {
    line = "[]";
  } else {
    line.assign(2 * (path.size() - 1), ' ');
    line += elementText(path.back());
  }
  for (auto const& [tag, data] : node.values) {
    line += ' ';
    line += valueText(TaggedValue{tag, data});
  }
  if (node.written) {
    line += " (";
    line += node.writer.str();
    line += ')';
  }
  return line;
}

std::string EngineModel::stateText() const {
  std::string out;
  for (auto const& [path, node] : nodes_) {
    out += lineOf(path, node);
    out += '\n';
  }
  return out;
}

template <typename Visit>
void EngineModel::walk(EngineModel const& a, EngineModel const& b, Visit visit) {
  PathLess const less;
  auto ia = a.nodes_.begin();
  auto ib = b.nodes_.begin();
  while (ia != a.nodes_.end() || ib != b.nodes_.end()) {
    bool const takeA =
        ib == b.nodes_.end() || (ia != a.nodes_.end() && !less(ib->first, ia->first));
    bool const takeB =
        ia == a.nodes_.end() || (ib != b.nodes_.end() && !less(ia->first, ib->first));
    visit((takeA ? ia : ib)->first, takeA ? &ia->second : nullptr, takeB ? &ib->second : nullptr);
    if (takeA) ++ia;
    if (takeB) ++ib;
  }
}

std::vector<NodeChange> changedNodes(EngineModel const& a, EngineModel const& b) {
  std::vector<NodeChange> out;
  EngineModel::walk(a, b, [&](auto const& path, auto const* na, auto const* nb) {
    if (!na || !nb || *na != *nb) out.push_back({path, na != nullptr, nb != nullptr});
  });
  return out;
}

std::string diff(EngineModel const& a, EngineModel const& b) {
  // Both trees are walked together in their common order, so every line
  // appears where it stands in its state text. Unchanged nodes are held back
  // as the context of what changes below them and shown only then.
  struct Above {
    std::size_t depth;
    std::string line;
    bool shown;
  };
  std::vector<Above> above;
  std::string out;
  EngineModel::walk(a, b, [&](auto const& path, auto const* na, auto const* nb) {
    while (!above.empty() && above.back().depth >= path.size())
      above.pop_back();
    if (na && nb && *na == *nb) {
      above.push_back({path.size(), EngineModel::lineOf(path, *na), false});
      return;
    }
    for (Above& node : above) {
      if (node.shown) continue;
      out += "  " + node.line + '\n';
      node.shown = true;
    }
    if (na) out += "- " + EngineModel::lineOf(path, *na) + '\n';
    if (nb) out += "+ " + EngineModel::lineOf(path, *nb) + '\n';
    above.push_back({path.size(), {}, true});
  });
  return out;
}

std::ostream& operator<<(std::ostream& os, EngineModel const& model) {
  return os << model.stateText();
}

}  // namespace Rib
