#!/usr/bin/env bash
# Rewrites tests/golden/*.expected with what policy-replay prints now, after a
# deliberate change of what the library sends. Review `git diff tests/golden`
# before committing: every changed line is a changed engine command.
#
# usage: tools/regen-golden.sh [BUILD_DIR]    (default: build/default)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/default}
tool=$build/tools/policy-replay
if [[ ! -x $tool ]]; then
  echo "regen-golden: $tool not found; build it first (cmake --build $build)" >&2
  exit 2
fi
for scenario in "$root"/tests/golden/*.scenario; do
  expected=${scenario%.scenario}.expected
  # A first line "# policy-replay: OPTIONS" adds OPTIONS to the run.
  options=()
  first=$(head -n 1 "$scenario")
  if [[ $first == "# policy-replay: "* ]]; then
    read -r -a options <<<"${first#\# policy-replay: }"
  fi
  if ! errors=$("$tool" --check "${options[@]}" "$scenario" 2>&1 >"$expected.new"); then
    rm -f "$expected.new"
    echo "$errors" >&2
    echo "regen-golden: $scenario did not run clean; nothing rewritten for it" >&2
    exit 1
  fi
  mv "$expected.new" "$expected"
done
git -C "$root" status --short -- tests/golden
