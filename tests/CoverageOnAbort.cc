// Linked into every test program of a coverage build: a death test's child
// ends in abort(), which skips the exit handler that writes the gcov
// counters, so the abort paths it ran would count as never run. Writing the
// counters on SIGABRT first keeps them.
#include <csignal>

extern "C" void __gcov_dump();

namespace {

extern "C" void dumpThenAbort(int) {
  __gcov_dump();
  std::signal(SIGABRT, SIG_DFL);
  std::raise(SIGABRT);
}

[[maybe_unused]] bool const installed = std::signal(SIGABRT, dumpThenAbort) != SIG_ERR;

}  // namespace
