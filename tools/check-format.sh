#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when a C++ file of the tree is not as .clang-format would write it,
# or a source file of the tree lacks its licence line, and names the files. Skipped (status 0, a note) when clang-format-14 is
# missing, so a machine without it can still run the whole ctest.
#   tools/check-format.sh [FILE...]    (default: every .cpp and .h under git)
set -eu
cd "$(dirname "$0")/.."
if ! git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    echo "check-format: not a git checkout, not checked"
    exit 0
fi
# Every source file says its licence in its first lines, whether or not
# clang-format is here to check the layout.
unlicensed=$(git ls-files '*.cpp' '*.h' '*.sh' '*.py' '*CMakeLists.txt' .ci/run | while read -r f; do
    head -n 3 "$f" | grep -q 'SPDX-License-Identifier: GPL-3.0-or-later' || echo "$f"; done)
if [ -n "$unlicensed" ]; then
    echo "$unlicensed" | sed 's/^/no SPDX-License-Identifier line: /'
    exit 1
fi
CF=${CLANG_FORMAT:-clang-format-14}
if ! command -v "$CF" >/dev/null 2>&1; then
    echo "check-format: $CF not found, not checked"
    exit 0
fi
if [ "$#" -eq 0 ]; then
    set -- $(git ls-files '*.cpp' '*.h')
fi
bad=0
for f in "$@"; do
    if ! "$CF" --style=file --dry-run --Werror "$f" >/dev/null 2>&1; then
        echo "not formatted: $f"
        bad=$((bad + 1))
    fi
done
if [ "$bad" -ne 0 ]; then
    echo "check-format: $bad file(s) differ from .clang-format (run $CF -i on them)"
    exit 1
fi
echo "check-format: all $# files formatted"
