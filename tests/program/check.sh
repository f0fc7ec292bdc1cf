#!/bin/bash
# The program as a process: exit codes, output that can't be written, standard input, completion, manual pages.
#
# Usage: check.sh PROGRAM SOURCE_DIRECTORY
set -u
program=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0
good=$source/tests/data/captures/bridge-per-vni/leaf1

# wants CODE TEXT COMMAND…: the exit code, and a text that is in the output or the errors.
wants() {
  local code=$1 text=$2 found status
  shift 2
  found=$(bash -c "$*" 2>&1)
  status=$?
  if [ "$status" != "$code" ] || [[ $found != *"$text"* ]]; then
    echo "FAILED: $*: exit code $status, wanted $code and '$text' in: ${found:0:600}"
    failures=$((failures + 1))
  fi
}
export program source good

# Exit codes.
wants 0 "4 tunnels, 4 programmed" '$program run $good'
wants 0 "built-in sample" '$program run'
wants 1 "table full" '$program run --profile tiny $source/tests/data/input/seven-vteps.json'
wants 2 "No such file" '$program run nowhere.json'
wants 2 "did you mean explain?" '$program explian 10.0.0.1'
wants 2 "did you mean --format?" '$program run --fromat json'
wants 0 "Exit codes:" '$program --help'
for command in run explain diff plan check graph import types profiles; do wants 0 "tessel-agent $command" "\$program $command --help"; done
wants 0 "" '$program run --quiet $good'
[ -z "$("$program" run --quiet "$good" 2>&1)" ] || { echo "FAILED: --quiet prints"; failures=$((failures + 1)); }

wants 0 "" '$program diff $good $good'
wants 1 "10.255.0.2" '$program diff $good $good,$source/tests/data/captures/bridge-per-vni/events/02-uplink-down'
wants 0 "0 serious" '$program check $good'
wants 1 "1 serious" '$program check $source/tests/data/captures/vlan-aware-multihomed/leaf3'
wants 1 "warning: " '$program run --strict $source/tests/data/captures/single-vxlan-device'
wants 2 "frr-ip-route.json" '$program diff --against frr $good'

# Output that can't be written.
for command in run "run --format json" "explain 10.255.0.2" "import iproute2 $good" types profiles --help --version \
  "diff $good $good" "plan --from $good $good" "plan --fit tiny $good" "check $good" "graph vni 10010"; do
  wants 2 "No space left on device" "\$program $command >/dev/full"
  wants 2 "standard output: " "\$program $command >&-"
done
wants 2 "Broken pipe" '$program run --format json | true; exit ${PIPESTATUS[0]}'
wants 0 "" '$program run $good 2>&-'
wants 0 "" '$program run $good <&-'
# A file does not get the descriptor of a closed output.
wants 2 "" '$program run $good --save-upgrade ids.json >&-'
wants 0 "" '$program run $good --restore-upgrade ids.json'

# Documents on standard input, reports among them.
wants 0 "4 tunnels, 4 programmed" '$program import iproute2 $good | $program run -'
wants 2 "standard input: " 'echo "{" | $program run -'
wants 2 "standard input: /stateway/x: " "echo '{\"stateway\":{\"x\":{}}}' | \$program run -"
wants 2 "run --format json --show state" '$program run --format json $good | $program run -'
$program run --format json --show state "$good" >first.json
wants 0 "4 tunnels, 4 programmed" '$program run first.json'
$program run --format json --show state first.json >second.json
cmp -s first.json second.json || { echo "FAILED: a report that is read back differs"; failures=$((failures + 1)); }

# Completion asks the program, manual pages name what it has.
PATH=$(dirname "$program"):$PATH
# shellcheck source=/dev/null
source "$source/scripts/completion/tessel-agent"
completes() {
  local wanted=$1
  shift
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _tessel_agent
  [[ " ${COMPREPLY[*]} " == *" $wanted "* ]] || {
    echo "FAILED: '$*' is completed to '${COMPREPLY[*]}', wanted $wanted"
    failures=$((failures + 1))
  }
}
completes run tessel-agent r
completes vni tessel-agent explain v
completes --show-each tessel-agent run --show
completes json tessel-agent run --format j
completes compact tessel-agent run --profile comp
for command in $("$program" --help | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'); do
  grep -qE "(^|[ \"])$command" "$source/docs/man/tessel-agent.1" || { echo "FAILED: no $command in the manual page"; failures=$((failures + 1)); }
done

[ "$failures" -eq 0 ]
