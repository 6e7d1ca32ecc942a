#!/bin/sh
# Fails when a C++ file of the tree is not as .clang-format would write it,
# and names the files. Skipped (status 0, a note) when clang-format-14 is
# missing, so a machine without it can still run the whole ctest.
#   tools/check-format.sh [FILE...]    (default: every .cpp and .h under git)
set -eu
cd "$(dirname "$0")/.."
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
