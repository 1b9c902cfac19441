// policy-replay as its users meet it, run as a process of its own: a long
// output in bounded memory, and the inputs it refuses, each with its message
// and exit status.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Scenario.h"

#if defined(__SANITIZE_ADDRESS__)
#define ROTOR_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ROTOR_UNDER_ASAN 1
#endif
#endif

namespace {

struct Outcome {
  int exitStatus = -1;
  std::string errors;
  long lines = 0;
  /// The largest resident set of the process, as the kernel accounted it.
  long maxRssKb = 0;
};

std::string tempPath(std::string const& name) {
  return ::testing::TempDir() + "policy-replay-test-" + std::to_string(::getpid()) + "-" + name;
}

/// Runs policy-replay with `args` (and `input` as its standard input, when
/// given), counting the lines of its output as they come (so the test holds
/// none of them) and keeping its standard error.
Outcome replay(std::vector<std::string> const& args, std::string const& input = "") {
  std::string const errFile = tempPath("stderr");
  int out[2];
  if (::pipe(out) != 0) throw std::runtime_error("pipe");
  pid_t const pid = ::fork();
  if (pid == 0) {
    int const err = ::open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(out[1], 1);
    ::dup2(err, 2);
    if (!input.empty()) ::dup2(::open(input.c_str(), O_RDONLY), 0);
    ::close(out[0]);
    std::vector<char*> argv{const_cast<char*>(POLICY_REPLAY)};
    for (auto const& a : args)
      argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    ::execv(POLICY_REPLAY, argv.data());
    ::_exit(127);
  }
  ::close(out[1]);
  Outcome run;
  char buffer[1 << 16];
  for (ssize_t n; (n = ::read(out[0], buffer, sizeof buffer)) > 0;)
    run.lines += std::count(buffer, buffer + n, '\n');
  ::close(out[0]);
  int status = 0;
  rusage usage{};
  ::wait4(pid, &status, 0, &usage);
  run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.maxRssKb = usage.ru_maxrss;
  std::ostringstream errors;
  errors << std::ifstream(errFile).rdbuf();
  run.errors = errors.str();
  std::remove(errFile.c_str());
  return run;
}

TEST(PolicyReplay, PrintsAMillionLinesInMemoryThatDoesNotGrowWithTheOutput) {
#ifdef ROTOR_UNDER_ASAN
  GTEST_SKIP() << "AddressSanitizer's shadow and quarantine say nothing about the tool's own use";
#endif
  // Ten maps of 40 sequences, each resent whole 500 times: every version
  // prints the whole map again, a million lines in all.
  std::string const file = tempPath("long.scenario");
  {
    std::ofstream out(file);
    for (int map = 0; map < 10; ++map) {
      for (int seq = 1; seq <= 40; ++seq)
        out << "route-map M" << map << " permit " << seq << "\n  set metric " << seq << "\n";
    }
    for (int round = 0; round < 500; ++round) {
      for (int map = 0; map < 10; ++map)
        out << "version M" << map << "\n";
    }
  }
  Outcome const run = replay({file});
  std::remove(file.c_str());
  ASSERT_EQ(0, run.exitStatus) << run.errors;
  EXPECT_GE(run.lines, 1'000'000);
  // Keeping every line would take hundreds of megabytes; what the replay
  // needs (the configuration and the engine model) fits in a few.
  EXPECT_LT(run.maxRssKb, 32 * 1024) << "peak resident set in KiB";
  std::cout << "peak resident set: " << run.maxRssKb << " KiB for " << run.lines << " lines\n";
}

TEST(PolicyReplay, RefusesWhatIsNotAScenarioFileSayingWhy) {
  std::string const big = tempPath("big.scenario");
  {
    // Sparse: the size is what is refused, before anything is read.
    std::ofstream create(big);
  }
  ASSERT_EQ(0, ::truncate(big.c_str(), static_cast<off_t>(Scenario::maxScenarioBytes) + 1));
  struct Case {
    std::string path;
    std::string message;
    std::string input = "";
  };
  Case const cases[] = {
      {"/", "policy-replay: / is a directory, not a scenario file\n"},
      {"/dev/zero",
       "policy-replay: /dev/zero is not a regular file (a device, pipe or socket); give a "
       "scenario file, or '-' to read standard input\n"},
      {big,
       "policy-replay: " + big + " is larger than 8388608 bytes, the most a scenario may hold\n"},
      {"no\x1b[31mfile", "policy-replay: cannot read no\\x1b[31mfile: No such file or directory\n"},
      {"-",
       "policy-replay: standard input is larger than 8388608 bytes, the most a scenario may hold\n",
       big},
  };
  for (Case const& c : cases) {
    Outcome const run = replay({c.path}, c.input);
    EXPECT_EQ(2, run.exitStatus) << c.message;
    EXPECT_EQ(c.message, run.errors);
    EXPECT_EQ(0, run.lines) << c.message;
  }
  std::remove(big.c_str());
}

}  // namespace
