#!/usr/bin/env bash
# Builds the fuzzers (preset fuzz, build/fuzz) and runs each for SECONDS
# (default 60) on a scratch copy of its corpus: what a run finds new stays
# out of the tree. Prints each fuzzer's executions; exits 1 on a finding,
# leaving the input under build/fuzz/findings/. Without clang 14's fuzzer
# runtime it says how to install it and skips (exit 0).
#   fuzz/run.sh [SECONDS] [HARNESS...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then harnesses=(scenario command-text records values); fi

probe=$(mktemp -d)
trap 'rm -rf "$probe"' EXIT
printf 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }\n' \
  >"$probe/probe.cc"
if ! clang++-14 -fsanitize=fuzzer,address,undefined "$probe/probe.cc" -o "$probe/probe" \
  >"$probe/probe.log" 2>&1; then
  echo "fuzzers skipped: clang++-14 with its libFuzzer runtime is missing"
  echo "  (install it with: apt-get install clang-14 libclang-rt-14-dev; see docs/fuzzing.md)"
  exit 0
fi

# CMAKE_CXX_COMPILER_LAUNCHER (ccache, say) comes from the environment.
cmake --preset fuzz >"$probe/configure.log" || { cat "$probe/configure.log"; exit 1; }
cmake --build --preset fuzz

findings=build/fuzz/findings
status=0
for h in "${harnesses[@]}"; do
  work=$probe/$h
  mkdir -p "$work/new" "$findings"
  dict=()
  if [ -f "fuzz/$h.dict" ]; then dict=(-dict="fuzz/$h.dict"); fi
  log=$work/log
  # -timeout: one input running for 25 s is a hang, and a finding.
  if build/fuzz/fuzz/fuzz-"$h" -max_total_time="$seconds" -timeout=25 -print_final_stats=1 \
    -artifact_prefix="$findings/$h-" "${dict[@]}" "$work/new" "fuzz/corpus/$h" >"$log" 2>&1; then
    result="no finding"
  else
    result="FINDING (input under $findings, log below)"
    status=1
  fi
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  added=$(sed -n 's/^stat::new_units_added: *//p' "$log")
  echo "fuzz-$h: ${execs:-?} executions in ${seconds} s (${rate:-?}/s), ${added:-?} new inputs: $result"
  if [ "$result" != "no finding" ]; then grep -v -E '^#[0-9]+ +(NEW|REDUCE|pulse)' "$log" | tail -60; fi
done
exit $status
