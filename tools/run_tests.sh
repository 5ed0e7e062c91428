#!/usr/bin/env bash
# Runs the CTest suite of one build tree and keeps its counts, or (with --summary)
# prints one closing line with the counts of every build tree named.
set -euo pipefail
if [ "${1:-}" = "--summary" ]; then
  shift
  passed=0; failed=0
  for dir in "$@"; do
    read -r p f < "$dir/test-counts"
    passed=$((passed + p)); failed=$((failed + f))
  done
  echo "check: $passed passed, $failed failed"
  [ "$failed" -eq 0 ]
  exit
fi
dir=$1; label=$2
log="$dir/ctest.log"
status=0
(cd "$dir" && ctest --output-on-failure -j "$(nproc)" --timeout 300) 2>&1 | tee "$log" || status=$?
total=$(sed -n 's/.*tests failed out of \([0-9][0-9]*\).*/\1/p' "$log" | tail -n 1)
bad=$(sed -n 's/.* \([0-9][0-9]*\) tests failed out of.*/\1/p' "$log" | tail -n 1)
total=${total:-0}; bad=${bad:-0}
echo "$((total - bad)) $bad" > "$dir/test-counts"
echo "$label: $((total - bad)) passed, $bad failed"
if [ "$total" -eq 0 ]; then echo "no tests ran in $dir"; exit 1; fi
exit "$status"
