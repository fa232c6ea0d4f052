#!/usr/bin/env python3
"""Runs every test of the three builds and prints the total.

Native test programs run directly. The Windows test programs of both
architectures run under Wine in one 64-bit (WoW64) prefix of this run's own,
made fresh under build/wine: each build's list, with each control registered
by its own regsvr32 first. Results of the Windows builds are named and counted
per architecture ("[x64]", "[x86]"). Both .ocx files are checked to import
system DLLs only. The last line printed is always "N passed, N failed".
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import time

sys.stdout.reconfigure(line_buffering=True)

SYSTEM_DLLS = {
    "kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "ole32.dll", "oleaut32.dll",
    "shell32.dll", "shlwapi.dll", "wininet.dll", "comctl32.dll", "comdlg32.dll", "version.dll",
    "msvcrt.dll", "crypt32.dll", "urlmon.dll", "winspool.drv", "uxtheme.dll", "msi.dll",
    "advpack.dll", "setupapi.dll", "userenv.dll", "secur32.dll", "ws2_32.dll", "ntdll.dll",
}

# The Windows architectures: the Wine loader that starts their built-in
# programs (regsvr32, reg, cscript) and the 32-bit view of the registry.
WINE64 = "/usr/lib/wine/wine64"
WINE32 = "/usr/lib/wine/wine"
ARCHITECTURES = (("x64", WINE64), ("x86", WINE32))
ENABLE_WINE32 = "./run deps --wine32"

passed = 0
failed = 0
failures = []
by_group = {}  # "native", "x64", "x86", "fixtures" -> [passed, failed], in the order first met
group = "native"


def record(name, ok, detail=""):
    global passed, failed
    counts = by_group.setdefault(group, [0, 0])
    if ok:
        passed += 1
        counts[0] += 1
    else:
        failed += 1
        counts[1] += 1
        failures.append(name + (": " + detail if detail else ""))


def check_imports(root):
    global group
    for arch, triple in (("x64", "x86_64-w64-mingw32"), ("x86", "i686-w64-mingw32")):
        group = arch
        ocx = os.path.join(root, "out", arch, "CorvanInstaller.ocx")
        name = "[%s] imports of out/%s/CorvanInstaller.ocx" % (arch, arch)
        if not os.path.exists(ocx):
            record(name, False, "missing")
            continue
        dump = subprocess.run([triple + "-objdump", "-p", ocx], capture_output=True, text=True).stdout
        dlls = sorted(set(m.lower() for m in re.findall(r"DLL Name: (\S+)", dump)))
        foreign = [d for d in dlls if d not in SYSTEM_DLLS]
        record(name, not foreign, "imports " + ", ".join(foreign))
        print("%-50s %s" % (name, "ok: " + " ".join(dlls) if not foreign else "FAILED: " + " ".join(foreign)))
    group = "native"


def check_xp_floor(root):
    """Windows XP SP3 exports every function the shipped binaries import; the check proves itself first."""
    proc = subprocess.run([sys.executable, os.path.join(root, "tools", "check_xp_imports.py"), "--self-test",
                           os.path.join(root, "out")], capture_output=True, text=True)
    for line in proc.stdout.splitlines():
        print(line)
        record(line.partition(" ")[2], line.startswith("ok "))
    if proc.returncode != 0 and "FAILED" not in proc.stdout:
        record("XP import check", False, proc.stderr[-2000:])


SUMMARY = re.compile(r"^\[  (PASSED|FAILED)  \] (\d+) tests?", re.M)
FAILED_CASE = re.compile(r"^\[  FAILED  \] (\S+\.\S+)", re.M)


def run_gtest(label, command, env, timeout):
    start = time.time()
    try:
        proc = subprocess.run(command, env=env, capture_output=True, timeout=timeout)
        out = proc.stdout.decode("latin-1") + proc.stderr.decode("latin-1")
        code = proc.returncode
    except subprocess.TimeoutExpired as e:
        out = (e.stdout or b"").decode("latin-1")
        code = None
    counts = {"PASSED": 0, "FAILED": 0}
    for kind, n in SUMMARY.findall(out):
        counts[kind] = int(n)
    cases = sorted(set(FAILED_CASE.findall(out)))
    ok_run = code == 0 and counts["FAILED"] == 0
    for _ in range(counts["PASSED"]):
        record(label, True)
    for case in cases:
        record(label + " " + case, False)
    if not ok_run and not cases:
        # A crash, a hang or an exit without a summary counts as one failure.
        record(label, False, "timed out" if code is None else "exit code %s" % code)
    elapsed = time.time() - start
    print("%-50s %3d passed, %d failed (%.1fs)" % (label, counts["PASSED"], len(cases) or (0 if ok_run else 1), elapsed))
    if not ok_run:
        sys.stdout.write(out[-20000:])


def read_list(path):
    if not os.path.exists(path):
        return []
    with open(path) as f:
        return [line.strip() for line in f if line.strip()]


def make_prefix(root, env):
    prefix = env["WINEPREFIX"]
    subprocess.run(["wineserver", "-k"], env=env, capture_output=True)
    shutil.rmtree(prefix, ignore_errors=True)
    os.makedirs(prefix)
    # A 64-bit prefix: it runs 64-bit and, with 32-bit Wine installed, 32-bit programs.
    subprocess.run([WINE64, "wineboot", "-i"], env=env, capture_output=True, check=True)
    # The headless graphics driver: windows, timers and FindWindow work
    # without a display.
    subprocess.run([WINE64, "reg", "add", "HKCU\\Software\\Wine\\Drivers", "/v", "Graphics", "/d", "null", "/f"],
                   env=env, capture_output=True, check=True)
    # One server for the whole run, instead of one started (with the prefix's
    # services) for every test program.
    # Its first program starts the prefix's services, which then stay: they
    # must not hold the output pipes of a program the runner reads.
    quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    subprocess.run(["wineserver", "-p"], env=env, check=True, **quiet)
    subprocess.run([WINE64, "cmd", "/c", "exit"], env=env, check=True, **quiet)


def wine32_missing():
    """Why 32-bit programs cannot run here, or "" when they can."""
    if not os.access(WINE32, os.X_OK):
        return "32-bit Wine (wine32:i386) is not installed"
    return ""


def register_control(arch, loader, out, env):
    """Registers the architecture's control with its own regsvr32 and checks
    that its own registry view names that file."""
    name = "[%s] register out/%s/CorvanInstaller.ocx" % (arch, arch)
    ocx = windows_path(os.path.join(out, "CorvanInstaller.ocx"))
    reg = subprocess.run([loader, "regsvr32", "/s", ocx], env=env, capture_output=True, timeout=120)
    detail = "regsvr32 exit code %d" % reg.returncode if reg.returncode != 0 else ""
    if not detail:
        progid = query_default(loader, "HKCR\\CorvanInstaller.ManageClient\\CLSID", env)
        server = query_default(loader, "HKCR\\CLSID\\%s\\InprocServer32" % progid, env) if progid else ""
        if server.lower() != ocx.lower():
            detail = "the %s registry view names %r as the server" % (arch, server)
    record(name, not detail, detail)
    print("%-50s %s" % (name, "FAILED: " + detail if detail else "ok"))


def query_default(loader, key, env):
    proc = subprocess.run([loader, "reg", "query", key, "/ve"], env=env, capture_output=True, text=True,
                          timeout=120)
    match = re.search(r"REG_SZ\s+(.*\S)", proc.stdout)
    return match.group(1) if match else ""


def start_fixtures(root, env):
    """Starts the services the Windows tests use.

    Every executable tests/fixtures/<name>/start is run with the test
    environment (WINEPREFIX among it) and must return once its service is
    ready. Lines KEY=VALUE that it prints are added to the environment of the
    test programs. tests/fixtures/<name>/stop is run at the end.
    """
    started = []
    fixtures = os.path.join(root, "tests", "fixtures")
    if not os.path.isdir(fixtures):
        return started
    for name in sorted(os.listdir(fixtures)):
        start = os.path.join(fixtures, name, "start")
        if not os.access(start, os.X_OK):
            continue
        proc = subprocess.run([start], env=env, capture_output=True, text=True, timeout=300)
        ok = proc.returncode == 0
        record("fixture " + name, ok, proc.stderr[-2000:])
        print("%-50s %s" % ("fixture " + name, "started" if ok else "FAILED"))
        if not ok:
            sys.stdout.write(proc.stdout[-4000:] + proc.stderr[-4000:])
        for line in proc.stdout.splitlines():
            if re.match(r"^[A-Z_][A-Z0-9_]*=", line):
                key, value = line.split("=", 1)
                env[key] = value
        started.append(os.path.join(fixtures, name))
    return started


def stop_fixtures(started, env):
    for folder in started:
        stop = os.path.join(folder, "stop")
        if os.access(stop, os.X_OK):
            subprocess.run([stop], env=env, capture_output=True, timeout=120)


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", required=True)
    parser.add_argument("--filter", default="", help="run only test programs whose path contains this")
    parser.add_argument("--native", help="native build folder (default build/native)")
    parser.add_argument("--windows", help="64-bit Windows build folder (default build/x64)")
    parser.add_argument("--out", help="folder of the 64-bit shipped binaries (default out/x64)")
    parser.add_argument("--windows32", help="32-bit Windows build folder (default build/x86)")
    parser.add_argument("--out32", help="folder of the 32-bit shipped binaries (default out/x86)")
    parser.add_argument("--prefix", help="Wine prefix to make and use (default build/wine/prefix)")
    args = parser.parse_args()
    root = args.root
    native = args.native or os.path.join(root, "build", "native")
    builds = {"x64": args.windows or os.path.join(root, "build", "x64"),
              "x86": args.windows32 or os.path.join(root, "build", "x86")}
    outs = {"x64": args.out or os.path.join(root, "out", "x64"),
            "x86": args.out32 or os.path.join(root, "out", "x86")}
    prefix = args.prefix or os.path.join(root, "build", "wine", "prefix")

    print("== imports")
    check_imports(root)
    check_xp_floor(root)

    print("== native tests")
    env = dict(os.environ)
    env["ASAN_OPTIONS"] = "detect_leaks=1"
    for binary in read_list(os.path.join(native, "test-binaries.txt")):
        if args.filter in binary:
            run_gtest(os.path.basename(binary), [binary], env, 600)

    print("== Windows tests under Wine")
    wenv = dict(os.environ)
    wenv["WINEPREFIX"] = os.path.abspath(prefix)
    wenv["WINEDEBUG"] = "-all"
    wenv["WINEDLLOVERRIDES"] = "mscoree,mshtml="  # no Mono or Gecko installer prompts
    wenv["CORVAN_ROOT"] = windows_path(root)
    wenv["CORVAN_ROOT_UNIX"] = root
    # The fixtures' helpers come from the 64-bit build.
    wenv["CORVAN_WINDOWS_BUILD"] = windows_path(os.path.abspath(builds["x64"]))
    make_prefix(root, wenv)
    global group
    group = "fixtures"
    started = start_fixtures(root, wenv)
    try:
        for arch, loader in ARCHITECTURES:
            group = arch
            by_group.setdefault(arch, [0, 0])
            if arch == "x86" and wine32_missing():
                why = wine32_missing()
                if os.environ.get("CI") == "true":
                    record("[x86] tests", False, why + " on CI")
                    print("[x86] tests FAILED: %s (CI installs it with ./run deps)" % why)
                else:
                    print("[x86] tests skipped: %s; %s installs it" % (why, ENABLE_WINE32))
                continue
            print("== [%s] Windows tests" % arch)
            aenv = dict(wenv)
            aenv["CORVAN_OUT_DIR"] = windows_path(os.path.abspath(outs[arch]))
            aenv["CORVAN_WINDOWS_BUILD"] = windows_path(os.path.abspath(builds[arch]))
            start = time.time()
            register_control(arch, loader, outs[arch], aenv)
            listing = os.path.join(builds[arch], "test-binaries.txt")
            if not os.path.exists(listing):
                record("[%s] test list" % arch, False, listing + " is missing (configure with: cmake --preset %s)"
                       % arch)
            for binary in read_list(listing):
                if args.filter in binary:
                    run_gtest("[%s] %s" % (arch, os.path.basename(binary)), [loader, binary], aenv, 900)
            print("== [%s] %d passed, %d failed (%.0fs)" % (arch, by_group[arch][0], by_group[arch][1],
                                                         time.time() - start))
    finally:
        group = "native"
        stop_fixtures(started, wenv)
        subprocess.run(["wineserver", "-k"], env=wenv, capture_output=True)

    if failures:
        print("== failures")
        for f in failures:
            print("  " + f)
    print("by build: " + ", ".join("[%s] %d passed, %d failed" % (g, by_group[g][0], by_group[g][1])
                                   for g in by_group))
    print("%d passed, %d failed" % (passed, failed))
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
