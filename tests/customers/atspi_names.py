#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads the main window over the accessibility bus, as a screen reader does.

Run inside a session bus and an X display (dbus-run-session, xvfb-run) with
the window helper as the argument."""
import subprocess
import sys
import time

import pyatspi


def walk(acc, out, depth=0):
    if acc is None or depth > 40:
        return
    try:
        states = acc.getState()
        out.append((acc.name, acc.getRoleName(), states.contains(pyatspi.STATE_SHOWING)))
        for i in range(acc.childCount):
            walk(acc.getChildAtIndex(i), out, depth + 1)
    except Exception as e:  # a node gone while walking
        print("skipped a node:", e)


def main():
    helper = sys.argv[1]
    name = helper.rsplit("/", 1)[-1]
    proc = subprocess.Popen([helper], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    try:
        if proc.stdout.readline().strip() != "ready":
            print("the window helper did not start")
            return 1
        app = None
        for _ in range(150):
            for a in pyatspi.Registry.getDesktop(0):
                if a is not None and a.name == name:
                    app = a
            if app is not None:
                break
            time.sleep(0.2)
        if app is None:
            print("the window never appeared on the accessibility bus")
            return 1
        # The captions change while the reader is attached, as they do for a user.
        walk(app, [])
        proc.stdin.write("go\n")
        proc.stdin.flush()
        if proc.stdout.readline().strip() != "changed":
            print("the window helper did not change its captions")
            return 1
        time.sleep(1)  # the change events cross the bus
        app.clear_cache()  # read what the program says now, not what was heard before
        nodes = []
        walk(app, nodes)
        showing = [(n, r) for n, r, s in nodes if s]
        print("nodes read:", len(nodes), "showing:", len(showing))
        print("showing buttons:", sorted(n for n, r in showing if r == "push button"))
        failures = []

        def expect(ok, what):
            print(("ok   " if ok else "FAIL ") + what)
            if not ok:
                failures.append(what)

        expect(("Cancel New", "push button") in showing, 'cmdUndo is spoken "Cancel New"')
        expect(not any(n == "Delete Existing" for n, _ in showing), 'nothing showing is spoken "Delete Existing"')
        expect(("Search:", "label") in showing, 'lblCustomers is spoken "Search:"')
        expect(not any(n == "List of Customers:" for n, _ in showing), 'nothing showing reads "List of Customers:"')
        for tab in ["Customers", "Products", "Bill Periods", "Printing", "Print Options", "Options", "Company Info"]:
            count = sum(1 for n, r in showing if n == tab and r == "push button")
            expect(count == 1, '"%s": one showing button (the tab), found %d' % (tab, count))
        windows = [app.getChildAtIndex(i).getRoleName() for i in range(app.childCount)]
        expect("frame" in windows, "the main window is a frame (windows: %s)" % windows)
        headers = sorted({n for n, r, s in nodes if "header" in r})
        expect("List of Customers" in headers and "1" not in headers, "list and tree headers are named: %s" % headers)
        hidden_keys = [n for n, r, s in nodes if not s and n == "Products" and r == "push button"]
        expect(len(hidden_keys) >= 1, "the hot-key buttons are there but not showing")
        return 1 if failures else 0
    finally:
        proc.terminate()
        proc.wait(10)


if __name__ == "__main__":
    sys.exit(main())
