// Applying engine commands to the model tree, printing it and comparing two.
#include "Rib/EngineModel.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <set>
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

}  // namespace

bool EngineModel::elementLess(PathElement const& a, PathElement const& b) noexcept {
  // The rank of the kind sorts path ids first, and the number and text
  // settle what the rank leaves open, so the order agrees with ==.
  bool const aKey = a.kind != PathElement::Kind::pathId;
  bool const bKey = b.kind != PathElement::Kind::pathId;
  return std::forward_as_tuple(aKey, a.tag, kindRank(a.kind), a.number, a.text) <
         std::forward_as_tuple(bKey, b.tag, kindRank(b.kind), b.number, b.text);
}

EngineModel::EngineModel(EngineModel const& o)
    : root_(copyOf(*o.root_)), nodes_(o.nodes_), pending_(o.pending_), commits_(o.commits_) {}

EngineModel& EngineModel::operator=(EngineModel const& o) {
  if (this != &o) {
    root_ = copyOf(*o.root_);
    nodes_ = o.nodes_;
    pending_ = o.pending_;
    commits_ = o.commits_;
  }
  return *this;
}

EngineModel::~EngineModel() = default;

std::unique_ptr<EngineModel::Node> EngineModel::copyOf(Node const& node) {
  // Writers' names are interned into this model's own set.
  auto out = std::make_unique<Node>();
  out->values = node.values;
  out->written = node.written;
  out->writer = node.writer.empty() ? std::string_view() : interned(node.writer);
  for (auto const& [element, child] : node.children)
    out->children.emplace_hint(out->children.end(), element, copyOf(*child));
  return out;
}

bool EngineModel::equal(Node const& a, Node const& b) {
  if (!a.sameAs(b) || a.children.size() != b.children.size()) return false;
  auto ib = b.children.begin();
  for (auto const& [element, child] : a.children) {
    if (!(ib->first == element) || !equal(*child, *ib->second)) return false;
    ++ib;
  }
  return true;
}

std::size_t EngineModel::count(Node const& node) {
  std::size_t n = node.children.size();
  for (auto const& [element, child] : node.children)
    n += count(*child);
  return n;
}

EngineModel::Node const* EngineModel::find(std::vector<PathElement> const& path) const {
  Node const* node = root_.get();
  for (PathElement const& e : path) {
    auto it = node->children.find(e);
    if (it == node->children.end()) return nullptr;
    node = it->second.get();
  }
  return node;
}

std::string_view EngineModel::interned(std::string_view name) {
  auto it = writers_.find(name);
  if (it == writers_.end()) it = writers_.emplace(name).first;
  return *it;
}

void EngineModel::execute(CogOp const& op) {
  // Copied, not held: the library may reuse a command's arrays for the
  // next one once this one is executed.
  pending_.push_back(RecordedCommand::of(op));
}

void EngineModel::commit(CommitKind /*kind*/) {
  // Both kinds end the transaction; the synchronous one only makes the
  // library wait, which a model never has to.
  for (RecordedCommand const& record : pending_)
    run(record);
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

std::vector<RecordedCommand> const& EngineModel::pendingCommands() const noexcept {
  return pending_;
}

void EngineModel::run(RecordedCommand const& command) {
  std::size_t const depth = command.path.size();
  if (command.isDelete) {
    // The node goes with everything below it; its values, if the command
    // carries any, mean nothing. A node that is not there leaves nothing to
    // do, as the library relies on when it deletes before it writes.
    if (depth == 0) {
      root_ = std::make_unique<Node>();
      nodes_ = 0;
      return;
    }
    // The nodes above it, so that those it leaves empty can go too.
    std::vector<Node*> above{root_.get()};
    for (std::size_t i = 0; i + 1 < depth; ++i) {
      auto it = above.back()->children.find(command.path[i]);
      if (it == above.back()->children.end()) return;
      above.push_back(it->second.get());
    }
    auto it = above.back()->children.find(command.path[depth - 1]);
    if (it == above.back()->children.end()) return;
    nodes_ -= 1 + count(*it->second);
    above.back()->children.erase(it);
    // A node only created as an ancestor has no values, so nothing below it
    // means nothing in it, as the engine forgets a container it only made
    // implicitly. The walk stops at the first node that stays.
    for (std::size_t d = above.size(); d-- > 1;) {
      Node const& node = *above[d];
      if (node.written || !node.children.empty()) return;
      above[d - 1]->children.erase(above[d - 1]->children.find(command.path[d - 1]));
      --nodes_;
    }
    return;
  }
  // Writing a node brings every node above it into being, bare: the engine
  // creates the containers a path runs through.
  Node* node = root_.get();
  for (std::size_t i = 0; i < depth; ++i) {
    PathElement const& e = command.path[i];
    auto it = node->children.find(e);
    if (it == node->children.end()) {
      it = node->children.emplace_hint(it, e, std::make_unique<Node>());
      ++nodes_;
    }
    node = it->second.get();
  }
  Values& values = node->values;
  if (replacesValues(command.name.view())) values.clear();
  // Each value overwrites the one under its tag and leaves the others be; a
  // reset returns its tag to the default, which the model shows as absent.
  for (TaggedValue const& value : command.values) {
    Orb::U32 const tag = value.tag;
    auto at = std::lower_bound(values.begin(), values.end(), tag,
                               [](auto const& v, Orb::U32 t) { return v.first < t; });
    bool const there = at != values.end() && at->first == tag;
    if (std::holds_alternative<Reset>(value.data)) {
      if (there) values.erase(at);
    } else if (there) {
      at->second = value.data;
    } else {
      values.emplace(at, tag, value.data);
    }
  }
  node->written = true;
  node->writer = interned(command.name.view());
}

std::size_t EngineModel::nodes() const noexcept {
  return nodes_;
}

void EngineModel::clear() noexcept {
  root_ = std::make_unique<Node>();
  nodes_ = 0;
  pending_.clear();
  commits_ = 0;
}

std::string EngineModel::lineOf(std::vector<PathElement const*> const& path, Node const& node) {
  std::string line;
  if (path.empty()) {
    line = "[]";
  } else {
    line.assign(2 * (path.size() - 1), ' ');
    line += elementText(*path.back());
  }
  for (auto const& [tag, data] : node.values) {
    line += ' ';
    line += valueText(TaggedValue{tag, data});
  }
  if (node.written) {
    line += " (";
    line += node.writer;
    line += ')';
  }
  return line;
}

template <typename Visit>
void EngineModel::walk(Node const* a, Node const* b, std::vector<PathElement const*>& path,
                       Visit& visit) {
  // Children of both in their common order: an element only one side holds
  // brings its whole subtree from that side alone.
  auto ia = a ? a->children.begin() : Children::const_iterator();
  auto ea = a ? a->children.end() : Children::const_iterator();
  auto ib = b ? b->children.begin() : Children::const_iterator();
  auto eb = b ? b->children.end() : Children::const_iterator();
  while (ia != ea || ib != eb) {
    bool const takeA = ib == eb || (ia != ea && !elementLess(ib->first, ia->first));
    bool const takeB = ia == ea || (ib != eb && !elementLess(ia->first, ib->first));
    Node const* na = takeA ? ia->second.get() : nullptr;
    Node const* nb = takeB ? ib->second.get() : nullptr;
    path.push_back(takeA ? &ia->first : &ib->first);
    visit(path, na, nb);
    walk(na, nb, path, visit);
    path.pop_back();
    if (takeA) ++ia;
    if (takeB) ++ib;
  }
}

template <typename Visit>
void EngineModel::walk(EngineModel const& a, EngineModel const& b, Visit visit) {
  std::vector<PathElement const*> path;
  // The root counts as a node only where a command wrote it.
  Node const* ra = a.root_->written ? a.root_.get() : nullptr;
  Node const* rb = b.root_->written ? b.root_.get() : nullptr;
  if (ra || rb) visit(path, ra, rb);
  walk(a.root_.get(), b.root_.get(), path, visit);
}

std::string EngineModel::stateText() const {
  std::string out;
  EngineModel const none;
  walk(*this, none, [&](auto const& path, Node const* node, Node const*) {
    out += lineOf(path, *node);
    out += '\n';
  });
  return out;
}

namespace {

std::vector<PathElement> pathOf(std::vector<PathElement const*> const& path) {
  std::vector<PathElement> out;
  out.reserve(path.size());
  for (PathElement const* e : path)
    out.push_back(*e);
  return out;
}

}  // namespace

std::vector<NodeChange> changedNodes(EngineModel const& a, EngineModel const& b) {
  std::vector<NodeChange> out;
  EngineModel::walk(a, b, [&](auto const& path, auto const* na, auto const* nb) {
    if (!na || !nb || !na->sameAs(*nb)) out.push_back({pathOf(path), na != nullptr, nb != nullptr});
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
    if (na && nb && na->sameAs(*nb)) {
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
