#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the libFuzzer target with clang (AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs it for N minutes:
#   fuzz/run.sh 30
# The kept corpus (fuzz/corpus) seeds the run; new inputs go to
# build-fuzz/corpus. A finding is written as build-fuzz/crash-*: add it to
# fuzz/corpus once it is fixed, so that tst_fuzzcorpus replays it on every run.
set -e
minutes=${1:-10}
here=$(cd "$(dirname "$0")/.." && pwd)
build="$here/build-fuzz"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQOR_FUZZ=ON -DQOR_BUILD_BENCH=OFF \
  -DCMAKE_CXX_COMPILER=clang++-14 >/dev/null
cmake --build "$build" -j2 --target fuzz_roundtrip
mkdir -p "$build/corpus"
cd "$build"
# Temporary files of each run go to memory where there is room for them.
[ -d /dev/shm ] && export TMPDIR=/dev/shm
exec nice ./fuzz/fuzz_roundtrip -max_total_time=$((minutes * 60)) -max_len=8192 -timeout=10 \
  -dict="$here/fuzz/qor.dict" \
  -rss_limit_mb=2048 -print_final_stats=1 corpus "$here/fuzz/corpus"
