// policy-replay: runs a scenario of route-policy configuration changes against
// a root for its VRF and prints the engine command stream the library sends.
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "Check.h"
#include "Orb/Trace.h"
#include "PolicyGraph.h"
#include "Rib/CommandText.h"

namespace {

constexpr std::string_view kUsage =
    "usage: policy-replay [options] SCENARIO\n"
    "\n"
    "Runs the scenario against a root with all six inputs and prints the\n"
    "engine commands it sends, one canonical line each, as they are sent. The\n"
    "scenario is a regular file of at most 8 MiB; '-' reads standard input.\n"
    "\n"
    "options:\n"
    "  --trace LEVEL  trace lines up to LEVEL (0-9) on standard error\n"
    "  --state        after the stream, '# engine state' and the engine's state,\n"
    "                 then '# policy map' and the policy map's entries\n"
    "  --policy-map   print each change of the policy map in the stream, where\n"
    "                 it happens, as a 'policy-map ...' line\n"
    "  --graph FILE   write the policy references (sub-route-maps, dynamic prefix\n"
    "                 lists, match maps, requesters) to FILE as a Graphviz graph\n"
    "  --check        after every settled statement, compare the engine state\n"
    "                 with a fresh replay of the configuration; report the first\n"
    "                 divergence and exit 1\n"
    "  --reconcile    the root keeps a mirror of what it sent and repairs the\n"
    "                 engine and the policy map at every rebuild of its\n"
    "                 machinery (and with --check, after every settled\n"
    "                 statement, before the check, which then excuses only\n"
    "                 what no repair can undo); 'reconcile' statements need it\n"
    "                 or a scenario that holds one\n"
    "  --help         this text\n"
    "\n"
    "exit status: 0 done, 1 divergence found, 2 bad usage or bad scenario\n";

static_assert(Scenario::maxScenarioBytes == 8 * 1024 * 1024, "the usage text names the limit");

// Prints each command and commit as it is sent and keeps nothing, so the
// replay's memory does not grow with its output.
class StdoutStream final : public Rib::EngineSink {
 public:
  void execute(Rib::CogOp const& op) override {
    std::cout << Rib::commandLine(Rib::RecordedCommand::of(op)) << '\n';
  }
  void commit(Rib::CommitKind kind) override {
    std::cout << Rib::commandLine(Rib::RecordedCommand::of(kind)) << '\n';
  }
};

class StderrTrace final : public Orb::TraceSink {
 public:
  explicit StderrTrace(int level) : level_(level) {}
  int maxLevel() const override { return level_; }
  void traceLine(int level, std::string_view file, int line, std::string_view text) override {
    std::cerr << level << ' ' << file << ':' << line << ' ' << text << '\n';
  }

 private:
  int level_;
};

struct Options {
  int trace = -1;
  bool state = false;
  bool check = false;
  bool policyMap = false;
  bool reconcile = false;
  std::string graph;
  std::string scenario;
};

[[noreturn]] void usageError(std::string const& message) {
  std::cerr << "policy-replay: " << Scenario::printable(message) << "\n" << kUsage;
  std::exit(2);
}

Options optionsOf(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    std::string_view arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      std::cout << kUsage;
      std::exit(0);
    } else if (arg == "--state") {
      o.state = true;
    } else if (arg == "--check") {
      o.check = true;
    } else if (arg == "--policy-map") {
      o.policyMap = true;
    } else if (arg == "--reconcile") {
      o.reconcile = true;
    } else if (arg == "--graph") {
      if (++i == argc) usageError("--graph needs a file");
      o.graph = argv[i];
    } else if (arg == "--trace") {
      if (++i == argc) usageError("--trace needs a level");
      std::string_view level = argv[i];
      if (level.size() != 1 || level[0] < '0' || level[0] > '9')
        usageError("expected a trace level 0-9, got '" + std::string(level) + "'");
      o.trace = level[0] - '0';
    } else if (arg.size() > 1 && arg[0] == '-') {
      usageError("unknown option '" + std::string(arg) + "'");
    } else if (!o.scenario.empty()) {
      usageError("only one scenario at a time");
    } else {
      o.scenario = arg;
    }
  }
  if (o.scenario.empty()) usageError("no scenario given");
  return o;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  Options const options = optionsOf(argc, argv);
  Scenario::Scenario scenario;
  try {
    scenario = Scenario::parseFile(options.scenario);
  } catch (Scenario::ScenarioError const& e) {
    std::cerr << e.what() << '\n';
    return 2;
  } catch (std::exception const& e) {
    std::cerr << "policy-replay: " << e.what() << '\n';
    return 2;
  }

  StderrTrace trace(options.trace);
  Orb::TraceSink* previousTrace = Orb::traceSinkIs(options.trace >= 0 ? &trace : nullptr);
  int status = 0;
  {
    StdoutStream stream;
    Scenario::World::Options worldOptions;
    worldOptions.vrf = scenario.vrf;
    worldOptions.shadow = options.check;
    worldOptions.stream = &stream;
    worldOptions.model = options.check || options.state;
    worldOptions.reconcile = options.reconcile;
    worldOptions.mirror = scenario.reconciles;
    // A policy-map line is printed the moment the change happens, so it
    // stands among the commands exactly where it happened.
    if (options.policyMap)
      worldOptions.policyMap = [](std::string const& line) { std::cout << line << '\n'; };
    Scenario::World world(worldOptions);
    // Flushing after every statement keeps the stream next to the trace and
    // shows what was sent before a failure.
    auto flush = [] { std::cout.flush(); };
    flush();
    Scenario::RunHooks hooks;
    if (options.trace >= 0) {
      hooks.before = [&](Scenario::Statement const& s) {
        std::cerr << "== " << Scenario::printable(scenario.file) << ':' << s.line << ": "
                  << Scenario::printable(s.text) << '\n';
      };
    }
    hooks.after = [&](Scenario::Statement const&) { flush(); };
    try {
      Scenario::RunResult result = Scenario::run(scenario, world, options.check, hooks);
      for (auto const& note : result.notes)
        std::cerr << note << '\n';
      if (result.divergence) {
        std::cerr << Scenario::printable(scenario.file) << ':' << result.divergence->line << ": "
                  << Scenario::printable(result.divergence->statement) << '\n'
                  << result.divergence->report;
        status = 1;
      } else if (options.check) {
        std::cerr << "policy-replay: check passed; settled states compared: " << result.checks
                  << '\n';
      }
      if (options.state) {
        std::cout << "# engine state\n"
                  << world.model().stateText() << "# policy map\n"
                  << RoutingPolicyMap::stateText(*world.live().policyMap);
      }
      if (!options.graph.empty()) {
        std::ofstream out(options.graph);
        out << Scenario::policyGraph(world.live());
        if (!out) {
          std::cerr << "policy-replay: cannot write " << options.graph << '\n';
          status = 2;
        }
      }
    } catch (Scenario::ScenarioError const& e) {
      std::cerr << e.what() << '\n';
      status = 2;
    }
  }
  Orb::traceSinkIs(previousTrace);
  return status;
}
