#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes one thing of a room at a time, and runs the room's tests: which changes do they not notice?

    mutate.py BUILD ROOM... [--sample N [--seed SEED]] [--part I/N] [--limit SECONDS]

BUILD is a directory that ninja has built. Neither it nor the source is changed: each mutant is a copy of one file, which is
found before the file itself; the objects that include it, and the programs that these are linked into, are made anew beside.
A mutant is

    refused   where it does not compile, or link
    the same  where it compiles to the same bytes
    killed    where a test fails, or does not end
    listed    where it lives, and survivors.txt says why that changes nothing that can be seen
    alive     else: the end is a failure

Of a run on one room, and all its files, results.txt keeps a line.

A line of survivors.txt is `FILE: LINE => NEW # REASON`, with what is changed between two @. What stands several times in a
file has an entry for each.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

from mutants import mutants_of

SOURCE = pathlib.Path(__file__).resolve().parents[2]
SURVIVORS = SOURCE / "tests/mutation/survivors.txt"
RESULTS = SOURCE / "tests/mutation/results.txt"
MEMORY = 8 << 30


class Mutant:
    def __init__(self, room, file, text, start, end, new):
        self.room, self.file, self.start, self.end, self.new = room, file, start, end, new
        self.line = text.count("\n", 0, start) + 1
        begin, stop = text.rfind("\n", 0, start) + 1, text.find("\n", end)
        old = " ".join(text[start:end].split())
        self.entry = f"{file}: {text[begin:start].lstrip()}@{old}@{text[end:stop].rstrip()} => {new or 'nothing'}"
        self.entry = " ".join(self.entry.split())

    def __str__(self):
        return f"{self.line}: {self.entry}"


def files_of(room):
    """What has bodies: sources, and headers that are not for people to read. The typed layer is headers alone."""
    for path in sorted((SOURCE / "mova" / room).rglob("*")):
        inner = path.parent.name in ("internal", "inline") or room in ("cxx", "checked")
        if path.suffix == ".cpp" or (path.suffix == ".h" and inner):
            yield str(path.relative_to(SOURCE))


def mutants_in(room):
    for file in files_of(room):
        text = (SOURCE / file).read_text()
        for start, end, new in mutants_of(text):
            yield Mutant(room, file, text, start, end, new)


def models_of(room):
    """The names of its families' models in the tests: ElementList."""
    for line in (SOURCE / "cmake/families.cmake").read_text().splitlines():
        row = line.strip().strip('")').split()
        if len(row) > 3 and row[1] == room and "model" in row[3:]:
            yield "".join(word.capitalize() for word in row[0].split("_"))


class Build:
    """What ninja and ctest know: how each object and program is made, of what, and which tests there are."""

    def __init__(self, directory, room):
        self.directory = directory.resolve()
        self.command = {}
        for edge in json.loads(self.ask("ninja", "-t", "compdb")):
            self.command.setdefault(edge["output"], edge["command"])
        self.headers = collections.defaultdict(set)
        for line in self.ask("ninja", "-t", "deps").splitlines():
            if line.startswith(" "):
                self.headers[of].add(os.path.normpath(self.directory / line.strip()))
            elif ":" in line:
                of = line.split(":")[0]
        self.parts = {}
        self.tests = list(self.room_tests(room))
        self.needed = set().union(*(self.parts_of(program) for test in self.tests for program in test.programs))

    def ask(self, *command):
        return subprocess.run(command, cwd=self.directory, stdout=subprocess.PIPE, text=True, check=True).stdout

    def parts_of(self, output):
        """All that is built for it, itself too."""
        if output not in self.parts:
            self.parts[output] = {output}
            for word in set(self.command[output].split()):
                if word in self.command and word != output:
                    self.parts[output] |= self.parts_of(word)
        return self.parts[output]

    def room_tests(self, room):
        filters = collections.defaultdict(list)
        alone = []
        found = self.tests_in(f"tests/{room}")
        models = [name for name in self.tests_in("tests/model")
                  if any(f"{model}Model." in name["name"] for model in models_of(room))]
        for test in found + models:
            command = test.get("command", [])
            programs = self.programs_in(command)
            environment = dict(setting.split("=", 1) for known in test.get("properties", [])
                               if known["name"] == "ENVIRONMENT" for setting in known["value"])
            chosen = [word for word in command if word.startswith("--gtest_filter=")]
            if chosen:
                filters[command[0], programs].append(chosen[0].removeprefix("--gtest_filter="))
            elif programs:
                alone.append(Test(test["name"], command, programs, environment))
        for (program, programs), names in filters.items():
            yield Test(pathlib.Path(program).name,
                       [program, "--gtest_fail_fast", "--gtest_brief=1", "--gtest_filter=" + ":".join(names)], programs, {})
        yield from alone

    def tests_in(self, directory):
        said = self.ask("ctest", "--test-dir", directory, "--show-only=json-v1")
        return [test for test in json.loads(said)["tests"] if "command" in test]

    def programs_in(self, command):
        names = (word.removeprefix(f"{self.directory}/") for text in command for word in re.split("[=;]", text))
        return tuple(name for name in names if name in self.command and not name.endswith((".o", ".cpp")))


class Test:
    def __init__(self, name, command, programs, environment):
        self.name, self.command, self.programs, self.environment = name, command, programs, environment
        self.seconds = None
        self.kills = 0
        self.lock = threading.Lock()

    def can_kill(self, place, build):
        """What fails as it is, under these limits, cannot: such tests of a program are left out. Tried, and timed, when it is
        first asked for."""
        with self.lock:
            while self.seconds is None:
                begin = time.monotonic()
                place.mkdir(exist_ok=True)
                said = tempfile.TemporaryFile("w+")
                if self.passes(place, build, 100, said):
                    self.seconds = time.monotonic() - begin
                elif not self.leave_out(said):
                    self.seconds = float("inf")
                    print(f"left out: {self.name}", flush=True)
        return self.seconds != float("inf")

    def leave_out(self, said):
        """Whether some of the program's tests go on without those that failed."""
        said.seek(0)
        failed = set(re.findall(r"^\[  FAILED  \] ([^ ,]+)", said.read(), re.MULTILINE))
        if not failed:
            return False
        print(f"left out: {', '.join(sorted(failed))}", flush=True)
        kept = [name for name in self.command[-1].removeprefix("--gtest_filter=").split(":") if name not in failed]
        self.command[-1] = "--gtest_filter=" + ":".join(kept)
        return bool(kept)

    def cost(self):
        """What a kill by it costs, as far as is known, with what linking it takes."""
        return (0.3 + (1 if self.seconds is None else self.seconds)) / (1 + self.kills)

    def passes(self, place, build, limit, said=subprocess.DEVNULL):
        """With the programs that lie in `place` before those of the build."""
        command = self.command
        for program in self.programs:
            if (place / program).exists():
                command = [word.replace(f"{build.directory}/{program}", str(place / program)) for word in command]
        libraries = ":".join(str(path) for path in {path.parent for path in place.rglob("*.so*")})
        environment = {**os.environ, **self.environment, "LD_LIBRARY_PATH": libraries, "MOVA_TEST_SEED": "1"}
        limited = ["prlimit", f"--as={MEMORY}", f"--cpu={int(limit)}", "--core=0", *command]
        started = subprocess.Popen(limited, cwd=place, env=environment, start_new_session=True, stdin=subprocess.DEVNULL,
                                   stdout=said, stderr=subprocess.DEVNULL)
        try:
            return started.wait(5 * limit) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(started.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            started.wait()


class Place:
    """A directory where one mutant at a time is made."""

    def __init__(self, build, path):
        self.build, self.path = build, path
        self.original = {}
        (path / "source").mkdir(parents=True)

    def clear(self):
        for name in self.path.iterdir():
            if name.is_dir():
                shutil.rmtree(name)

    def put(self, file, text):
        there = self.path / "source" / file
        there.parent.mkdir(parents=True, exist_ok=True)
        there.write_text(text)

    def compiled(self, output, file):
        """The object's bytes, or None. Without debug information, which would say where the change is."""
        words = shlex.split(self.build.command[output])
        while not re.search(r"(\+\+|cc|clang)(-[0-9]+)?$", words[0]):
            words.pop(0)
        object_ = self.path / output
        object_.parent.mkdir(parents=True, exist_ok=True)
        # What the object is made of is known already: no list of it is written.
        for option in ("-MF", "-MT"):
            if option in words:
                del words[words.index(option):words.index(option) + 2]
        words = [str(self.path / "source" / file) if word == str(SOURCE / file) else word
                 for word in words if word != "-MD"]
        words[words.index("-o") + 1] = str(object_)
        words[1:1] = [f"-I{self.path / 'source'}"]
        made = self.run(words + ["-O1", "-g0", "-w"])
        return object_.read_bytes() if made else None

    def run(self, words):
        return subprocess.run(words, cwd=self.build.directory, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode == 0

    def linked(self, output, changed):
        """Whether the program, or library, of changed parts can be made; it is then among the changed."""
        if output in changed or not self.build.parts_of(output) & changed:
            return True
        command = self.build.command[output]
        for word in set(command.split()):
            if word in self.build.command and word != output and not self.linked(word, changed):
                return False
        there = self.path / output
        there.parent.mkdir(parents=True, exist_ok=True)
        command = re.sub(r"\S+", lambda word: str(self.path / word[0]) if word[0] in changed | {output} else word[0], command)
        if not self.run(["sh", "-c", command]):
            return False
        # Libraries are looked for by a shorter name.
        short = re.sub(r"(\.so\.[0-9]+)\..*", r"\1", there.name)
        if short != there.name:
            (there.parent / short).symlink_to(there.name)
        changed.add(output)
        return True

    def objects_of(self, file):
        path = str(SOURCE / file)
        for output in sorted(self.build.needed):
            if output.endswith(".o") and path in self.build.headers[output]:
                # These bodies are no part of a test that calls the library for every function.
                if "/inline/" not in file or not ("tests/" in output and "-DMOVA_NO_INLINE" in self.build.command[output]):
                    yield output

    def fate(self, mutant):
        self.clear()
        text = (SOURCE / mutant.file).read_text()
        objects = list(self.objects_of(mutant.file))
        for output in objects:
            if (mutant.file, output) not in self.original:
                self.put(mutant.file, text)
                self.original[mutant.file, output] = self.compiled(output, mutant.file)
        self.put(mutant.file, text[:mutant.start] + mutant.new + text[mutant.end:])
        changed = set()
        for output in objects:
            made = self.compiled(output, mutant.file)
            if made is None:
                return "refused", ""
            if made != self.original[mutant.file, output]:
                changed.add(output)
        if not changed:
            return "the same", ""
        tried = False
        for test in sorted(self.build.tests, key=Test.cost):
            if not any(self.build.parts_of(program) & changed for program in test.programs):
                continue
            if not test.can_kill(self.path / "unchanged", self.build):
                continue
            tried = True
            if not all(self.linked(program, changed) for program in test.programs):
                return "refused", ""
            if not test.passes(self.path, self.build, 2 + 4 * test.seconds):
                test.kills += 1
                return "killed", test.name
        if not tried:
            sys.exit(f"there is nothing to notice a change of {mutant.file}")
        return "alive", ""


def listed():
    entries = collections.Counter()
    for number, line in enumerate(SURVIVORS.read_text().splitlines(), 1):
        if line and not line.startswith("#"):
            entry, mark, reason = line.rpartition(" # ")
            if not mark or not reason.strip():
                sys.exit(f"{SURVIVORS}:{number}: an entry without a reason")
            entries[entry.strip()] += 1
    return entries


def chosen(given, expected):
    mutants = [mutant for room in given.rooms for mutant in mutants_in(room) if (given.file or "") in mutant.file]
    if given.sample:
        # What is known to live, and headers, of which many objects are made, would take their time for little. Those that are
        # named are tried.
        mutants = [mutant for mutant in mutants
                   if (given.file or mutant.file.endswith(".cpp")) and mutant.entry not in expected]
        # By what they are, not by their numbers: so an edit elsewhere leaves the sample as it is.
        mutants = sorted(mutants, key=lambda mutant: hashlib.sha256(f"{given.seed} {mutant.entry}".encode()).digest())
        mutants = mutants[:given.sample]
    part, parts = map(int, given.part.split("/"))
    return mutants[part - 1::parts]


class Run:
    """The mutants of a room, one after another, on every processor."""

    def __init__(self, given, room, expected, end):
        self.build = Build(given.build, room)
        self.root = self.build.directory / "mutation" / f"{room}-{given.part.split('/')[0]}"
        shutil.rmtree(self.root, ignore_errors=True)
        self.places = queue.Queue()
        for number in range(len(os.sched_getaffinity(0))):
            self.places.put(Place(self.build, self.root / str(number)))
        self.expected, self.end = expected, end
        self.fates, self.lives, self.lock = collections.Counter(), collections.Counter(), threading.Lock()

    def decide(self, mutants):
        with concurrent.futures.ThreadPoolExecutor(self.places.qsize()) as pool:
            list(pool.map(self.decide_one, mutants))
        for place in list(self.places.queue):
            shutil.rmtree(place.path)
        return self.fates, self.lives

    def decide_one(self, mutant):
        if time.monotonic() > self.end:
            self.fates["not tried"] += 1
            return
        place = self.places.get()
        try:
            fate, by = place.fate(mutant)
        finally:
            self.places.put(place)
        with self.lock:
            if fate == "alive":
                self.lives[mutant.entry] += 1
                fate = "listed" if self.lives[mutant.entry] <= self.expected[mutant.entry] else fate
            self.fates[fate] += 1
            with (self.root / "fates").open("a") as log:
                print(f"{fate} {by}: {mutant}", file=log)
            if fate == "alive":
                print(f"alive: {mutant}", flush=True)


def write_result(room, words):
    lines = [line for line in RESULTS.read_text().splitlines() if not line.startswith(f"{room} ")]
    head = [line for line in lines if line.startswith("#")]
    RESULTS.write_text("\n".join(head + sorted([*lines[len(head):], f"{room} {words}"])) + "\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("rooms", nargs="+")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--part", default="1/1", help="the I-th of N parts of the mutants")
    parser.add_argument("--limit", type=float, default=float("inf"), help="begin none after so many seconds")
    parser.add_argument("--file", help="of these files alone: a part of their names")
    given = parser.parse_args()

    begin = time.monotonic()
    expected = listed()
    mutants = chosen(given, expected)
    fates, lives = collections.Counter(), collections.Counter()
    for room in given.rooms:
        of_room = [mutant for mutant in mutants if mutant.room == room]
        if of_room:
            more_fates, more_lives = Run(given, room, expected, begin + given.limit).decide(of_room)
            fates += more_fates
            lives += more_lives

    whole = not given.sample and given.part == "1/1" and not fates["not tried"]
    stale = [entry for entry, times in expected.items()
             if whole and entry.split("/")[1] in given.rooms and (given.file or "") in entry.split(":")[0] and lives[entry] < times]
    for entry in stale:
        print(f"listed, but noticed or no longer there: {entry}")
    decided = fates["killed"] + fates["listed"] + fates["alive"]
    print(f"{' '.join(given.rooms)}: {fates['killed']} of {decided} killed ({100 * fates['killed'] / max(decided, 1):.1f} %), "
          f"{fates['listed']} listed, {fates['alive']} alive; {fates['the same']} compile to the same, "
          f"{fates['refused']} to nothing, {fates['not tried']} not tried; {time.monotonic() - begin:.0f} s")
    if len(given.rooms) > 1:
        print(f"figure mutants.sample {fates['killed']} changes, of {decided} drawn from all rooms by each check, that a test notices")
    elif not given.file and given.part == "1/1":
        which = "that there are" if whole else "that were tried"
        write_result(given.rooms[0], f"{fates['killed']} changes of {given.rooms[0]}, of {decided} {which}, that a test notices; "
                                     f"listed: {fates['listed']}")
    sys.exit(1 if fates["alive"] or stale else 0)


if __name__ == "__main__":
    main()
