#!/usr/bin/env python3
"""CRC-32 throughput on a 256 MiB file in the page cache: the file checksum
with its progress events against merely reading the file, and the in-memory
CRC against zlib's. Natively, then the Windows build under Wine."""
import os
import subprocess
import sys

MEBIBYTES = 256


def run(label, command, env):
    print(label)
    sys.stdout.flush()
    result = subprocess.run(command, env=env)
    if result.returncode != 0:
        print("  FAILED (exit code %d)" % result.returncode)
    return result.returncode


def main():
    env = dict(os.environ)
    data = os.path.join(env["CORVAN_BENCH_DATA"], "crc-%d.bin" % MEBIBYTES)
    native = os.path.join(env["CORVAN_BENCH_NATIVE"], "bench", "crc_bench")
    windows = os.path.join(env["CORVAN_BENCH_X64"], "bench", "crc_bench.exe")
    failures = 0
    # The native run makes the file; the first of its best-of runs also
    # brings the file into the page cache.
    failures += run("native (g++ -O3):", [native, data, str(MEBIBYTES)], env) != 0
    if os.path.exists(windows):
        wine_path = "Z:" + data.replace("/", "\\")
        failures += run("x64 under Wine (mingw-w64 -O3):", ["wine", windows, wine_path, str(MEBIBYTES)], env) != 0
    else:
        print("x64: %s is not built" % windows)
        failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
