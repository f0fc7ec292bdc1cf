# What the scripts share; to be sourced.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

# The files of the tree whose names match, relative to the root, null-terminated.
sources() {
  (cd "$root" && find platform TesselVxlan host tests bench -type f -regex ".*\.\($1\)" -print0 2>/dev/null || true)
}

# Runs a command and keeps what it prints to itself, unless it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  [ "$status" -eq 0 ] || grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Re-checking|Generating)' "$log" >&2 || true
  rm -f "$log"
  return "$status"
}

# Configures and builds a preset. REQUIRES: the current directory is the root.
build() {
  quietly cmake --preset "$1" && quietly cmake --build --preset "$1" -j "$jobs"
}
