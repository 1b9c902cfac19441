// Test harness for the library: a recording engine, captured trace lines, a
// root with all six inputs, and a check that every object made is gone again.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Orb/Trace.h"
#include "Rib/RecordingSink.h"
#include "Tessel/Root.h"
#include "Tessel/VrfStatusSm.h"

namespace TesselTest {

/// Keeps every trace line as "<level> <text>".
class TraceCapture final : public Orb::TraceSink {
 public:
  void traceLine(int level, std::string_view, int, std::string_view text) override {
    lines.push_back(std::to_string(level) + " " + std::string(text));
  }
  bool contains(std::string const& needle) const {
    for (auto const& l : lines) {
      if (l.find(needle) != std::string::npos) return true;
    }
    return false;
  }
  std::vector<std::string> lines;
};

/// The engine sink and trace sink installed for each test; at the end the root
/// is released and the number of live objects must be back where it started.
class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    previousTrace_ = Orb::traceSinkIs(&trace);
    previousSink_ = Rib::engineSinkIs(&engine);
  }
  void TearDown() override {
    releaseAll();
    Rib::engineSinkIs(previousSink_);
    Orb::traceSinkIs(previousTrace_);
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects leaked by the test";
  }
  /// Drops everything the test made; subclasses add their own references.
  virtual void releaseAll() { Tessel::rmRoot = nullptr; }

  /// The commands sent since the last call, in canonical text.
  std::string sent() {
    std::string text = engine.text();
    engine.clear();
    return text;
  }

  Rib::RecordingSink engine;
  TraceCapture trace;

 private:
  // Counted before the fixture's own members are made.
  long liveBefore_ = Orb::Object::liveObjects();
  Orb::TraceSink* previousTrace_ = nullptr;
  Rib::EngineSink* previousSink_ = nullptr;
};

/// A root for VRF "default" and the six configuration inputs, not yet given.
class RootTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    root = Tessel::rootFactory("root");
    root->vrfNameIs("default");
  }
  void releaseAll() override {
    root = nullptr;
    routeMapConfig = nullptr;
    peerFilterConfig = nullptr;
    aclListConfig = nullptr;
    aclConfig = nullptr;
    dynPfxListConfig = nullptr;
    policyMap = nullptr;
    EngineTest::releaseAll();
  }
  void giveAllInputs() {
    root->routeMapConfigIs(routeMapConfig);
    root->peerFilterConfigIs(peerFilterConfig);
    root->aclListConfigIs(aclListConfig);
    root->aclConfigIs(aclConfig);
    root->dynPfxListConfigIs(dynPfxListConfig);
    root->policyMapIs(policyMap);
  }

  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Routing::RouteMap::Config> routeMapConfig = Routing::RouteMap::Config::create("rm");
  Orb::Ptr<Routing::RouteMap::PeerFilterConfig> peerFilterConfig =
      Routing::RouteMap::PeerFilterConfig::create("pf");
  Orb::Ptr<Acl::AclListConfig> aclListConfig = Acl::AclListConfig::create("acllist");
  Orb::Ptr<Acl::Config> aclConfig = Acl::Config::create("acl");
  Orb::Ptr<Routing::DynamicPrefixList::Config> dynPfxListConfig =
      Routing::DynamicPrefixList::Config::create("dynpfx");
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap = RoutingPolicyMap::PolicyMap::create("pmap");
};

}  // namespace TesselTest
