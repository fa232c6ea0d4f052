#!/usr/bin/env python3
"""./run demo: the client manager's main job on built-in defaults.

Makes a Wine prefix of its own, registers the control, publishes a sample
installer folder (real packages, the packing list written by scl) on a
loopback HTTPS server the prefix trusts, and runs CorvanClient.exe through a
fresh install, a check, an update and an uninstall. Prints what happens as it
happens, then a summary; exits non-zero when a step did not end as expected.
"""
import argparse
import os
import shutil
import subprocess
import sys
import time

sys.stdout.reconfigure(line_buffering=True)

PACKAGES = [
    # file, product name, install switch, uninstall switch, register
    ("corvan_test.msi", "Dealer Catalogue", "CORVANMARK=demo", "", 0),
    ("record_command_line.exe", "Parts Lookup", "/install /quiet", "/uninstall /quiet", 0),
    ("self_registering.dll", "Order Entry Control", "", "", 1),
    ("corvan_test.cab", "Price Tables", "", "", 0),
    ("corvan_test.mdb", "Dealer Database", "", "", 0),
]


class Demo:
    def __init__(self, root):
        self.root = root
        self.build = os.path.join(root, "build", "demo")
        self.prefix = os.path.join(self.build, "prefix")
        self.output = os.path.join(self.build, "output")
        self.env = dict(os.environ, WINEPREFIX=self.prefix, WINEDEBUG="-all", WINEDLLOVERRIDES="mscoree,mshtml=",
                        CORVAN_WINDOWS_BUILD=self.windows(os.path.join(root, "build", "x64")))
        self.drive_c = os.path.join(self.prefix, "drive_c")
        self.client_dir = os.path.join(self.drive_c, "CorvanDemo")
        self.results = []
        self.server_started = False

    @staticmethod
    def windows(path):
        return "Z:" + path.replace("/", "\\")

    def say(self, text):
        print(text)

    def wine(self, *args, check=True, loader="wine"):
        proc = subprocess.run([loader, *args], env=self.env, capture_output=True, text=True, errors="replace")
        if check and proc.returncode != 0:
            raise RuntimeError("%s %s failed (%d): %s" % (loader, " ".join(args), proc.returncode,
                                                          (proc.stdout + proc.stderr)[-2000:]))
        return proc

    def make_prefix(self):
        self.say("== a fresh Wine prefix in build/demo/prefix")
        subprocess.run(["wineserver", "-k"], env=self.env, capture_output=True)
        shutil.rmtree(self.build, ignore_errors=True)
        os.makedirs(self.prefix)
        os.makedirs(self.output)
        subprocess.run(["wineboot", "-i"], env=self.env, capture_output=True, check=True)
        self.wine("reg", "add", "HKCU\\Software\\Wine\\Drivers", "/v", "Graphics", "/d", "null", "/f")

    def start_server(self):
        self.say("== the sample installer server (HTTPS on 127.0.0.1, its authority trusted by the prefix)")
        proc = subprocess.run([os.path.join(self.root, "tests", "fixtures", "http", "start")], env=self.env,
                              capture_output=True, text=True, timeout=300)
        if proc.returncode != 0:
            raise RuntimeError("the server did not start: " + proc.stderr[-2000:])
        self.server_started = True
        for line in proc.stdout.splitlines():
            if "=" in line:
                key, value = line.split("=", 1)
                self.env[key] = value
        if self.env.get("CORVAN_TEST_AUTHORITY") != "trusted":
            raise RuntimeError("the prefix does not trust the server's test authority")
        state = os.path.join(self.prefix, "corvan-http")
        self.published = os.path.join(state, "published", "installer")
        self.request_log = os.path.join(state, "requests.log")
        os.makedirs(self.published, exist_ok=True)
        self.base_url = self.env["CORVAN_HTTPS_URL"] + "installer/installer/"
        self.say("   installer base URL " + self.base_url)

    def stop_server(self):
        if self.server_started:
            subprocess.run([os.path.join(self.root, "tests", "fixtures", "http", "stop")], env=self.env,
                           capture_output=True, timeout=120)
        subprocess.run(["wineserver", "-k"], env=self.env, capture_output=True)

    def install_client(self):
        self.say("== CorvanClient.exe and the control in C:\\CorvanDemo, the control registered")
        os.makedirs(self.client_dir)
        out = os.path.join(self.root, "out", "x64")
        for name in ("CorvanClient.exe", "CorvanInstaller.ocx"):
            shutil.copy(os.path.join(out, name), self.client_dir)
        # Wine's expand cannot extract a cabinet into a folder; the stand-in
        # beside the host is found first when the control runs "Expand".
        shutil.copy(os.path.join(self.root, "build", "x64", "tests", "expand.exe"), self.client_dir)
        self.wine("regsvr32", "/s", "C:\\CorvanDemo\\CorvanInstaller.ocx", loader="/usr/lib/wine/wine64")

    def publish(self, note):
        packages = os.path.join(self.root, "build", "x64", "tests", "packages")
        for name, *_ in PACKAGES:
            if not os.path.exists(os.path.join(self.published, name)):
                shutil.copy(os.path.join(packages, name), self.published)
        manifest = os.path.join(self.build, "manifest.toml")
        with open(manifest, "w") as f:
            f.write('[defaults]\nOS = "ALL"\nSource = "%s"\nInstallFolder = "C:\\\\TALO\\\\"\n'
                    'InstallGroup = "ALL"\nReleaseDate = "11/23/2026"\n\n' % self.base_url)
            for name, product, install, uninstall, register in PACKAGES:
                f.write('[[package]]\nFileName = "%s"\nProductname = "%s"\nDescription = "%s"\n'
                        'InstallSwitch = "%s"\nUninstallSwitch = "%s"\nRegister = %d\n\n'
                        % (name, product, product, install, uninstall, register))
        scl = os.path.join(self.root, "build", "native", "out", "scl")
        listing = os.path.join(self.published, "SC_Install.scl")
        subprocess.run([scl, "build", self.published, manifest, "-o", listing, "--quiet"], check=True)
        lint = subprocess.run([scl, "lint", listing, "--files", self.published], capture_output=True, text=True)
        if lint.returncode != 0:
            raise RuntimeError("scl lint found problems in the demo's list:\n" + lint.stdout + lint.stderr)
        self.say("   packing list written by scl build and clean under scl lint (%s)" % note)

    def requests(self, name):
        if not os.path.exists(self.request_log):
            return 0
        with open(self.request_log) as f:
            return sum(1 for line in f if line.startswith("GET /installer/installer/" + name + " "))

    def client(self, title, args, expected):
        self.say("== %s: CorvanClient %s" % (title, " ".join(args)))
        start = time.time()
        proc = subprocess.Popen(["wine", os.path.join(self.client_dir, "CorvanClient.exe"),
                                 "/url", self.base_url + "default.asp", "/groups", "Dealers", *args],
                                env=self.env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                errors="replace")
        for line in proc.stdout:
            print("   " + line.rstrip())
        code = proc.wait()
        elapsed = time.time() - start
        ok = code == expected
        self.results.append((title, code, expected, elapsed))
        if not ok:
            self.say("   !! exit code %d, expected %d" % (code, expected))
        step = os.path.join(self.output, "%d-%s" % (len(self.results), title.split()[0].lower()))
        os.makedirs(step)
        for name in ("SC_Install.log", "SC_Install.scl", "SC_Uninstall.scl", "ServerVersion.scl"):
            path = os.path.join(self.drive_c, "TALO", name)
            if os.path.exists(path):
                shutil.copy(path, step)
        return ok

    def talo_files(self):
        folder = os.path.join(self.drive_c, "TALO")
        return sorted(os.listdir(folder)) if os.path.isdir(folder) else []

    def run(self):
        self.make_prefix()
        self.start_server()
        self.install_client()
        self.publish("five packages")
        ok = self.client("Install", ["/mode", "1"], 0)
        installed = self.talo_files()
        ok &= self.client("Check", ["/check"], 0)

        # One package changes on the server: only it is fetched again.
        with open(os.path.join(self.published, "corvan_test.mdb"), "ab") as f:
            f.write(b"a new price table\r\n")
        others = [name for name, *_ in PACKAGES if name != "corvan_test.mdb"]
        before = self.requests("corvan_test.mdb")
        others_before = sum(self.requests(name) for name in others)
        self.publish("the database changed")
        ok &= self.client("Check after the change", ["/check"], 4)
        ok &= self.client("Update", ["/mode", "1"], 0)
        fetched = self.requests("corvan_test.mdb") - before
        others_fetched = sum(self.requests(name) for name in others) - others_before
        # The uninstall list holds what the last install pass installed (after
        # the update: only the database), so the help desk's full removal is
        # mode 4, which rebuilds that list from the local packing list first.
        ok &= self.client("Uninstall", ["/mode", "4"], 0)
        left = self.talo_files()
        backup = os.path.join(self.drive_c, "Temp", "Talo", "Backup")

        self.say("")
        self.say("== summary")
        for title, code, expected, elapsed in self.results:
            self.say("   %-24s exit %d (expected %d) %6.1f s%s" % (title, code, expected, elapsed,
                                                                  "" if code == expected else "   <- unexpected"))
        self.say("   installed in C:\\TALO: " + ", ".join(installed))
        self.say("   the update fetched corvan_test.mdb %d time(s) and the other packages %d time(s)"
                 % (fetched, others_fetched))
        self.say("   after the uninstall C:\\TALO holds: " + (", ".join(left) or "nothing"))
        saved = sorted(os.listdir(backup)) if os.path.isdir(backup) else []
        self.say("   databases saved to C:\\Temp\\Talo\\Backup: " + (", ".join(saved) or "none"))
        if "corvan_test.mdb" not in saved:
            self.say("   !! the uninstall should have saved the dealer's database")
            ok = False
        self.say("   install log and lists of every step: " + os.path.relpath(self.output, self.root))
        if fetched != 1:
            self.say("   !! the update should have fetched the changed package exactly once")
            ok = False
        return ok


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", required=True)
    args = parser.parse_args()
    demo = Demo(os.path.abspath(args.root))
    started = time.time()
    try:
        ok = demo.run()
    except (RuntimeError, subprocess.CalledProcessError, OSError) as e:
        print("demo failed: %s" % e)
        ok = False
    finally:
        demo.stop_server()
    print("demo %s in %.0f s" % ("finished" if ok else "FAILED", time.time() - started))
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
