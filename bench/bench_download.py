#!/usr/bin/env python3
"""Downloads a 64 MiB file over loopback HTTP and HTTPS with
clsFTP::DownloadFile (1024-byte blocks, a progress event and a message pump
per block, the file written beside its destination and moved into place),
under Wine, against curl fetching the same URL into a file. Best of three
runs each; the ratio is our time over curl's.

The download program and the helper that trusts the test authority in the
bench prefix come from the optimised Windows build (target benches). The test
server is the tests' own (tests/fixtures/http)."""
import os
import re
import subprocess
import sys
import time

MEBIBYTES = 64
RUNS = 3


def sh(command, **kw):
    return subprocess.run(command, check=True, capture_output=True, text=True, **kw)


def wine_path(path):
    return "Z:" + path.replace("/", "\\")


def best_curl(url, target, extra):
    best = None
    for _ in range(RUNS):
        start = time.perf_counter()
        subprocess.run(["curl", "-sS", "-o", target, *extra, url], check=True)
        elapsed = (time.perf_counter() - start) * 1000
        best = elapsed if best is None else min(best, elapsed)
    if os.path.getsize(target) != MEBIBYTES * 1024 * 1024:
        raise SystemExit("curl fetched %d bytes" % os.path.getsize(target))
    return best


def main():
    env = dict(os.environ)
    root, x64, data = env["CORVAN_ROOT"], env["CORVAN_BENCH_X64"], env["CORVAN_BENCH_DATA"]
    bench = os.path.join(x64, "bench", "download_bench.exe")
    trust = os.path.join(x64, "bench", "bench_trust_root.exe")

    fixture = os.path.join(root, "tests", "fixtures", "http")
    started = sh([os.path.join(fixture, "start")], env=env)
    urls = dict(line.split("=", 1) for line in started.stdout.splitlines() if "=" in line)
    try:
        authority = os.path.join(env["WINEPREFIX"], "corvan-http", "authority.crt")
        sh(["wine", trust, wine_path(authority)], env=env)
        size = MEBIBYTES * 1024 * 1024
        target = os.path.join(data, "download.bin")
        failures = 0
        for label, base, curl_extra in (("HTTP ", urls["CORVAN_HTTP_URL"], []),
                                        ("HTTPS", urls["CORVAN_HTTPS_URL"], ["--cacert", authority])):
            url = "%ssize/%d" % (base, size)
            times = {}
            for mode in ("pump", "nopump"):
                run = subprocess.run(["wine", bench, url, wine_path(target), str(RUNS), mode], env=env,
                                     capture_output=True, text=True)
                found = re.search(r"best_ms=([0-9.]+)", run.stdout)
                if run.returncode != 0 or not found or os.path.getsize(target) != size:
                    print("  %s DownloadFile FAILED: %s" % (label, run.stdout + run.stderr))
                    failures += 1
                    break
                times[mode] = float(found.group(1))
                events = run.stdout.splitlines()[0]
            if len(times) != 2:
                continue
            curl = best_curl(url, target, curl_extra)
            ours = times["pump"]
            print("  %s %d MiB  DownloadFile %6.0f ms (%5.1f MiB/s)  curl %5.0f ms (%5.1f MiB/s)  ratio %.2f"
                  % (label, MEBIBYTES, ours, MEBIBYTES * 1000 / ours, curl, MEBIBYTES * 1000 / curl, ours / curl))
            print("        without the message pump: %.0f ms, ratio %.2f; %s"
                  % (times["nopump"], times["nopump"] / curl, events))
        return 1 if failures else 0
    finally:
        subprocess.run([os.path.join(fixture, "stop")], env=env)


if __name__ == "__main__":
    sys.exit(main())
