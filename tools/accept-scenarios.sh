#!/usr/bin/env bash
# Re-runs scenario scripts and takes what they produced as their expected transcripts.
# Only for a change whose new transcripts you have read: `git diff tests/scenarios` after it.
#   tools/accept-scenarios.sh [NAME ...]     (default: every scenario that has expectations)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${BUILD_DIR:-$root/build}"
scenarios="$root/tests/scenarios"
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for f in "$scenarios"/*.vcs; do names+=("$(basename "$f" .vcs)"); done
fi
for name in "${names[@]}"; do
  # A failed comparison is expected here; the produced files are what we want.
  ctest --test-dir "$build" -R "^scenario_${name}\$" >/dev/null 2>&1 || true
  work="$build/scenarios/$name"
  for pair in console:console.txt stdout:stdout.txt traffic:traffic.txt; do
    ext="${pair%%:*}"; produced="${pair#*:}"
    if [ -f "$scenarios/$name.$ext" ] && [ -f "$work/$produced" ]; then
      cp "$work/$produced" "$scenarios/$name.$ext"
    fi
  done
done
git -C "$root" diff --stat -- tests/scenarios
