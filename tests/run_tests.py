#!/usr/bin/env python3
"""Runs every test of the three builds (README, "Tests") and
prints the count of each build, then always, last, "N passed, N failed"."""
import argparse
import os
import re
import shutil
import subprocess
import sys
import time

sys.stdout.reconfigure(line_buffering=True)

SYSTEM_DLLS = {name + ".dll" for name in """kernel32 user32 gdi32 advapi32 ole32 oleaut32 shell32 shlwapi wininet
    comctl32 comdlg32 version msvcrt crypt32 urlmon uxtheme msi advpack setupapi userenv secur32 ws2_32 ntdll""".split()}
SYSTEM_DLLS.add("winspool.drv")
# The Wine loader that starts each architecture's built-in programs
# (regsvr32, reg) and so sees its registry view.
ARCHITECTURES = (("x64", "/usr/lib/wine/wine64", "x86_64-w64-mingw32"), ("x86", "/usr/lib/wine/wine", "i686-w64-mingw32"))

by_group = {}  # build -> [passed, failed], in the order first met
failures = []
group = "native"


def record(name, ok, detail="", quiet=True):
    by_group.setdefault(group, [0, 0])[0 if ok else 1] += 1
    if not ok:
        failures.append(name + (": " + detail if detail else ""))
    if not quiet:
        print("%-50s %s" % (name, "ok" if ok else "FAILED: " + detail))


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


def run_gtest(label, command, env, timeout):
    """One test program: a passed case counts once, a failed case once, a
    crash, hang or exit without a summary as one failure."""
    start = time.time()
    try:
        proc = subprocess.run(command, env=env, capture_output=True, timeout=timeout)
        out, code = (proc.stdout + proc.stderr).decode("latin-1"), proc.returncode
    except subprocess.TimeoutExpired as e:
        out, code = (e.stdout or b"").decode("latin-1"), None
    summaries = re.findall(r"^\[  PASSED  \] (\d+) tests?", out, re.M)
    passed = int(summaries[-1]) if summaries else 0
    cases = sorted(set(re.findall(r"^\[  FAILED  \] (\S+\.\S+)", out, re.M)))
    ok_run = code == 0 and not re.search(r"^\[  FAILED  \] \d+ tests?", out, re.M)
    for _ in range(passed):
        record(label, True)
    for case in cases:
        record(label + " " + case, False)
    if not ok_run and not cases:
        record(label, False, "timed out" if code is None else "exit code %s" % code)
    print("%-50s %3d passed, %d failed (%.1fs)" % (label, passed, len(cases) or (0 if ok_run else 1), time.time() - start))
    if not ok_run:
        sys.stdout.write(out[-20000:])


def read_list(path):
    if not os.path.exists(path):
        return []
    with open(path) as f:
        return [line.strip() for line in f if line.strip()]


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def make_prefix(env):
    run(["wineserver", "-k"], env=env)
    shutil.rmtree(env["WINEPREFIX"], ignore_errors=True)
    os.makedirs(env["WINEPREFIX"])
    # 64-bit, so that it runs both architectures, with the headless graphics
    # driver (windows, timers and FindWindow work without a display). Read
    # to the end, their output also waits for the server they started to go.
    for command in (["wineboot", "-i"], ["reg", "add", "HKCU\\Software\\Wine\\Drivers", "/v", "Graphics", "/d", "null", "/f"]):
        run([ARCHITECTURES[0][1]] + command, env=env, check=True)
    # One server for the whole run; its first program starts the prefix's
    # services, which stay and must not hold a test program's output pipes.
    quiet = {"env": env, "stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    subprocess.run(["wineserver", "-p"], check=True, **quiet)
    subprocess.run([ARCHITECTURES[0][1], "cmd", "/c", "exit"], check=True, **quiet)


def check_control(arch, loader, triple, out, env):
    """The architecture's control imports from system DLLs only, and its own
    regsvr32 registers it: its own registry view names that file."""
    dump = run([triple + "-objdump", "-p", os.path.join(out, "CorvanInstaller.ocx")]).stdout
    dlls = set(m.lower() for m in re.findall(r"DLL Name: (\S+)", dump))
    foreign = sorted(dlls - SYSTEM_DLLS) if dlls else ["(missing or unreadable)"]
    record("[%s] imports of out/%s/CorvanInstaller.ocx" % (arch, arch), not foreign, " ".join(foreign), False)
    if not env:
        return
    ocx = windows_path(os.path.join(out, "CorvanInstaller.ocx"))

    def default_value(key):
        match = re.search(r"REG_SZ\s+(.*\S)", run([loader, "reg", "query", key, "/ve"], env=env, timeout=120).stdout)
        return match.group(1) if match else ""

    code = run([loader, "regsvr32", "/s", ocx], env=env, timeout=120).returncode
    server = default_value("HKCR\\CLSID\\%s\\InprocServer32" % default_value("HKCR\\CorvanInstaller.ManageClient\\CLSID"))
    detail = ("regsvr32 exit code %d" % code if code else
              "" if server.lower() == ocx.lower() else "the %s registry view names %r as the server" % (arch, server))
    record("[%s] register out/%s/CorvanInstaller.ocx" % (arch, arch), not detail, detail, False)


def main():
    global group
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", required=True)
    parser.add_argument("--filter", default="", help="run only test programs whose path contains this")
    args = parser.parse_args()
    root = args.root

    print("== imports")
    # Windows XP SP3 exports every function the shipped binaries import; the
    # check proves itself first.
    proc = run([sys.executable, os.path.join(root, "tools", "check_xp_imports.py"), "--self-test", os.path.join(root, "out")])
    for line in proc.stdout.splitlines():
        print(line)
        record(line.partition(" ")[2], line.startswith("ok "))
    if proc.returncode != 0 and "FAILED" not in proc.stdout:
        record("XP import check", False, proc.stderr[-2000:])

    print("== native tests")
    env = dict(os.environ, ASAN_OPTIONS="detect_leaks=1")
    for binary in read_list(os.path.join(root, "build", "native", "test-binaries.txt")):
        if args.filter in binary:
            run_gtest(os.path.basename(binary), [binary], env, 600)

    print("== Windows tests under Wine")
    # No Mono or Gecko installer prompts; the fixtures' helpers come from the 64-bit build.
    wenv = dict(os.environ, WINEPREFIX=os.path.join(root, "build", "wine", "prefix"), WINEDEBUG="-all",
                WINEDLLOVERRIDES="mscoree,mshtml=", CORVAN_ROOT=windows_path(root), CORVAN_ROOT_UNIX=root,
                CORVAN_WINDOWS_BUILD=windows_path(os.path.join(root, "build", "x64")))
    make_prefix(wenv)
    group = "fixtures"
    # The test server's start returns once it answers; the KEY=VALUE lines it
    # prints join the environment of the test programs.
    server = os.path.join(root, "tests", "fixtures", "http")
    proc = run([os.path.join(server, "start")], env=wenv, timeout=300)
    record("fixture http", proc.returncode == 0, proc.stderr[-2000:], False)
    wenv.update(line.split("=", 1) for line in proc.stdout.splitlines() if re.match(r"^[A-Z_][A-Z0-9_]*=", line))
    try:
        for arch, loader, triple in ARCHITECTURES:
            group = arch
            build, out = os.path.join(root, "build", arch), os.path.join(root, "out", arch)
            if arch == "x86" and not os.access(loader, os.X_OK):
                check_control(arch, loader, triple, out, None)
                why = "32-bit Wine (wine32:i386) is not installed"
                if os.environ.get("CI") == "true":
                    record("[x86] tests", False, why + " on CI (./run deps installs it)", False)
                else:
                    print("[x86] tests skipped: %s; ./run deps --wine32 installs it" % why)
                continue
            print("== [%s] Windows tests" % arch)
            aenv = dict(wenv, CORVAN_OUT_DIR=windows_path(out), CORVAN_WINDOWS_BUILD=windows_path(build))
            start = time.time()
            check_control(arch, loader, triple, out, aenv)
            listing = os.path.join(build, "test-binaries.txt")
            if not os.path.exists(listing):
                record("[%s] test list" % arch, False, listing + " is missing (configure with: cmake --preset %s)" % arch)
            for binary in read_list(listing):
                if args.filter in binary:
                    run_gtest("[%s] %s" % (arch, os.path.basename(binary)), [loader, binary], aenv, 900)
            print("== [%s] %d passed, %d failed (%.0fs)" % (arch, *by_group[arch], time.time() - start))
    finally:
        run([os.path.join(server, "stop")], env=wenv, timeout=120)
        run(["wineserver", "-k"], env=wenv)

    if failures:
        print("== failures\n" + "\n".join("  " + f for f in failures))
    print("by build: " + ", ".join("[%s] %d passed, %d failed" % (g, *n) for g, n in by_group.items()))
    passed, failed = sum(n[0] for n in by_group.values()), sum(n[1] for n in by_group.values())
    print("%d passed, %d failed" % (passed, failed))
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
