#!/usr/bin/env python3
"""Runs the libFuzzer targets of the fuzz build, one after another.

Each target runs in one process (no -jobs, no -workers: the machine is
shared) over a working corpus in <build>/corpus/<target>, seeded with the
kept corpus tests/fuzz/<target>/. Prints the runs and the time of each
target; a crash, a sanitizer report or a broken rule stops that target, its
input is left in <build>/artifacts/<target>/ and the run fails. With
--save-corpus the kept corpus is replaced by the minimal set (-merge=1) of
kept and new inputs that reaches the same code, plus the inputs that once
found a fault (crash-*), which always stay.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import time

sys.stdout.reconfigure(line_buffering=True)

# The longest input each target is given: a few rows, a number, a line;
# longer inputs reach no more code and only slow the run on a shared
# machine. Status information is tried at every length up to 4 KB.
MAX_LEN = {"transfer_texts": 4096, "conversions": 256, "registry_line": 512, "list_comparison": 384,
           "scl_lint": 384}
DEFAULT_MAX_LEN = 256


def run(command, log):
    with open(log, "w") as out:
        return subprocess.run(command, stdout=out, stderr=subprocess.STDOUT).returncode


def tail(path, lines=40):
    with open(path, errors="replace") as f:
        return "".join(f.readlines()[-lines:])


def fuzz_one(root, build, target, runs):
    program = os.path.join(build, "fuzzers", "fuzz_" + target)
    kept = os.path.join(root, "tests", "fuzz", target)
    work = os.path.join(build, "corpus", target)
    artifacts = os.path.join(build, "artifacts", target) + os.sep
    logs = os.path.join(build, "logs")
    for folder in (work, artifacts, logs):
        os.makedirs(folder, exist_ok=True)
    for name in os.listdir(kept):
        if not os.path.exists(os.path.join(work, name)):
            shutil.copy(os.path.join(kept, name), work)
    command = [program, "-runs=%d" % runs, "-max_len=%d" % MAX_LEN.get(target, DEFAULT_MAX_LEN),
               "-artifact_prefix=" + artifacts, "-print_final_stats=1"]
    dictionary = os.path.join(root, "tests", "fuzz", "dict", target + ".dict")
    if os.path.exists(dictionary):
        command.append("-dict=" + dictionary)
    log = os.path.join(logs, target + ".log")
    start = time.time()
    code = run(command + [work], log)
    seconds = time.time() - start
    text = open(log, errors="replace").read()
    done = re.findall(r"stat::number_of_executed_units: (\d+)", text)
    executed = int(done[-1]) if done else 0
    return code, executed, seconds, log


def save_corpus(root, build, target):
    """Replaces tests/fuzz/<target>/ by the minimal set of kept and new inputs."""
    program = os.path.join(build, "fuzzers", "fuzz_" + target)
    kept = os.path.join(root, "tests", "fuzz", target)
    merged = os.path.join(build, "merged", target)
    shutil.rmtree(merged, ignore_errors=True)
    os.makedirs(merged)
    log = os.path.join(build, "logs", target + "-merge.log")
    code = run([program, "-merge=1", "-max_len=%d" % MAX_LEN.get(target, DEFAULT_MAX_LEN), merged, kept,
                os.path.join(build, "corpus", target)], log)
    if code != 0 or not os.listdir(merged):
        print("  merge of %s failed, kept corpus left as it was; see %s" % (target, log))
        return False
    # Inputs that once found a fault stay, whatever coverage they add.
    for name in os.listdir(kept):
        if name.startswith("crash-"):
            shutil.copy(os.path.join(kept, name), merged)
    shutil.rmtree(kept)
    shutil.copytree(merged, kept)
    print("  %s: kept corpus now %d inputs" % (target, len(os.listdir(kept))))
    return True


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", required=True)
    parser.add_argument("--build", required=True)
    parser.add_argument("--runs", type=int, default=10_000_000)
    parser.add_argument("--save-corpus", action="store_true")
    parser.add_argument("targets", nargs="*")
    args = parser.parse_args()
    with open(os.path.join(args.build, "fuzz-targets.txt")) as f:
        known = [line.strip() for line in f if line.strip()]
    unknown = [t for t in args.targets if t not in known]
    if unknown:
        print("unknown fuzz target(s): %s (known: %s)" % (" ".join(unknown), " ".join(known)))
        return 2
    targets = args.targets or known

    failed = []
    print("%-18s %12s %10s  %s" % ("target", "runs", "seconds", "result"))
    for target in targets:
        code, executed, seconds, log = fuzz_one(args.root, args.build, target, args.runs)
        ok = code == 0 and executed >= args.runs
        print("%-18s %12d %10.0f  %s" % (target, executed, seconds, "ok" if ok else "FAILED (exit %d)" % code))
        if not ok:
            failed.append(target)
            sys.stdout.write(tail(log))
            print("  log: %s; inputs: %s" % (log, os.path.join(args.build, "artifacts", target)))
        elif args.save_corpus:
            save_corpus(args.root, args.build, target)
    print("%d targets ran, %d failed" % (len(targets), len(failed)))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
