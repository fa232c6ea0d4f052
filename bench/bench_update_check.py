#!/usr/bin/env python3
"""The update check a page makes before it offers an update: NeedToInstall on
an installed machine, which downloads the server's packing list and compares
it with the local one, for lists of 10,000 and 100,000 rows, once with the
lists equal and once with 1% of the rows changed (another CRC). Each time is
the best of three runs and is given as a ratio to the time of downloading the
same list alone (clsFTP::DownloadFile) in the same run, with the peak memory
of the process that did it. Goals: at most 2x at 10,000 rows; the time per
row at 100,000 within 1.3x of that at 10,000."""
import os
import re
import subprocess
import sys

RUNS = 3
SIZES = (10_000, 100_000)


def sh(command, **kw):
    return subprocess.run(command, check=True, capture_output=True, text=True, **kw)


def wine_path(path):
    return "Z:" + path.replace("/", "\\")


def unix_path(path):
    return path[2:].replace("\\", "/") if path.startswith("Z:") else path


def row(i, url, changed=False):
    crc = "%X" % ((i * 2654435761 + (7 if changed else 0)) & 0xFFFFFFFF)
    return ("ALL,%s,component_%06d.dll,1.0.%d,01/01/2005,%s,Component %d of the client,Corvan Connect,0,,,,"
            "C:\\TALO\\,Dealers,1,0,component_%06d.dll" % (url, i, i, crc, i, i))


def measure(bench, url, mode, env):
    run = subprocess.run(["wine", bench, url, str(RUNS), mode], env=env, capture_output=True, text=True)
    found = re.search(r"best_ms=([0-9.]+) answer=(\w+) peak_bytes=(\d+)", run.stdout)
    if run.returncode != 0 or not found:
        raise SystemExit("update_check_bench %s failed: %s" % (mode, run.stdout + run.stderr))
    return float(found.group(1)), found.group(2), int(found.group(3))


def main():
    env = dict(os.environ)
    root, x64 = env["CORVAN_ROOT"], env["CORVAN_BENCH_X64"]
    bench = os.path.join(x64, "bench", "update_check_bench.exe")
    trust = os.path.join(x64, "bench", "bench_trust_root.exe")
    fixture = os.path.join(root, "tests", "fixtures", "http")
    started = sh([os.path.join(fixture, "start")], env=env)
    urls = dict(line.split("=", 1) for line in started.stdout.splitlines() if "=" in line)
    talo = os.path.join(env["WINEPREFIX"], "drive_c", "TALO")
    try:
        sh(["wine", trust, wine_path(os.path.join(env["WINEPREFIX"], "corvan-http", "authority.crt"))], env=env)
        published = unix_path(urls["CORVAN_INSTALLER_DIR"])
        per_row = {}
        for rows in SIZES:
            lists = {}
            for kind in ("equal", "changed"):
                name = "bench-update-%d-%s" % (rows, kind)
                url = urls["CORVAN_HTTPS_URL"] + "installer/" + name + "/"
                source = urls["CORVAN_HTTPS_URL"] + "installer/packages/"
                text = "".join(row(i, source, kind == "changed" and i % 100 == 0) + "\r\n" for i in range(rows))
                os.makedirs(os.path.join(published, name), exist_ok=True)
                with open(os.path.join(published, name, "SC_Install.scl"), "w", newline="") as f:
                    f.write(text)
                lists[kind] = (url, text)
            os.makedirs(talo, exist_ok=True)
            with open(os.path.join(talo, "SC_Install.scl"), "w", newline="") as f:
                f.write(lists["equal"][1])
            size_mb = len(lists["equal"][1]) / 1e6
            download, _, download_peak = measure(bench, lists["equal"][0], "download", env)
            print("  %7d rows (%.1f MB)  download alone %7.0f ms, peak %4.0f MB"
                  % (rows, size_mb, download, download_peak / 1e6))
            for kind, wanted in (("equal", "False"), ("changed", "True")):
                check, answer, peak = measure(bench, lists[kind][0], "check", env)
                if answer != wanted:
                    print("  NeedToInstall answered %s with the lists %s" % (answer, kind))
                    return 1
                per_row[(rows, kind)] = check / rows
                print("      lists %-7s NeedToInstall %7.0f ms  ratio %.2f  %.2f us/row  peak %4.0f MB"
                      % (kind, check, check / download, check * 1000 / rows, peak / 1e6))
        for kind in ("equal", "changed"):
            print("  time per row at %d rows / at %d rows, lists %s: %.2f"
                  % (SIZES[1], SIZES[0], kind, per_row[(SIZES[1], kind)] / per_row[(SIZES[0], kind)]))
        return 0
    finally:
        subprocess.run([os.path.join(fixture, "stop")], env=env)


if __name__ == "__main__":
    sys.exit(main())
