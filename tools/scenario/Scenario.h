// The scenario language: route-policy configuration written one statement a
// line, read into edits of the configuration entities a root watches.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Acl/AclListConfig.h"
#include "Acl/Config.h"
#include "L3/VrfName.h"
#include "Routing/DynamicPrefixList/Config.h"
#include "Routing/RouteMap/Config.h"
#include "RoutingPolicyMap/PolicyMap.h"

namespace Scenario {

/// The six configuration inputs of a root, in the order the root lists them.
enum class Input : unsigned {
  routeMapConfig,
  peerFilterConfig,
  aclListConfig,
  aclConfig,
  dynPfxListConfig,
  policyMap,
};
inline constexpr std::size_t inputCount = 6;

/// The input's word in the language, such as "route-map-config".
std::string_view inputName(Input input) noexcept;

/// One complete set of configuration entities. The replay keeps two: the live
/// one the root watches and a shadow nobody watches.
struct Inputs {
  Orb::Ptr<Routing::RouteMap::Config> routeMapConfig;
  Orb::Ptr<Routing::RouteMap::PeerFilterConfig> peerFilterConfig;
  Orb::Ptr<Acl::AclListConfig> aclListConfig;
  Orb::Ptr<Acl::Config> aclConfig;
  Orb::Ptr<Routing::DynamicPrefixList::Config> dynPfxListConfig;
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap;

  /// Empty entities, each named after its input.
  static Inputs create();
};

/// `text` fit for a message on a terminal: every byte outside 0x20..0x7e,
/// NUL and escape sequences included, written as `\xHH`.
std::string printable(std::string_view text);

/// A statement the replay will not run: bad syntax, a value the library
/// treats as a programming error, or a reference to something absent.
/// `what()` says what was expected; the caller adds where.
/// Made printable here, as `what()` would end at a NUL.
class Refusal : public std::runtime_error {
 public:
  explicit Refusal(std::string const& what) : std::runtime_error(printable(what)) {}
};

/// A refusal with its place, "FILE:LINE: expected ...", printable whatever
/// bytes the file's name or line held.
class ScenarioError : public std::runtime_error {
 public:
  ScenarioError(std::string const& file, int line, std::string const& message)
      : std::runtime_error(printable(file + ":" + std::to_string(line) + ": " + message)),
        line_(line) {}
  int line() const noexcept { return line_; }

 private:
  int line_;
};

/// The configuration objects whose engine state can lag behind the
/// configuration, each kind named by its statements.
enum class ObjectKind : unsigned {
  routeMap,
  peerFilter,
  ipv4PrefixList,
  ipv6PrefixList,
  asPathList,
  communityList,
  acl,
  dynamicPrefixList,
  policyMapEntry,
};
inline constexpr std::size_t objectKindCount = 9;

/// What a statement does to the question "should the engine now hold exactly
/// the configuration?". An object changed but not yet sent is pending; an
/// input taken away freezes the engine until it is given back.
struct Effect {
  enum class Kind {
    none,
    changed,      // a part or field of the object changed; pending until sent
    sent,         // the object was sent whole, e.g. at its version bump
    removed,      // the object left the configuration
    partRemoved,  // a part of the object left and was sent by itself
    inputTaken,
    inputGiven,
    inputReplaced,  // `input` by a fresh copy of itself
    vrfRenamed,     // the root's VRF, to `name`
    rootReplaced,   // by a later root named `name`, given the same inputs
    reconciled,     // the engine and the policy map brought to a fresh start's
  };
  Kind kind = Kind::none;
  ObjectKind object = ObjectKind::routeMap;
  Orb::Name name;
  Input input = Input::routeMapConfig;
  /// For `partRemoved`: whether the object, as the statement left the
  /// configuration, has no part left, which took it out of the engine whole
  /// and with it whatever was pending. Null: it never does.
  bool (*emptied)(Inputs const&, Orb::Name const&) = nullptr;
};

/// One statement, ready to run.
struct Statement {
  int line = 0;
  /// The line as written, comment and trailing blanks removed.
  std::string text;
  /// The configuration change. It runs on the live inputs and again on the
  /// shadow, so it reads nothing but the inputs it is given. It may raise
  /// Refusal before it changes anything; null for statements that only
  /// concern the root.
  std::function<void(Inputs&)> edit;
  Effect effect;
};

struct Scenario {
  std::string file;
  L3::VrfName vrf = "default";
  std::vector<Statement> statements;
  /// Whether a statement reconciles, which needs the root's mirror.
  bool reconciles = false;
};

/// Reads a whole scenario; the first bad line raises ScenarioError.
Scenario parse(std::string_view text, std::string const& file);
/// The largest scenario read, in bytes. Far above any hand-written one; it
/// keeps a wrong file (a log, an image) from being read whole.
inline constexpr std::size_t maxScenarioBytes = 8 * 1024 * 1024;

/// Reads the file at `path` ("-" reads standard input). Only a regular file
/// or standard input of at most maxScenarioBytes is read; anything else
/// raises std::runtime_error saying why, with the path made printable.
Scenario parseFile(std::string const& path);

}  // namespace Scenario
