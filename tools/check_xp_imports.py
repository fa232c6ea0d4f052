#!/usr/bin/env python3
"""Checks that Windows XP SP3 exports every function our binaries import.

    check_xp_imports.py FILE|FOLDER...   check the files (a folder: every .ocx,
                                         .exe and .dll below it); exits 1 when
                                         one imports a function XP lacks
    check_xp_imports.py --self-test ...  first proves the check: a DLL built
                                         here that imports GetTickCount64 must
                                         fail it, one that imports GetTickCount
                                         must pass
    check_xp_imports.py --make-list      rewrites the generated part of
                                         xp_later_functions.txt from the
                                         mingw-w64 headers

Prints one line per check, "ok <name>" or "FAILED <name>: <what>". The
functions XP lacks are listed in xp_later_functions.txt beside this script,
each with where it came from; msvcrt.dll's secure functions (names ending in
"_s"), which came with Vista's msvcrt.dll, are refused by rule.
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
LIST = os.path.join(HERE, "xp_later_functions.txt")
OBJDUMP = "x86_64-w64-mingw32-objdump"  # reads both pei-i386 and pei-x86-64

# The headers whose functions the generated list covers, with the libraries
# they declare: kernel32, advapi32, user32, gdi32 (windows.h and the api-set
# headers it includes), ws2_32, wininet, shell32, shlwapi, ole32, oleaut32,
# olepro32, comctl32, urlmon, crypt32, setupapi, userenv, msi, advpack, version.
HEADERS = ["winsock2.h", "windows.h", "wininet.h", "shlobj.h", "shellapi.h", "shlwapi.h", "ole2.h", "oleauto.h",
           "olectl.h", "commctrl.h", "urlmon.h", "wincrypt.h", "setupapi.h", "userenv.h", "msi.h", "advpub.h",
           "winver.h"]


def read_list():
    later = {}
    with open(LIST) as f:
        for line in f:
            line = line.split("#", 1)[0].strip()
            if line:
                name, _, source = line.partition(" ")
                later[name] = source.strip()
    return later


def imports(path):
    """[(dll, function)] from the file's import tables."""
    dump = subprocess.run([OBJDUMP, "-p", path], capture_output=True, text=True, check=True).stdout
    found, dll = [], None
    for line in dump.splitlines():
        m = re.match(r"\s*DLL Name: (\S+)", line)
        if m:
            dll = m.group(1)
            continue
        m = re.match(r"\t[0-9a-f]+\t\s*\d+\s+(\S+)$", line)
        if m and dll:
            found.append((dll, m.group(1)))
    return found


def later_imports(path, later):
    bad = []
    for dll, function in imports(path):
        if function in later:
            bad.append("%s (%s; %s)" % (function, dll, later[function]))
        elif dll.lower() == "msvcrt.dll" and function.endswith("_s"):
            bad.append("%s (%s; secure CRT, msvcrt.dll of Vista)" % (function, dll))
    return bad


def check(paths, later, label=None):
    ok = True
    for path in paths:
        name = label or os.path.relpath(path)
        try:
            bad = later_imports(path, later)
        except (OSError, subprocess.CalledProcessError) as e:
            bad = ["cannot read its imports: %s" % e]
        if bad:
            ok = False
            print("FAILED %s: imports what Windows XP SP3 does not export: %s" % (name, ", ".join(bad)))
        else:
            print("ok %s" % name)
    return ok


def self_test(later):
    """The check must refuse a DLL built with a later function and pass one built without."""
    source = ("#include <windows.h>\n"
              "__declspec(dllexport) unsigned long long Ticks(void) { return %s(); }\n")
    ok = True
    with tempfile.TemporaryDirectory() as folder:
        for function, must_pass in (("GetTickCount64", False), ("GetTickCount", True)):
            c = os.path.join(folder, function + ".c")
            dll = os.path.join(folder, function + ".dll")
            with open(c, "w") as f:
                f.write(source % function)
            subprocess.run(["i686-w64-mingw32-gcc", "-D_WIN32_WINNT=0x0600", "-shared", "-o", dll, c], check=True)
            passed = not later_imports(dll, later)
            name = "XP import check %s a DLL importing %s" % ("passes" if must_pass else "refuses", function)
            print(("ok %s" if passed == must_pass else "FAILED %s: the check got it wrong") % name)
            ok = ok and passed == must_pass
    return ok


def declared(version):
    """{function: header} the mingw-w64 headers declare with _WIN32_WINNT at `version`."""
    with tempfile.TemporaryDirectory() as folder:
        c = os.path.join(folder, "all.c")
        aux = os.path.join(folder, "aux.txt")
        with open(c, "w") as f:
            f.writelines("#include <%s>\n" % h for h in HEADERS)
        subprocess.run(["i686-w64-mingw32-gcc", "-c", "-w", "-D_WIN32_WINNT=" + version, "-DWINVER=" + version,
                        "-DNTDDI_VERSION=" + version + "0000", "-aux-info", aux, c, "-o", os.devnull], check=True)
        functions = {}
        with open(aux) as f:
            for line in f:
                m = re.match(r"/\* (\S+):\d+:NC \*/ .*?(\w+) \((?!\()", line)
                if m:
                    functions[m.group(2)] = os.path.basename(m.group(1))
        return functions


def make_list():
    """Rewrites the generated part of the list; the entries taken from the documentation stay."""
    documented = []
    with open(LIST) as f:
        for line in f:
            if line.strip() and not line.startswith("#") and not line.split("#")[0].strip().endswith(".h"):
                documented.append(line)
    xp, later = declared("0x0502"), declared("0x0A00")
    generated = sorted((name, header) for name, header in later.items() if name not in xp)
    with open(LIST) as f:
        head = []
        for line in f:
            if not line.startswith("#"):
                break
            head.append(line)
    with open(LIST, "w") as f:
        f.writelines(head)
        f.writelines(documented)
        f.writelines("%s %s\n" % entry for entry in generated)
    print("%d functions from the headers, %d from the documentation" % (len(generated), len(documented)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("paths", nargs="*")
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("--make-list", action="store_true")
    args = parser.parse_args()
    if args.make_list:
        make_list()
        return 0
    later = read_list()
    ok = self_test(later) if args.self_test else True
    files = []
    for path in args.paths:
        if os.path.isdir(path):
            for folder, _, names in sorted(os.walk(path)):
                files += [os.path.join(folder, n) for n in sorted(names) if n.lower().endswith((".ocx", ".exe", ".dll"))]
        else:
            files.append(path)
    ok = check(files, later) and ok
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
