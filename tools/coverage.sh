#!/usr/bin/env bash
# Prints line and branch coverage of RotorRouteMap/ and platform/ as the test
# suite exercises them, from the coverage preset's build (gcov counters read
# by gcovr).
#
# usage: tools/coverage.sh [--report] [--files]
#   (no option)  configure, build and test the coverage preset, then report
#   --report     report on the counters the last test run left in build/coverage
#   --files      also list every file with its uncovered lines and branches
#
# Left out of the branch figure: the hidden edge from every call that could
# throw into its clean-up, and compiler-made branches on lines without source
# code. The handlers throw nothing, so those edges would only measure a
# failing allocation; a text parser's own throw still counts.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/coverage
run=1
files=0
for arg in "$@"; do
  case $arg in
    --report) run=0 ;;
    --files) files=1 ;;
    *)
      sed -n 's/^# \{0,1\}//; 6,9p' "$0" >&2
      exit 2
      ;;
  esac
done
if ! command -v gcovr >/dev/null; then
  echo "coverage: gcovr not found; install it with: apt-get install gcovr" >&2
  exit 2
fi

cd "$root"
if ((run)); then
  cmake --preset coverage >/dev/null
  cmake --build --preset coverage
  # Counters add up across runs; start from zero so the figures are this run's.
  find "$build" -name '*.gcda' -delete
  ctest --preset coverage
elif ! find "$build" -name '*.gcda' -print -quit 2>/dev/null | grep -q .; then
  echo "coverage: no counters in $build; run tools/coverage.sh without --report" >&2
  exit 2
fi

# One gcov pass over every object, then one summary per folder from its
# result. Serial on purpose: gcovr 5.2 hangs rather than fails when a parallel
# worker meets gcov output it cannot read.
data=$build/coverage.json
gcovr --root "$root" --object-directory "$build" --filter 'RotorRouteMap/' --filter 'platform/' \
  --exclude-throw-branches --exclude-unreachable-branches --json "$data"
echo "== coverage (throw and unreachable branches excluded)"
for dir in RotorRouteMap platform; do
  summary=$(gcovr --add-tracefile "$data" --filter "$dir/" --print-summary --txt /dev/null)
  lines=$(sed -n 's/^lines: //p' <<<"$summary")
  branches=$(sed -n 's/^branches: //p' <<<"$summary")
  printf '%-15s lines %-26s branches %s\n' "$dir/" "$lines" "$branches"
done
if ((files)); then
  for dir in RotorRouteMap platform; do
    gcovr --add-tracefile "$data" --filter "$dir/" --txt -
    gcovr --add-tracefile "$data" --filter "$dir/" --txt - --branches
  done
fi
