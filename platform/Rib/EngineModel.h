// Rib::EngineModel: an engine sink that applies the command stream to a model
// of the engine's configuration tree, so tests and tools compare what the
// engine would hold rather than how the commands were spelled.
#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <map>
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
  void execute(CogOp const& op) override;
  void commit(CommitKind kind) override;

  /// Feeds one record of a canonical stream: a command is executed, a commit
  /// commits. Replaying a recorded stream this way gives the same model as
  /// running the library against it.
  void apply(RecordedCommand const& record);

  /// Commands executed since the last commit, in execution order.
  std::vector<RecordedCommand> const& pendingCommands() const noexcept { return pending_; }
  /// Nodes in the committed tree, the root not counted.
  std::size_t nodes() const noexcept;
  /// Whether the committed tree holds the node at `path`.
  bool holds(std::vector<PathElement> const& path) const { return nodes_.contains(path); }
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
    return a.nodes_ == b.nodes_;
  }

  /// The order of sibling nodes: path ids before keys; path ids by number;
  /// keys by tag, then number keys before string keys, numbers by value and
  /// strings byte-wise. A total order on elements.
  static bool elementLess(PathElement const& a, PathElement const& b) noexcept;

 private:
  struct PathLess {
    bool operator()(std::vector<PathElement> const& a,
                    std::vector<PathElement> const& b) const noexcept;
  };
  struct Node {
    std::map<Orb::U32, ValueData> values;
    bool written = false;  // by a command, not only created as an ancestor
    Orb::String writer;    // the last command that wrote it; shown, not compared

    friend bool operator==(Node const& a, Node const& b) {
      return a.values == b.values && a.written == b.written;
    }
  };
  // Keyed by the full path: ordering paths element by element with parents
  // before their descendants lays the map out as a depth-first walk of the
  // tree, so a subtree is one range and printing is one pass.
  using Nodes = std::map<std::vector<PathElement>, Node, PathLess>;

  void run(RecordedCommand const& command);
  void forgetEmptyAncestors(std::vector<PathElement> const& path);
  static std::string lineOf(std::vector<PathElement> const& path, Node const& node);
  // Visits the nodes of both trees in their common order with the node each
  // holds at that path, null where it holds none.
  template <typename Visit>
  static void walk(EngineModel const& a, EngineModel const& b, Visit visit);

  Nodes nodes_;
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
