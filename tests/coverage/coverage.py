#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what the tests reached of mova/ with the list of what cannot be reached.

    coverage.py BUILD LIST [--mcdc]

BUILD was compiled by clang with -fprofile-instr-generate -fcoverage-mapping, and its tests have run: the counters lie in
BUILD/profiles. Whatever a test reached in one program, or in one instantiation of a template, is reached.

A line of LIST is `FILE: WHAT: TEXT # REASON`. The text is the source's, so that entries outlive other edits:

    never: free_all();                       the code that begins there, or at an @, does not run
    never true: if (@head@ && head->next)    what stands between the two @ is not true, or not false
    never alone: if (@head@ && head->next)   no two tests show that this condition alone decides

With --mcdc the last are compared, else the others: counters of conditions are not shared with files while the program runs, so
that of children that abort there are none.

What stands several times in a file has an entry for each. The end is a failure where an entry is missing, or was reached; but
for what begins with `perhaps never`, which depends on chance (how threads meet, where the system maps).
"""
import argparse
import collections
import json
import pathlib
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parents[2]
CODE = 0  # the kind of a region that is no macro, gap or branch


def tool(name, *arguments):
    run = subprocess.run([f"{name}-19", *map(str, arguments)], capture_output=True, check=False)
    if run.returncode != 0:
        sys.exit(f"{name}-19 ended with {run.returncode}: {run.stderr.decode()}")
    return run.stdout


def instrumented_programs(build):
    """Programs and libraries that are mapped, those with the most functions first. A function is read from one of them."""
    for path in build.rglob("*"):
        if path.is_file() and not path.is_symlink() and path.suffix not in (".o", ".a", ".gch", ".pch"):
            with path.open("rb") as file:
                if file.read(4) == b"\x7fELF" and b"__llvm_covmap" in file.read():
                    yield path


def within(inner, outer):
    """Of (first line, column, last line, column)."""
    return outer[:2] <= inner[:2] and inner[2:] <= outer[2:]


class Reached:
    """What each place of the library's files was counted as, over all programs and instantiations."""

    def __init__(self):
        self.code = collections.Counter()        # (file, place): times
        self.branches = {}                       # (file, place): [times true, times false]
        self.alone = {}                          # (file, decision's place): [condition shown]
        self.conditions = collections.defaultdict(set)  # (file, decision's place): its conditions' places

    def add(self, function):
        names = [self.name_of(name) for name in function["filenames"]]
        # What a macro adds to a function that nothing calls is not said besides.
        regions = [(names[region[5]], tuple(region[:4]), region[4]) for region in function["regions"]
                   if region[7] == CODE and names[region[5]] and (function["count"] or region[5] == 0)]
        for name, place, count in regions:
            self.code[name, place] += count
        for *place, true, false, file, _, _ in function["branches"]:
            # Of what a macro asks, the place has no extent: those are assertions.
            if names[file] and place[:2] != place[2:] and not self.is_constant(regions, names[file], tuple(place), true, false):
                times = self.branches.setdefault((names[file], tuple(place)), [0, 0])
                times[0] += true
                times[1] += false
        for *place, _, _, shown in function.get("mcdc_records", []):
            self.add_decision(regions, tuple(place[:4]), shown)

    def add_decision(self, regions, place, shown):
        """The record does not say which file it is of: that of the function, whose code is around it."""
        for name in {name for name, around, _ in regions if within(place, around)}:
            before = self.alone.setdefault((name, place), [False] * len(shown))
            self.alone[name, place] = [old or new for old, new in zip(before, shown)]

    @staticmethod
    def is_constant(regions, name, place, true, false):
        """A condition that the compiler knows has no counts, though the code around it runs."""
        if true or false:
            return False
        around = [region for region in regions if region[0] == name and within(place, region[1])]
        return bool(around) and max(around, key=lambda region: (region[1][:2], [-end for end in region[1][2:]]))[2] > 0

    @staticmethod
    def name_of(path):
        try:
            name = str(pathlib.Path(path).resolve().relative_to(SOURCE))
        except ValueError:
            return None
        return name if name.startswith("mova/") else None


class Texts:
    def __init__(self):
        self.files = {}

    def lines(self, name):
        if name not in self.files:
            self.files[name] = (SOURCE / name).read_text().split("\n")
        return self.files[name]

    def line(self, name, place):
        """Of a body that begins with a brace alone, the line before."""
        lines = self.lines(name)
        line = lines[place[0] - 1].strip()
        if line == "{":
            return lines[place[0] - 2].strip()
        before = lines[place[0] - 1][:place[1] - 1]
        return f"{before}@{lines[place[0] - 1][place[1] - 1:]}".strip() if before.strip() else line

    def marked(self, name, place):
        """The line, with what is asked between two @."""
        line = self.lines(name)[place[0] - 1]
        end = place[3] - 1 if place[2] == place[0] else len(line)
        return f"{line[:place[1] - 1]}@{line[place[1] - 1:end]}@{line[end:]}".strip()


def unreached(reached, texts, mcdc):
    """Yields (entry, line number) for what was not reached; of what lies in code that did not run, the code alone."""
    dead = collections.defaultdict(list)
    for (name, place), count in sorted(reached.code.items(), key=lambda item: (item[0][0], item[0][1][:2],
                                                                               [-end for end in item[0][1][2:]])):
        if count == 0 and not any(within(place, outer) for outer in dead[name]):
            dead[name].append(place)
            yield f"{name}: never: {texts.line(name, place)}", place[0]
    for (name, place), times in sorted(reached.branches.items()):
        if not any(within(place, outer) for outer in dead[name]):
            for count, side in zip(times, ("true", "false")):
                if count == 0:
                    yield f"{name}: never {side}: {texts.marked(name, place)}", place[0]
    for (name, place), shown in sorted(reached.alone.items() if mcdc else []):
        if any(within(place, outer) for outer in dead[name]):
            continue
        conditions = sorted(branch for file, branch in reached.branches if file == name and within(branch, place))
        for at, alone in enumerate(shown):
            if not alone:
                asked = conditions[at] if len(conditions) == len(shown) else place
                yield f"{name}: never alone: {texts.marked(name, asked)}", asked[0]


def figures(reached, mcdc):
    lines = {}
    for (name, place), count in sorted(reached.code.items(), key=lambda item: item[0]):
        # The lines of inner code are said anew; the line that it begins in is reached where either is.
        for line in range(place[0], place[2] + 1):
            before = lines.get((name, line), 0)
            lines[name, line] = max(before, count) if line in (place[0], place[2]) else count
    sides = [count for times in reached.branches.values() for count in times]
    of = {"lines": lines.values(), "branches": sides}
    if mcdc:
        of["conditions"] = [shown for record in reached.alone.values() for shown in record]
    for word, counts in of.items():
        done = sum(1 for count in counts if count)
        yield f"{word}: {100 * done / max(len(counts), 1):.2f} % ({done} of {len(counts)})"


def listed(path):
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line and not line.startswith("#"):
            entry, mark, reason = line.rpartition(" # ")
            if not mark or not reason.strip():
                sys.exit(f"{path}:{number}: an entry without a reason")
            yield entry.strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("--mcdc", action="store_true")
    given = parser.parse_args()

    profile = given.build / "profile"
    tool("llvm-profdata", "merge", "-o", profile, *(given.build / "profiles").glob("*.profraw"))
    reached = Reached()
    programs = sorted(instrumented_programs(given.build), key=lambda path: -path.stat().st_size)
    for program in programs:
        export = json.loads(tool("llvm-cov", "export", "--instr-profile", profile, program))
        for function in export["data"][0]["functions"]:
            reached.add(function)

    texts = Texts()
    found = collections.defaultdict(list)
    for entry, line in unreached(reached, texts, given.mcdc):
        if given.mcdc == ("never alone: " in entry):
            found[entry].append(line)
    expected, by_chance = collections.Counter(), collections.Counter()
    for entry in listed(given.list):
        if given.mcdc == ("never alone: " in entry):
            (by_chance if ": perhaps " in entry else expected)[entry.replace(": perhaps ", ": ", 1)] += 1
    wrong = 0
    for entry in sorted(found.keys() | expected.keys()):
        times, said = len(found.get(entry, [])), expected[entry]
        if times > said + by_chance[entry]:
            wrong += 1
            print(f"not reached, {times} times in line {', '.join(map(str, found[entry]))}, listed {said} times: {entry}")
        elif times < said:
            wrong += 1
            print(f"reached after all, or no longer there; listed {said} times, found {times} times: {entry}")
    for line in figures(reached, given.mcdc):
        print(line)
    print(f"listed: {sum(expected.values())} places that no test can reach, {sum(by_chance.values())} that chance decides")
    if not given.mcdc: # the list's, which are the same in every run
        print(f"figure coverage.unreachable {sum(expected.values())} places that no test can reach, each with the reason")
        print(f"figure coverage.chance {sum(by_chance.values())} places that chance decides")
    sys.exit(f"{wrong} differences from {given.list}" if wrong else 0)


if __name__ == "__main__":
    main()
