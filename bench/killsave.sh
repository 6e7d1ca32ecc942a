#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# kill -9 in the middle of saves, many times over: is a saved file ever
# damaged, and is the temporary file of an interrupted save gone once the
# program has started again? Prints its figures; not a test.
#
#   bench/killsave.sh [RUNS] [BUILD_DIR] [RECORDS]
#
# Each run starts "qorvane-cli resave IN OUT" over an OUT of the same content
# and kills it after a random delay within the time a whole save takes. After
# the kill OUT must read back whole; the next resave (a new start) must remove
# the temporary the killed one left. At the end the program itself starts
# once (offscreen) on OUT, with leftovers made by one more kill, and must
# remove them while it loads.
set -u
runs=${1:-50}
build=${2:-build}
records=${3:-300000}
cli="$build/src/cli/qorvane-cli"
gui="$build/src/shell/qorvane"
[ -x "$cli" ] || { echo "no $cli: build first" >&2; exit 1; }
work=$(mktemp -d)
guipid=""
trap '[ -n "$guipid" ] && kill -9 "$guipid" 2>/dev/null; rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_RUNTIME_DIR="$work/run"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"

# A database of RECORDS invoice records: 2,000 customers, a period for every 2,000 records.
python3 - "$work/in.xml" "$records" <<'EOF'
import sys
path, n = sys.argv[1], int(sys.argv[2])
with open(path, 'w', newline='') as f:
    w = lambda s: f.write(s + '\r\n')
    w('<QOR-DB>'); w(''); w('\t<CompanyInfo>'); w('\t\t<CompanyName>Bench Co</CompanyName>'); w('\t</CompanyInfo>')
    w(''); w('\t<Customers>')
    for c in range(1, 2001):
        w('\t\t<Customer CID="%d">' % c); w('\t\t\t<FName>F%d</FName>' % c); w('\t\t\t<LName>L%d</LName>' % c)
        w('\t\t\t<Current>Yes</Current>'); w('\t\t</Customer>')
    w('\t</Customers>'); w(''); w('\t<BillPeriods>')
    for p in range(1, n // 2000 + 2):
        w('\t\t<BillPeriod>'); w('\t\t\t<BPName>P%03d</BPName>' % p); w('\t\t\t<BPStart>2024/01/01</BPStart>')
        w('\t\t</BillPeriod>')
    w('\t</BillPeriods>'); w(''); w('\t<ProductsAndServices>')
    w('\t\t<PS PSID="1">'); w('\t\t\t<Item>Thing</Item>'); w('\t\t\t<ItemPrice>$5.00</ItemPrice>')
    w('\t\t\t<Current>Yes</Current>'); w('\t\t</PS>'); w('\t</ProductsAndServices>'); w(''); w('\t<InvoiceRecords>')
    for r in range(n):
        w('\t\t<InvoiceRecord>'); w('\t\t\t<BP>P%03d</BP>' % (r // 2000 + 1)); w('\t\t\t<CID>%d</CID>' % (r % 2000 + 1))
        w('\t\t\t<AccountBalance>%d.5</AccountBalance>' % (r % 97)); w('\t\t\t<PSID Number="1">1x%d</PSID>' % (r % 7 + 1))
        w('\t\t</InvoiceRecord>')
    w('\t</InvoiceRecords>'); w(''); w('</QOR-DB>')
EOF
"$cli" resave "$work/in.xml" "$work/out.xml" || { echo "the first resave failed" >&2; exit 1; }
expected=$(sha256sum <"$work/out.xml")
size=$(stat -c %s "$work/out.xml")
start=$(date +%s%N)
"$cli" resave "$work/in.xml" "$work/out.xml"
whole_ms=$(( ($(date +%s%N) - start) / 1000000 ))
echo "database: $(( size / 1048576 )) MB, a whole resave (read and save) takes $whole_ms ms"

leftovers() { find "$work" -maxdepth 1 -name '.out.xml.new-*' | wc -l; }
killed_mid=0 damaged=0 left_after_restart=0 biggest=0
for ((i = 1; i <= runs; i++)); do
    "$cli" resave "$work/in.xml" "$work/out.xml" 2>/dev/null &
    pid=$!
    sleep "$(awk -v r=$RANDOM -v ms="$whole_ms" 'BEGIN { printf "%.3f", r / 32768 * ms / 1000 }')"
    kill -9 "$pid" 2>/dev/null
    wait "$pid" 2>/dev/null
    n=$(leftovers)
    if [ "$n" -gt 0 ]; then
        killed_mid=$((killed_mid + 1))
        for f in "$work"/.out.xml.new-*; do
            s=$(stat -c %s "$f"); [ "$s" -gt "$biggest" ] && biggest=$s
        done
    fi
    if [ "$(sha256sum <"$work/out.xml")" != "$expected" ] || ! "$cli" check "$work/out.xml" >/dev/null 2>&1; then
        damaged=$((damaged + 1))
    fi
    # The next start of a writer of this file cleans up after the killed one.
    sleep 0.01
    "$cli" resave "$work/in.xml" "$work/out.xml" 2>/dev/null
    left_after_restart=$((left_after_restart + $(leftovers)))
done
echo "runs: $runs; killed while a temporary stood: $killed_mid (largest $(( biggest / 1048576 )) MB)"
echo "saved file damaged after a kill: $damaged; temporaries left after the next start: $left_after_restart"
echo "versions kept: $(ls "$work/out.xml.versions" | wc -l) (pruned to the newest 20 and one a day)"

# The program itself: leftovers of a killed save are gone once it has loaded.
if [ -x "$gui" ]; then
    for ((tries = 0; tries < 20 && $(leftovers) == 0; tries++)); do
        "$cli" resave "$work/in.xml" "$work/out.xml" 2>/dev/null &
        pid=$!
        sleep "$(awk -v ms="$whole_ms" 'BEGIN { printf "%.3f", ms * 0.7 / 1000 }')"
        kill -9 "$pid" 2>/dev/null
        wait "$pid" 2>/dev/null
    done
    before=$(leftovers)
    mkdir -p "$XDG_CONFIG_HOME/QOR"
    printf '[FileHandling]\nDatabasePath=%s\n' "$work/out.xml" >"$XDG_CONFIG_HOME/QOR/QOR.conf"
    QT_QPA_PLATFORM=offscreen "$gui" >/dev/null 2>&1 &
    guipid=$!
    t=0
    while [ $t -lt 200 ] && [ ! -e "$work/.out.xml.lock" ]; do sleep 0.1; t=$((t + 1)); done
    sleep 0.5
    after=$(leftovers)
    kill "$guipid" 2>/dev/null; sleep 0.5; kill -9 "$guipid" 2>/dev/null; wait "$guipid" 2>/dev/null
    guipid=""
    echo "qorvane started with $before leftover temporaries; after its load: $after"
fi
