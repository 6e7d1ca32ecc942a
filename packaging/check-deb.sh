#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Checks a built package before a release: lintian on the .changes (the .deb,
# its debug symbols and the upload's metadata) must report no error and no
# warning, and every installed program must carry Debian's hardening (PIE,
# stack protector, fortified functions, read-only relocations, bind now).
#   packaging/check-deb.sh [FILE.changes]     (default: the one in build-deb/)
# Needs lintian and devscripts (hardening-check); ./build.sh deb installs both.
set -euo pipefail
cd "$(dirname "$0")/.."

changes=${1:-}
if [ -z "$changes" ]; then
    shopt -s nullglob
    found=(build-deb/*.changes)
    [ ${#found[@]} -eq 1 ] || { echo "expected one .changes in build-deb/, found ${#found[@]}: run ./build.sh deb" >&2; exit 2; }
    changes=${found[0]}
fi
[ -f "$changes" ] || { echo "no such file: $changes" >&2; exit 2; }

failures=0
echo "== lintian $changes"
# Info tags are shown for the maintainer to read; only errors and warnings fail.
lintian --info --display-info --fail-on error,warning "$changes" || failures=$((failures + 1))

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
dir=$(dirname "$changes")
programs=0
for deb in $(sed -n '/^Files:/,/^[^ ]/s/^ .* \([^ ]*\.deb\)$/\1/p' "$changes"); do
    case $deb in *-dbgsym_*) continue ;; esac   # debug symbols only, no programs
    echo "== hardening-check $deb"
    dpkg-deb -x "$dir/$deb" "$work/$deb"
    for program in "$work/$deb"/usr/bin/*; do
        [ -f "$program" ] || continue
        programs=$((programs + 1))
        # --nocfprotection: Debian 12's default flags have no -fcf-protection.
        hardening-check --nocfprotection "$program" || failures=$((failures + 1))
    done
done
[ "$programs" -gt 0 ] || { echo "no programs found in the packages of $changes"; failures=$((failures + 1)); }

[ "$failures" -eq 0 ] && echo "check-deb: all checks passed" || echo "check-deb: $failures failed"
exit $(( failures > 0 ))
