# SPDX-License-Identifier: MIT
"""Runs the scoreboards of two versions in turns and prints our figures of both, row by row.

usage: turns.py OLD NEW TURNS [ROW...]     OLD and NEW are programs mova_bench
"""
import re
import statistics
import subprocess
import sys

LINE = re.compile(r"^([A-Z]\d+)\s+(.+?) +(\d+\.\d\d)(?: ±\d+ %)? +([A-Za-zµ]+)\b")


def words_of(program):
    """A version that can leave out the peers does so."""
    knows = subprocess.run([program, "--ours", "--list"], capture_output=True).returncode == 0
    return [program, "--quick"] + (["--ours"] if knows else [])


def run(words, samples):
    ended = subprocess.run(words, capture_output=True, text=True)
    if ended.returncode:
        sys.exit(f"turns: {words[0]}: {(ended.stderr or ended.stdout).strip().splitlines()[-1]}")
    for line in ended.stdout.splitlines():
        if found := LINE.match(line):
            row, workload, figure, unit = found.groups()
            samples.setdefault((row, workload, unit), []).append(float(figure))


def text_of(samples):
    """The median, and half the distance of the quartiles as a part of it."""
    low, median, high = statistics.quantiles(samples, n=4, method="inclusive")
    return median, (high - low) / 2 / median if median else 0.0


def main(old, new, turns, *rows):
    sides = {old: {}, new: {}}
    for _ in range(int(turns)):
        for program, samples in sides.items():
            run([*words_of(program), *rows], samples)
    print(f"{'row':4} {'workload':56} {'old':>18} {'new':>18}  old/new")
    for key, before in sides[old].items():
        after = sides[new].get(key)
        if not after:
            continue
        (was, was_spread), (is_now, now_spread) = text_of(before), text_of(after)
        ratio = was / is_now if is_now else float("nan")
        verdict = "" if abs(ratio - 1) > was_spread + now_spread else "  within the spread"
        print(f"{key[0]:4} {key[1]:56} {was:9.2f} ±{was_spread:4.0%} {key[2]} {is_now:9.2f} ±{now_spread:4.0%} {key[2]}"
              f"  {ratio:.2f}{verdict}")
    for key in sides[old].keys() ^ sides[new].keys():
        print(f"{key[0]:4} {key[1]:56} in one version only")


main(*sys.argv[1:])
