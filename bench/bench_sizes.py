#!/usr/bin/env python3
"""The size of each file we ship, as ./run build leaves it in out/: stripped,
with its debug information in <file>.debug beside it. The goal for the
control is under 1 MB (1,048,576 bytes)."""
import glob
import os
import sys

CONTROL_GOAL = 1024 * 1024


def main():
    root = os.environ["CORVAN_ROOT"]
    failures = 0
    print("%-32s %12s %14s" % ("file", "bytes", "debug file"))
    for arch in ("x86", "x64"):
        files = sorted(f for f in glob.glob(os.path.join(root, "out", arch, "*"))
                       if f.lower().endswith((".ocx", ".exe", ".dll")))
        if not any(f.endswith("CorvanInstaller.ocx") for f in files):
            print("out/%s/CorvanInstaller.ocx is not built" % arch)
            failures += 1
        for path in files:
            size = os.path.getsize(path)
            debug = path + ".debug"
            debug_size = "%d" % os.path.getsize(debug) if os.path.exists(debug) else "none"
            note = ""
            if path.endswith("CorvanInstaller.ocx"):
                note = "  goal < %d: %s" % (CONTROL_GOAL, "met" if size < CONTROL_GOAL else "MISSED")
                failures += size >= CONTROL_GOAL
            print("%-32s %12d %14s%s" % (os.path.relpath(path, root), size, debug_size, note))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
