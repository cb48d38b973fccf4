#!/usr/bin/env python3
"""Plants small faults into product code, one at a time, and lists those that the suites let pass.

A fault counts as caught when a suite fails, crashes or runs out of time. All faults meet their folder's own suite first,
without its long tests; those that pass meet all of it, and the suites of the folders that stand on it, one after the
other, until one sees the fault. A fault that doesn't compile is replaced by another. The work is done in copies of the tree under build/mutants, which stay for the
next run; whatever a fault makes a test do, it can't write outside of them (Landlock, Linux 5.13 or later).
"""
import argparse
import concurrent.futures
import ctypes
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import threading
import time

import mutations

LAYERS = ["text", "errors", "automation", "platform", "objectmodel", "excelvalues", "addin"]
HOME = pathlib.Path(__file__).resolve().parent.parent
ROOM = HOME / "build" / "mutants"
# Tests that say the same again, take long, concern no code, or need a browser, which doesn't run in here.
LEFT_OUT = "german|lines_corpus|excelhost_example|excelhost_report"
LONG_TESTS = "*HundredThousand*"
CPU_SECONDS = 30  # of one test, however loaded the machine is: the longest takes ten
WALL_SECONDS = 120  # of one test that waits for what never comes
MEMORY = 8 << 30


class Suites:
    """Suites that are built and run together."""

    def __init__(self, targets, tests, left_out=""):
        self.targets = targets
        self.tests = f"^({'|'.join(tests)})"
        self.filter = f"-{left_out}"


def own_suites(folder, left_out=LONG_TESTS):
    return Suites([f"{folder}_tests"] + (["addin_hosted_tests"] if folder == "addin" else []), [folder], left_out)


def all_suites(folder):
    """The folder's own, and those of all that stands on it, from its neighbour to the example."""
    stages = [own_suites(layer, left_out="") for layer in LAYERS[LAYERS.index(folder) :]]
    stages.append(Suites(["excelhost_tests", "excelhost_program"], ["excelhost"]))
    if folder != "addin":
        stages.append(Suites(["example_object_model", "fuzzers"], ["example_object_model", "[a-z0-9]*_corpus"]))
    return stages


# ---- keeping a faulty program in its room ----

WRITING = {1: 0x1FF2, 2: 0x3FF2, 3: 0x7FF2}  # by Landlock's version: writing, removing, making, moving, shortening


class RulesetAttributes(ctypes.Structure):
    _fields_ = [("handled_access_fs", ctypes.c_uint64)]


class PathAttributes(ctypes.Structure):
    _pack_ = 1
    _fields_ = [("allowed_access", ctypes.c_uint64), ("parent_fd", ctypes.c_int32)]


LIBC = ctypes.CDLL(None, use_errno=True)
CREATE_RULESET, ADD_RULE, RESTRICT_SELF = 444, 445, 446
PR_SET_NO_NEW_PRIVS = 38


def landlock_version():
    return LIBC.syscall(CREATE_RULESET, None, ctypes.c_size_t(0), 1)


def confine(folder):
    """From here on this process and its children write in `folder` and to devices alone."""
    access = WRITING[min(landlock_version(), 3)]
    attributes = RulesetAttributes(access)
    ruleset = LIBC.syscall(CREATE_RULESET, ctypes.byref(attributes), ctypes.c_size_t(ctypes.sizeof(attributes)), 0)
    for allowed in (folder, "/dev"):
        rule = PathAttributes(access, os.open(allowed, os.O_PATH))
        if LIBC.syscall(ADD_RULE, ruleset, 1, ctypes.byref(rule), 0) != 0:
            raise OSError(ctypes.get_errno(), "landlock_add_rule")
    LIBC.prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0)
    if LIBC.syscall(RESTRICT_SELF, ruleset, 0) != 0:
        raise OSError(ctypes.get_errno(), "landlock_restrict_self")
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


# ---- one worker: a copy of the tree, its build, its tests ----


class Worker:
    def __init__(self, number):
        self.home = ROOM / str(number)
        self.tree = self.home / "tree"
        self.build = self.home / "build"
        self.scratch = self.home / "tmp"
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(self.home), CCACHE_NOHASHDIR="1", LC_ALL="C.UTF-8")

    def prepare(self):
        """Brings the copy to the state of the tree."""
        tracked = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=HOME,
                                 check=True, capture_output=True, text=True)
        wanted = {name for name in tracked.stdout.split("\0") if name and (HOME / name).is_file()}
        for name in wanted:
            source, copy = HOME / name, self.tree / name
            if not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)
        for copy in [path for path in self.tree.rglob("*") if path.is_file()]:
            if str(copy.relative_to(self.tree)) not in wanted:
                copy.unlink()
        if not self.run("cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=",
                        "-DCMAKE_CXX_FLAGS=-O0 -g0 -w -D_GLIBCXX_ASSERTIONS", f"-DKESTROLUMEN_TEST_TIMEOUT={WALL_SECONDS}"):
            sys.exit(f"mutants.py: the copy can't be configured; see {self.home / 'log'}")

    def pass_without_fault(self, stages):
        for suites in stages:
            if not self.compile(*suites.targets, jobs=os.cpu_count()):
                sys.exit(f"mutants.py: the tree doesn't build; see {self.home / 'log'}")
            if not self.test(suites):
                sys.exit(f"mutants.py: the suites fail before any fault is planted; see {self.home / 'log'}")

    def run(self, *command, **options):
        with open(self.home / "log", "wb") as log:
            return subprocess.run(command, env=self.environment, stdout=log, stderr=subprocess.STDOUT, **options).returncode == 0

    def compile(self, *targets, jobs=1):
        return self.run("cmake", "--build", self.build, "-j", str(jobs), "--target", *targets)

    def test(self, suites):
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir()
        self.environment.update(TMPDIR=str(self.scratch), GTEST_FAIL_FAST="1", GTEST_BRIEF="1",
                                GTEST_FILTER=suites.filter)
        return self.run("ctest", "--test-dir", self.build, "-R", suites.tests, "-E", LEFT_OUT, "--stop-on-failure",
                        "--no-tests=error", preexec_fn=lambda: confine(self.home))

    def verdict(self, mutant, stages):
        """'caught', 'survived', or None for one that doesn't compile."""
        path = self.tree / mutant.file
        sound = path.read_text()
        path.write_text(mutant.applied_to(sound))
        try:
            for suites in stages:
                if not self.compile(*suites.targets):
                    return None
                if not self.test(suites):
                    return "caught"
            return "survived"
        finally:
            path.write_text(sound)


# ---- the sample ----


def faults_of(tree, folder):
    faults = []
    for path in sorted((tree / folder).rglob("*")):
        if path.suffix in (".cpp", ".h"):
            name = str(path.relative_to(tree))
            faults += mutations.mutations_of(name, path.read_text())
    return faults


def shuffled(faults, seed):
    """In an order by chance that takes the kinds in turn, or constants would outweigh all else."""
    chance = random.Random(seed)
    kinds = {}
    for fault in faults:
        kinds.setdefault(fault.kind, []).append(fault)
    for group in kinds.values():
        chance.shuffle(group)
    order = []
    while any(kinds.values()):
        order += [group.pop() for group in kinds.values() if group]
    return order


class Trial:
    """Faults before suites: `count` of them get a verdict, those over stand in for what doesn't compile."""

    def __init__(self, faults, count, stages):
        self.waiting = sorted(faults[:count], key=lambda fault: (fault.file, fault.place))
        self.spare = faults[count:]
        self.stages = stages
        self.total = len(self.waiting)
        self.done = 0
        self.survivors = []
        self.lock = threading.Lock()
        self.started = time.monotonic()

    def run(self, workers):
        if not self.waiting:
            return
        targets = [target for suites in self.stages for target in suites.targets]
        print(f"building {', '.join(targets)}; running them without a fault ...", flush=True)
        for worker in workers:
            worker.pass_without_fault(self.stages)
        self.started = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor(len(workers)) as pool:
            for running in [pool.submit(self.work, worker) for worker in workers]:
                running.result()

    def work(self, worker):
        while True:
            with self.lock:
                if not self.waiting:
                    return
                mutant = self.waiting.pop(0)
            verdict = worker.verdict(mutant, self.stages)
            with self.lock:
                if verdict is None:
                    if self.spare:
                        self.waiting.append(self.spare.pop(0))
                    else:
                        self.total -= 1
                    continue
                self.done += 1
                if verdict == "survived":
                    self.survivors.append(mutant)
                print(f"[{self.done}/{self.total}, {time.monotonic() - self.started:.0f} s] {verdict}: {mutant}", flush=True)


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/test.sh mutants", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folders", nargs="*", metavar="FOLDER", help=f"of: {', '.join(LAYERS)}; all of them by default")
    parser.add_argument("--count", type=int, default=60, help="faults a folder (60)")
    parser.add_argument("--seed", type=int, default=1, help="another seed plants other faults (1)")
    parser.add_argument("--jobs", type=int, default=2, help="faults at a time, each in a copy of the tree (2)")
    parser.add_argument("--match", default="", metavar="PATTERN", help="only faults whose line below matches it")
    parser.add_argument("--own", action="store_true", help="runs the folder's own suite alone")
    parser.add_argument("--check", action="store_true", help=argparse.SUPPRESS)  # the names alone
    parser.add_argument("--list", action="store_true", help="lists the sample and plants nothing")
    options = parser.parse_args()
    for folder in options.folders:
        if folder not in LAYERS:
            parser.error(f"'{folder}' is none of: {', '.join(LAYERS)}")
    return options


def main():
    options = arguments()
    if options.check:
        return
    folders = options.folders or LAYERS

    def sample_of(tree, folder):
        return shuffled([fault for fault in faults_of(tree, folder) if re.search(options.match, str(fault))], options.seed)

    if options.list:
        for folder in folders:
            print(*sample_of(HOME, folder)[: options.count], sep="\n")
        return
    if landlock_version() < 1:
        sys.exit("mutants.py: this system has no Landlock, and without it a fault could remove files of yours")
    workers = [Worker(number + 1) for number in range(options.jobs)]
    for worker in workers:
        worker.home.mkdir(parents=True, exist_ok=True)
        worker.prepare()
    survivors = []
    planted = 0
    for folder in folders:
        print(f"== {folder}", flush=True)
        own = Trial(sample_of(workers[0].tree, folder), options.count, [own_suites(folder)])
        own.run(workers)
        all_of_them = Trial(own.survivors, len(own.survivors), all_suites(folder))
        if not options.own:
            all_of_them.run(workers)
        # A header's fault that only another folder can't compile is none: it is gone from the count.
        passed = own.survivors if options.own else all_of_them.survivors
        tried = own.done if options.own else own.done - len(own.survivors) + all_of_them.done
        planted += tried
        survivors += passed
        print(f"{folder}: {tried - len(passed)} of {tried} caught", flush=True)
    if survivors:
        print("\nSurvived:")
        print(*survivors, sep="\n")
    print(f"{planted - len(survivors)} of {planted} faults caught")


if __name__ == "__main__":
    main()
