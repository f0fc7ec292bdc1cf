#!/bin/bash
# Builds the Debian packages of a build tree and tries what the one for users holds, from a directory that it is unpacked
# into.
#
# Usage: check-package.sh BUILD CHECK_OF_THE_PROGRAM SOURCE_DIRECTORY
set -eu
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
package=$(echo "$work"/tessel-agent_*.deb)
dpkg-deb -x "$package" "$work/root"
dpkg-deb -f "$package" Depends | grep -q libfmt || { echo "no dependencies in the package"; exit 1; }
for file in bin/tessel-capture share/man/man1/tessel-agent.1 share/man/man1/tessel-capture.1 share/tessel/profiles/flat.json \
  share/bash-completion/completions/tessel-agent share/doc/tessel-agent/schemas/report.schema.json; do
  [ -s "$work/root/usr/$file" ] || { echo "not in the package: $file"; exit 1; }
done
"$2" "$work/root/usr/bin/tessel-agent" "$3"
