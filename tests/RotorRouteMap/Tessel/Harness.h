// Test harness for the library: a recording engine, captured trace lines, a
// translator, a root with all six inputs, a check that every object made is
// gone again, and builders for the command lines the tests expect.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "Orb/Trace.h"
#include "Rib/RecordingSink.h"
#include "Tessel/Cog.h"
#include "Tessel/Holds.h"
#include "Tessel/Root.h"
#include "Tessel/VrfStatusSm.h"

namespace TesselTest {

/// Keeps every trace line as "\n<level> <text>", so "\n0 " finds the errors.
class TraceCapture final : public Orb::TraceSink {
 public:
  void traceLine(int level, std::string_view, int, std::string_view line) override {
    text += '\n';
    text += std::to_string(level);
    text += ' ';
    text += line;
  }
  std::string text;
};

/// The notifications of one entity: their attributes and their keys as text.
class Notifications final : public Orb::Notifiee {
 public:
  explicit Notifications(Orb::Ptr<Orb::Entity const> entity) : Notifiee(std::move(entity)) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const& key) override {
    attributes.push_back(attribute);
    std::ostringstream text;
    text << key;
    keys.push_back(text.str());
  }
  std::vector<Orb::AttributeId> attributes;
  std::vector<std::string> keys;
};

/// The engine sink and trace sink installed for each test. The fixture's
/// destructor runs after every derived fixture's members are gone: it drops
/// the current root, and the number of live objects must be back where it
/// started.
class EngineTest : public ::testing::Test {
 protected:
  EngineTest()
      : previousTrace_(Orb::traceSinkIs(&trace)), previousSink_(Rib::engineSinkIs(&engine)) {}
  ~EngineTest() override {
    Tessel::rmRoot = nullptr;
    Rib::engineSinkIs(previousSink_);
    Orb::traceSinkIs(previousTrace_);
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects leaked by the test";
    EXPECT_EQ(0u, Tessel::holdsLeft()) << "holds left after the test";
  }

  /// The commands sent since the last call, in canonical text.
  std::string sent() {
    std::string text = engine.text();
    engine.clear();
    return text;
  }

  Rib::RecordingSink engine;
  TraceCapture trace;

 private:
  long liveBefore_ = Orb::Object::liveObjects();
  Orb::TraceSink* previousTrace_;
  Rib::EngineSink* previousSink_;
};

/// A translator for VRF "default", with no root.
class CogTest : public EngineTest {
 protected:
  Orb::Ptr<Tessel::Cog> cog = Tessel::cogFactory("default");
};

/// A root for VRF "default" and the six configuration inputs, not yet given.
class RootTest : public EngineTest {
 protected:
  RootTest() { root->vrfNameIs("default"); }
  void giveAllInputs() {
    root->routeMapConfigIs(routeMapConfig);
    root->peerFilterConfigIs(peerFilterConfig);
    root->aclListConfigIs(aclListConfig);
    root->aclConfigIs(aclConfig);
    root->dynPfxListConfigIs(dynPfxListConfig);
    root->policyMapIs(policyMap);
  }

  Orb::Ptr<Tessel::Root> root = Tessel::rootFactory("root");
  Orb::Ptr<Routing::RouteMap::Config> routeMapConfig = Routing::RouteMap::Config::create("rm");
  Orb::Ptr<Routing::RouteMap::PeerFilterConfig> peerFilterConfig =
      Routing::RouteMap::PeerFilterConfig::create("pf");
  Orb::Ptr<Acl::AclListConfig> aclListConfig = Acl::AclListConfig::create("acllist");
  Orb::Ptr<Acl::Config> aclConfig = Acl::Config::create("acl");
  Orb::Ptr<Routing::DynamicPrefixList::Config> dynPfxListConfig =
      Routing::DynamicPrefixList::Config::create("dynpfx");
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap = RoutingPolicyMap::PolicyMap::create("pmap");
};

/// The path of a sequence, without brackets.
inline std::string seqPath(std::string const& map = "R", Orb::U32 seqno = 10) {
  return "512 576=\"" + map + "\" 577 578=" + std::to_string(seqno);
}

/// One command line below sequence R 10; `below` continues the path.
inline std::string cmd(std::string const& op, std::string const& below, std::string const& values) {
  return op + " [" + seqPath() + (below.empty() ? "" : " " + below) + "]" +
         (values.empty() ? "" : " " + values) + "\n";
}

/// One command line on the set node of sequence R 10.
inline std::string setCmd(std::string const& op, std::string const& values) {
  return cmd(op, "601", values);
}

/// What a sequence without clauses sends: its map, itself and the
/// link-bandwidth reset.
inline std::string seqLines(std::string const& map, Orb::U32 seqno, bool permit = true) {
  std::string const seq = seqPath(map, seqno);
  return "routeMap [512 576=\"" + map + "\"] 0:str=\"" + map + "\"\n" + "routeMapSeq [" + seq +
         "] 0:u32=" + std::to_string(seqno) + " 1:flag=" + (permit ? "true" : "false") + "\n" +
         "ExtCommSetLinkBwOpts [" + seq + " 601] 29:reset\n";
}

/// The community clean-up a route map's version sends first for each of its
/// sequences: the private lists and sets of every clause kind, each committed.
inline std::string seqCommCleanup(std::string const& map, Orb::U32 seqno) {
  std::string const id = map + std::to_string(seqno);
  auto list = [](std::string const& name) {
    return "delCommunityList [512 528 529=\"/policy/commlist " + name + "\"] delete\ncommit\n";
  };
  auto set = [](char const* node, std::string const& name) {
    return std::string("delCommunitySet [512 ") + node + "=\"/policy/commset " + name +
           "\"] delete\ncommit\n";
  };
  return list(".cl" + id + "ar") + set("524 525", ".cs" + id + "ar") + list(".cl" + id + "del") +
         set("524 525", ".cs" + id + "del") + set("526 527", ".e" + id) + set("631 632", ".l" + id);
}

/// Runs `body` with every trace line on standard error, so a death test can
/// expect the error line that comes before an assertion. Meant to be the
/// statement of EXPECT_DEATH, so the sink never outlives the dying child.
template <class F>
void withTraceOnStderr(F&& body) {
  struct : Orb::TraceSink {
    void traceLine(int level, std::string_view, int, std::string_view text) override {
      std::fprintf(stderr, "%d %.*s\n", level, static_cast<int>(text.size()), text.data());
    }
  } sink;
  Orb::TraceSink* previous = Orb::traceSinkIs(&sink);
  body();
  Orb::traceSinkIs(previous);
}

}  // namespace TesselTest
