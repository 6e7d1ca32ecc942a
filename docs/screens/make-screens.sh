#!/bin/bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Screens of the seven panels at the smallest window size, and Customers
# enlarged, taken from the real program on a virtual X display:
#   LANG=en_US.UTF-8 xvfb-run -a -s "-screen 0 1280x800x24" docs/screens/make-screens.sh docs/screens
# Needs imagemagick (import) and qt6ct (the dark shots use its "darker" colour
# scheme through QT_QPA_PLATFORMTHEME=qt6ct). The window's place, size and
# panel come from a prepared settings file, the data from sample.xml beside
# this script.
ROOT=$(cd "$(dirname "$0")/../.." && pwd)
OUT=${1:-/tmp/shots/out}
mkdir -p "$OUT"
export XDG_CONFIG_HOME=/tmp/shots/cfg XDG_DATA_HOME=/tmp/shots/data XDG_CACHE_HOME=/tmp/shots/cache XDG_RUNTIME_DIR=/tmp/shots/run
shoot() { # panel width height name [dark]
  rm -rf /tmp/shots/cfg /tmp/shots/run; mkdir -p $XDG_RUNTIME_DIR $XDG_CONFIG_HOME/QOR; chmod 700 $XDG_RUNTIME_DIR
  local theme=
  if [ "$5" = dark ]; then
    theme=qt6ct
    mkdir -p $XDG_CONFIG_HOME/qt6ct
    printf '[Appearance]\ncolor_scheme_path=/usr/share/qt6ct/colors/darker.conf\ncustom_palette=true\nstyle=Fusion\n' \
      > $XDG_CONFIG_HOME/qt6ct/qt6ct.conf
  fi
  cat > $XDG_CONFIG_HOME/QOR/QOR.conf <<CONF
[FileHandling]
DatabasePath=/tmp/shots/sample.xml

[Settings]
LastClicked=$1

[FormPositions]
frmQOR_WindowState=0
frmQOR_Left=0
frmQOR_Top=0
frmQOR_Width=$2
frmQOR_Height=$3
CONF
  cp "$ROOT/docs/screens/sample.xml" /tmp/shots/sample.xml
  QT_QPA_PLATFORMTHEME=$theme "$ROOT/build/src/shell/qorvane" &
  local pid=$!
  sleep 2.5
  local w=$(( ($2 - 105) / 15 )) h=$(( ($3 - 510) / 15 ))
  import -window root -crop ${w}x${h}+0+0 "$OUT/$4.png"
  kill $pid; wait $pid 2>/dev/null
}
names=(customers products billperiods printing printoptions options companyinfo)
for i in 0 1 2 3 4 5 6; do shoot $i 10065 6750 "panel$i-${names[$i]}"; done
shoot 0 15105 9510 customers-large
shoot 0 10065 6750 panel0-customers-dark dark
shoot 2 10065 6750 panel2-billperiods-dark dark
