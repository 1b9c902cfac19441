// Rib::EngineModel: an engine sink that applies the command stream to a model
// of the engine's configuration tree, so tests and tools compare what the
// engine would hold rather than how the commands were spelled.
#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Orb/Api.h"
#include "Rib/CommandText.h"
#include "Rib/EngineSink.h"

namespace Rib {

/// Commands whose values replace every value of their node instead of merging
/// with them by tag. These write list entries and community sets, which the
/// engine rebuilds whole when they are re-added under the same key: an entry
/// re-added without its "le" bound, say, must lose the old bound. Every other
/// command merges.
inline constexpr std::array<std::string_view, 7> replacingCommands = {
    "doAddIpPrefixListEntry", "doAddIpv6PrefixListEntry", "doAddIpStdAclEntry",
    "addAsPathListEntry",     "addCommunityListEntry",    "addCommunityListEntryExact",
    "addCommunitySet",
};

/// Whether a command of that name replaces its node's values (see
/// replacingCommands).
ROTOR_API bool replacesValues(std::string_view commandName) noexcept;

struct NodeChange;

/// The engine's configuration tree as the committed commands left it.
///
/// Every path element is one step down the tree: [512 576="R" 577 578=10]
/// names the node `578=10` under `577` under `576="R"` under `512`. The empty
/// path names the root, which holds everything.
///
/// Writing a node creates the nodes above it that are not there yet, bare.
/// Such a node, never written by a command itself, lasts only while it holds
/// something: once the last node below it is deleted, it goes too, and so on
/// up the path, as the engine forgets a container it only made implicitly. A
/// node a command wrote stays until it is deleted, values or not.
///
/// Commands are kept pending when executed and take effect, in execution
/// order, at the next commit of either kind, as in the engine's transaction.
class ROTOR_API EngineModel final : public EngineSink {
 public:
  EngineModel() = default;
  EngineModel(EngineModel const& o);
  EngineModel& operator=(EngineModel const& o);
  EngineModel(EngineModel&&) noexcept = default;
  EngineModel& operator=(EngineModel&&) noexcept = default;
  ~EngineModel() override;

  void execute(CogOp const& op) override;
  void commit(CommitKind kind) override;

  /// Feeds one record of a canonical stream: a command is executed, a commit
  /// commits. Replaying a recorded stream this way gives the same model as
  /// running the library against it.
  void apply(RecordedCommand const& record);

  /// Commands executed since the last commit, in execution order.
  std::vector<RecordedCommand> const& pendingCommands() const noexcept;
  /// Nodes in the committed tree, the root not counted.
  std::size_t nodes() const noexcept;
  /// Whether the committed tree holds the node at `path`.
  bool holds(std::vector<PathElement> const& path) const { return find(path) != nullptr; }
  /// Commits of either kind so far.
  std::size_t commits() const noexcept { return commits_; }
  /// Forgets the tree, the pending commands and the commit count.
  void clear() noexcept;

  /// The committed tree, one node a line, indented two blanks a level:
  ///   <element>[ <tag>:<kind>=<value>]...[ (<command>)]
  /// The element and values are spelled as in the command line, values in tag
  /// order; <command> is the last command that wrote the node, absent on
  /// nodes only created as ancestors. Siblings follow elementLess. The root
  /// shows as a first line `[]` only when a command wrote it. Models that
  /// print the same text are equal; equal models may still name different
  /// commands.
  std::string stateText() const;

  /// Equal committed trees: the same nodes, each with the same values and
  /// either written by a command in both or only created as an ancestor in
  /// both. Which command wrote a node last does not count: two engines that
  /// hold the same values are the same engine however the values got there,
  /// and the replay check compares engines built by different command
  /// sequences. Pending commands and commit counts do not count either.
  friend bool operator==(EngineModel const& a, EngineModel const& b) {
    return equal(*a.root_, *b.root_);
  }

  /// The order of sibling nodes: path ids before keys; path ids by number;
  /// keys by tag, then number keys before string keys, numbers by value and
  /// strings byte-wise. A total order on elements.
  static bool elementLess(PathElement const& a, PathElement const& b) noexcept;

 private:
  struct ElementLess {
    bool operator()(PathElement const& a, PathElement const& b) const noexcept {
      return elementLess(a, b);
    }
  };
  struct Node;
  /// A node's children in sibling order, each under its own element: the
  /// tree holds each element once, however deep its node.
  using Children = std::map<PathElement, std::unique_ptr<Node>, ElementLess>;
  /// Values in tag order.
  using Values = std::vector<std::pair<Orb::U32, ValueData>>;
  struct Node {
    Children children;
    Values values;
    bool written = false;     // by a command, not only created as an ancestor
    std::string_view writer;  // the last command that wrote it; shown, not compared

    bool sameAs(Node const& o) const { return values == o.values && written == o.written; }
  };
  void run(RecordedCommand const& command);
  /// The node at `path`, or null.
  Node const* find(std::vector<PathElement> const& path) const;
  std::unique_ptr<Node> copyOf(Node const& node);
  /// The model's own copy of a command name, which outlives every node.
  std::string_view interned(std::string_view name);
  static bool equal(Node const& a, Node const& b);
  static std::size_t count(Node const& node);
  static std::string lineOf(std::vector<PathElement const*> const& path, Node const& node);
  // Visits the nodes of both trees in their common order, each with its path
  // and the node each tree holds there (null where it holds none).
  template <typename Visit>
  static void walk(EngineModel const& a, EngineModel const& b, Visit visit);
  template <typename Visit>
  static void walk(Node const* a, Node const* b, std::vector<PathElement const*>& path,
                   Visit& visit);

  /// Command names, kept once: a node names its last writer without a copy.
  /// Declared before the tree, so it is destroyed after it.
  std::set<std::string, std::less<>> writers_;
  /// The root: the empty path. Shown only when a command wrote it.
  std::unique_ptr<Node> root_ = std::make_unique<Node>();
  std::size_t nodes_ = 0;  // below the root
  std::vector<RecordedCommand> pending_;
  std::size_t commits_ = 0;

  friend ROTOR_API std::string diff(EngineModel const& a, EngineModel const& b);
  friend ROTOR_API std::vector<NodeChange> changedNodes(EngineModel const& a, EngineModel const& b);
};

/// A node that makes two models unequal: one holds it and the other does not,
/// or both do and their nodes are not equal.
struct ROTOR_API NodeChange {
  std::vector<PathElement> path;
  bool inA = false;
  bool inB = false;
};

/// The nodes that make `a` and `b` unequal, in state-text order. Empty when
/// the models are equal.
ROTOR_API std::vector<NodeChange> changedNodes(EngineModel const& a, EngineModel const& b);

/// The committed trees of `a` and `b` compared node by node: `a`'s line of a
/// changed node as "- <line>", `b`'s as "+ <line>", with `a`'s lines of the
/// unchanged nodes above them as "  <line>" for context. Empty when the
/// models are equal, even if their state texts name different commands.
ROTOR_API std::string diff(EngineModel const& a, EngineModel const& b);

/// Writes the state text, so test failures show models as trees.
ROTOR_API std::ostream& operator<<(std::ostream& os, EngineModel const& model);

}  // namespace Rib
