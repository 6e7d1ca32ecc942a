#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the build into a temporary prefix and checks what a user gets: the
# tree, the desktop entry and metainfo by their validators, the type of the
# database files, the manual pages, and the installed programs started from
# there. The program, installed in a folder its user can't write, must keep
# its database in the per-user data folder; its window's class must be the
# desktop entry's StartupWMClass.
#   check_install.sh BUILD_DIR MIMEPROBE
set -uo pipefail
build=$1
mimeprobe=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
pass() { echo "ok: $*"; }

cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || { cat "$work/install.log"; fail "cmake --install"; exit 1; }

id=org.qorvane.Qorvane
expected=(
  bin/qorvane bin/qorvane-cli
  share/applications/$id.desktop
  share/mime/packages/$id.xml
  share/metainfo/$id.metainfo.xml
  share/doc/qorvane/qorvane-guide.html
  share/man/man1/qorvane.1.gz share/man/man1/qorvane-cli.1.gz
)
for size in 16 24 32 48 64 128 256; do expected+=(share/icons/hicolor/${size}x${size}/apps/$id.png); done
for f in "${expected[@]}"; do
  [ -f "$prefix/$f" ] || fail "missing $f"
done
# Nothing else: no libraries, headers, tests or benchmarks.
extra=$(cd "$prefix" && find . -type f | sed 's|^\./||' | sort | comm -23 - <(printf '%s\n' "${expected[@]}" | sort))
[ -z "$extra" ] && pass "tree holds exactly ${#expected[@]} files" || fail "unexpected files: $extra"
for f in bin/qorvane bin/qorvane-cli; do [ -x "$prefix/$f" ] || fail "$f not executable"; done

# Each icon is a PNG of the size its folder names.
for size in 16 24 32 48 64 128 256; do
  png=$prefix/share/icons/hicolor/${size}x${size}/apps/$id.png
  [ -f "$png" ] || continue
  read -r -a b < <(od -An -tu1 -j12 -N12 "$png")
  w=$(( (b[4] << 24) | (b[5] << 16) | (b[6] << 8) | b[7] ))
  h=$(( (b[8] << 24) | (b[9] << 16) | (b[10] << 8) | b[11] ))
  tag=$(printf "\\$(printf %o "${b[0]}")\\$(printf %o "${b[1]}")\\$(printf %o "${b[2]}")\\$(printf %o "${b[3]}")")
  [ "$tag" = IHDR ] && [ "$w" = "$size" ] && [ "$h" = "$size" ] || fail "icon ${size}: $tag ${w}x${h}"
done

if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$prefix/share/applications/$id.desktop" && pass "desktop-file-validate" || fail "desktop-file-validate"
else
  fail "desktop-file-validate not installed (package desktop-file-utils)"
fi
grep -qx "Exec=qorvane %f" "$prefix/share/applications/$id.desktop" || fail "desktop entry does not start qorvane with a file"
grep -qx "MimeType=application/x-qorvane-database;" "$prefix/share/applications/$id.desktop" \
  || fail "desktop entry does not take the database type"
wmclass=$(sed -n 's/^StartupWMClass=//p' "$prefix/share/applications/$id.desktop")
[ -n "$wmclass" ] || fail "desktop entry has no StartupWMClass"
grep -qx "Icon=$id" "$prefix/share/applications/$id.desktop" || fail "desktop entry names another icon"
if command -v appstreamcli >/dev/null; then
  appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" && pass "appstreamcli validate" || fail "appstreamcli validate"
else
  fail "appstreamcli not installed (package appstream)"
fi
version=$("$prefix/bin/qorvane-cli" --version 2>&1)
grep -q "<release version=\"${version##* }\"" "$prefix/share/metainfo/$id.metainfo.xml" \
  || fail "metainfo release is not the program's version ($version)"

# The database type, as Qt's lookup sees it with the installed type beside the
# system's types (as in /usr/share) and in a folder searched before them (as
# /usr/local/share is): a database is told by its first line or by the name
# QOR.xml, and no other XML or text file is taken for one.
types=$work/types
mkdir -p "$types/merged/mime/packages" "$types/first/mime/packages" "$types/home" "$types/files"
cp /usr/share/mime/packages/freedesktop.org.xml "$prefix/share/mime/packages/$id.xml" "$types/merged/mime/packages/"
cp "$prefix/share/mime/packages/$id.xml" "$types/first/mime/packages/"
for db in merged first; do
  update-mime-database "$types/$db/mime" >"$work/mime.log" 2>&1 || { cat "$work/mime.log"; fail "update-mime-database ($db)"; }
done
cd "$types/files"
printf '<QOR-DB>\r\n\r\n</QOR-DB>\r\n' | tee QOR.xml "QOR.xml.unsaved-20261123-101010" books >/dev/null
printf 'QOR-DB\r\n' >QOR-DB.txt
printf '<?xml version="1.0"?>\n<QOR-DB/>\n' >declared.xml
printf '<list>\n</list>\n' >undeclared.xml
printf '<a><QOR-DB>\n' >later
declare -A want=([QOR.xml]=application/x-qorvane-database [QOR.xml.unsaved-20261123-101010]=application/x-qorvane-database
  [books]=application/x-qorvane-database [QOR-DB.txt]=text/plain [declared.xml]=application/xml
  [undeclared.xml]=application/xml [later]=text/plain)
for dirs in "$types/merged" "$types/first:/usr/share"; do
  seen=0
  while IFS= read -r line; do
    file=${line%%: *}
    seen=$((seen + 1))
    [ "${line#*: }" = "${want[$file]}" ] || fail "type of $file with XDG_DATA_DIRS=$dirs: ${line#*: }, wanted ${want[$file]}"
  done < <(XDG_DATA_HOME="$types/home" XDG_DATA_DIRS="$dirs" "$mimeprobe" "${!want[@]}")
  [ "$seen" -eq "${#want[@]}" ] && pass "types of ${#want[@]} files with XDG_DATA_DIRS=$dirs" \
    || fail "the MIME probe answered for $seen of ${#want[@]} files"
done
cd - >/dev/null

for page in qorvane qorvane-cli; do
  text=$(gzip -dc "$prefix/share/man/man1/$page.1.gz" 2>&1)
  grep -q "^\.TH ${page^^} 1 " <<<"$text" || fail "man page $page has no title line"
  grep -q "@PROJECT_VERSION@" <<<"$text" && fail "man page $page not configured"
done
if command -v man >/dev/null; then
  MANWIDTH=80 man -l "$prefix/share/man/man1/qorvane-cli.1.gz" 2>"$work/man.err" | grep -q "resave" || fail "man -l qorvane-cli"
  [ -s "$work/man.err" ] && { cat "$work/man.err"; fail "man page warnings"; }
  for page in qorvane qorvane-cli; do
    gzip -dc "$prefix/share/man/man1/$page.1.gz" | groff -man -Tutf8 -ww -z 2>"$work/man.err"
    [ -s "$work/man.err" ] && { cat "$work/man.err"; fail "groff warnings in $page.1"; }
  done
  # Every command the tool knows has its entry in the manual page.
  page=$(MANWIDTH=200 man -l "$prefix/share/man/man1/qorvane-cli.1.gz" 2>/dev/null)
  for command in $("$prefix/bin/qorvane-cli" --help | sed -n 's/^ *qorvane-cli \([a-z][a-z]*\) .*/\1/p' | sort -u); do
    grep -q "^       $command FILE\|^       $command IN" <<<"$page" || fail "qorvane-cli $command is missing from its manual page"
  done
fi
grep -q "<html" "$prefix/share/doc/qorvane/qorvane-guide.html" || fail "guide is no HTML"

# The command-line tool works from its installed place.
printf '<QOR-DB>\r\n\t<Customers>\r\n\t</Customers>\r\n</QOR-DB>\r\n' >"$work/empty.xml"
out=$("$prefix/bin/qorvane-cli" check "$work/empty.xml" 2>&1) && grep -q "invoice records: 0" <<<"$out" \
  && pass "installed qorvane-cli checks a file" || fail "installed qorvane-cli: $out"

# The program, in a folder its user can't write: as root, run it as nobody;
# otherwise take the write permission away.
home=$work/home
mkdir -p "$home"
chmod 755 "$work" "$prefix" "$prefix/bin"
chmod 777 "$home"
runas=()
if [ "$(id -u)" -eq 0 ]; then
  runas=(setpriv --reuid=65534 --regid=65534 --clear-groups --)
else
  chmod a-w "$prefix/bin"
fi
env -i PATH=/usr/bin:/bin HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" \
    XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/run" QT_QPA_PLATFORM=offscreen \
    "${runas[@]}" "$prefix/bin/qorvane" >"$work/qorvane.log" 2>&1 &
pid=$!
for _ in $(seq 1 200); do
  [ -f "$home/data/QOR/QOR.xml" ] && break
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.1
done
sleep 0.5
if kill -0 "$pid" 2>/dev/null; then
  pass "installed qorvane runs"
  kill "$pid"
else
  cat "$work/qorvane.log"
  fail "installed qorvane ended at start"
fi
wait "$pid" 2>/dev/null
chmod u+w "$prefix/bin"
[ -f "$home/data/QOR/QOR.xml" ] && pass "database in the per-user data folder" \
  || fail "no database in $home/data/QOR"
[ -e "$prefix/bin/QOR.xml" ] && fail "database written beside the installed program"

# The window's class under X11, read as a dock reads it.
if command -v xvfb-run >/dev/null && command -v xwininfo >/dev/null; then
  xhome=$work/xhome
  mkdir -p "$xhome"
  tree=$(env -i PATH=/usr/bin:/bin HOME="$xhome" XDG_CONFIG_HOME="$xhome/config" XDG_DATA_HOME="$xhome/data" \
         XDG_RUNTIME_DIR="$xhome" QT_QPA_PLATFORM=xcb QORVANE="$prefix/bin/qorvane" \
         xvfb-run -a -s "-screen 0 1280x1024x24" bash -c '
           "$QORVANE" >/dev/null 2>&1 & pid=$!
           for _ in $(seq 1 200); do
             xwininfo -root -tree 2>/dev/null | grep -q "(\"qorvane\" " && break
             sleep 0.1
           done
           xwininfo -root -tree; kill $pid; wait $pid' 2>&1)
  classes=$(grep -o '("[^"]*" "[^"]*")' <<<"$tree" | sort -u)
  grep -qx "(\"qorvane\" \"$wmclass\")" <<<"$classes" && pass "window class is StartupWMClass $wmclass" \
    || fail "window classes under X11: ${classes:-none}; desktop entry: StartupWMClass=$wmclass"
else
  fail "xvfb-run or xwininfo not installed (packages xvfb, x11-utils)"
fi

[ "$failures" -eq 0 ] && echo "install tree: all checks passed" || echo "install tree: $failures failed"
exit $(( failures > 0 ))
