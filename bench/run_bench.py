#!/usr/bin/env python3
"""Runs every bench/bench_*.py in name order; each prints its figures.

./run bench builds the optimised programs first: natively in build/bench-native
and for 64-bit Windows in build/bench-x64. Windows programs run under Wine in
a prefix of the bench's own (build/bench-wine), made here once per run. Each
bench script gets in its environment:
  CORVAN_ROOT             the repository
  CORVAN_BENCH_NATIVE     the native bench build folder
  CORVAN_BENCH_X64        the Windows bench build folder
  CORVAN_BENCH_DATA       a folder for large scratch files (kept between runs)
  WINEPREFIX, WINEDEBUG   the prepared Wine prefix
"""
import argparse
import glob
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests"))
from run_tests import make_prefix  # noqa: E402  the test runner's prefix, made the same way

sys.stdout.reconfigure(line_buffering=True)


def prepare_prefix(root, prefix):
    env = dict(os.environ, WINEPREFIX=prefix, WINEDEBUG="-all")
    # The prefix's server stays for the whole bench run (it is persistent),
    # and is stopped at the end.
    make_prefix(env)
    return env


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", default=ROOT)
    parser.add_argument("--filter", default="", help="run only the bench scripts whose name holds this text")
    args = parser.parse_args()
    root = os.path.abspath(args.root)
    data = os.path.join(root, "build", "bench-data")
    os.makedirs(data, exist_ok=True)
    env = prepare_prefix(root, os.path.join(root, "build", "bench-wine"))
    env.update(CORVAN_ROOT=root,
               CORVAN_BENCH_NATIVE=os.path.join(root, "build", "bench-native"),
               CORVAN_BENCH_X64=os.path.join(root, "build", "bench-x64"),
               CORVAN_BENCH_DATA=data)
    failed = 0
    for script in sorted(glob.glob(os.path.join(root, "bench", "bench_*.py"))):
        name = os.path.basename(script)
        if args.filter not in name:
            continue
        print("== " + name)
        result = subprocess.run([sys.executable, script], env=env)
        if result.returncode != 0:
            print("   %s ended with exit code %d" % (name, result.returncode))
            failed += 1
    subprocess.run(["wineserver", "-k"], env=env, capture_output=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
