# SPDX-License-Identifier: MIT
"""Draws how cost grows: a picture for each family, with a curve for each contender.

usage: growth.py FIGURES DIRECTORY     FIGURES is what mova_bench --growth printed

Writes DIRECTORY/FAMILY.svg, and DIRECTORY/figures.csv with all figures, a line for each curve. Of families that were not
measured both stay as they are.
"""
import csv
import os
import re
import subprocess
import sys

SETTINGS = """
set terminal svg size {width},{height} font "sans,11" background "white" rounded
set output
set multiplot layout {rows},2 margins 0.07,0.98,{bottom},{top} spacing 0.09,{between}
set logscale xy
set format y "%g"
set xtics ({ticks})
set tics scale 0
set mxtics 1
set mytics 1
set grid xtics ytics lt 1 lc rgb "#dddddd" lw 0.5
set key top left Left reverse samplen 1.5 font ",9" noenhanced
set xrange [10:{most}]
"""
TICKS = ["10", "100", "1e3", "1e4", "1e5", "1e6", "1e7", "1e8"]
COLOURS = ["#c0271d", "#2b6cb0", "#3a9149", "#b7791f", "#805ad5"]
SHARED = [' stroke-linecap="round"', ' stroke-linejoin="round"', ' font-family="sans"']
CACHES = {"L1": "LEVEL1_DCACHE_SIZE", "L2": "LEVEL2_CACHE_SIZE", "L3": "LEVEL3_CACHE_SIZE"}


def cache_sizes():
    """In bytes; those of the machine that draws."""
    sizes = {}
    for name, variable in CACHES.items():
        said = subprocess.run(["getconf", variable], capture_output=True, text=True).stdout.strip()
        if said.isdigit() and int(said):
            sizes[name] = int(said)
    return sizes


def read_old(path):
    """What figures.csv says: {family: {operation: {contender: {items: figure}}}}"""
    families = {}
    if not os.path.exists(path):
        return families
    with open(path, newline="") as file:
        for line in csv.DictReader(row for row in file if not row.startswith("#")):
            curve = {int(items): float(figure) for items, figure in line.items() if items.isdigit() and figure}
            families.setdefault(line["family"], {}).setdefault(line["operation"], {})[line["contender"]] = curve
    return families


def read_new(path):
    families = {}
    with open(path, newline="") as file:
        for family, operation, contender, items, figure in csv.reader(file):
            curves = families.setdefault(family, {}).setdefault(operation, {})
            curves.setdefault(contender, {})[int(items)] = float(figure)
    return families


def write(path, families):
    sizes = sorted({items for operations in families.values() for curves in operations.values()
                    for curve in curves.values() for items in curve})
    with open(path, "w", newline="") as file:
        file.write("# SPDX-License-Identifier: MIT\n")
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(["family", "operation", "contender", *sizes])
        for family in sorted(families):
            for operation, curves in families[family].items():
                for contender, curve in curves.items():
                    writer.writerow([family, operation, contender, *(f"{curve[n]:.3g}" if n in curve else "" for n in sizes)])


def cache_marks(curves_of_bytes, most):
    """Lines where so many items of ours are as large as a cache."""
    ours = curves_of_bytes.get("mova")
    if not ours:
        return ""
    bytes_of_an_item = ours[max(ours)]
    marks = ""
    for name, size in cache_sizes().items():
        items = size / bytes_of_an_item
        if 10 < items < most:
            marks += f"set arrow from {items:.4g},graph 0 to {items:.4g},graph 1 nohead dt 2 lc rgb '#888888'\n"
            marks += f"set label '{name}' at {items:.4g},graph 0.04 offset 0.3,0 font ',9' tc rgb '#666666'\n"
    return marks


def plot_of(title, curves):
    text, data = f"set title '{title}' font ',12' offset 0,-0.6 noenhanced\n", ""
    figures = [figure for curve in curves.values() for figure in curve.values() if figure > 0] or [1]
    lowest, highest = min(figures), max(figures)
    text += f"set yrange [{lowest / 2:.3g}:{highest * 8:.3g}]\nplot "
    for i, (contender, curve) in enumerate(curves.items()):
        text += f"'-' with lines lw {2.5 if i == 0 else 1.3} lc rgb '{COLOURS[i]}' title '{contender}', "
        data += "".join(f"{items} {figure}\n" for items, figure in sorted(curve.items()) if figure > 0) + "e\n"
    return text[:-2] + "\n" + data


def tidied(svg):
    """The same picture in a third of the bytes: without empty groups, marks that nobody uses, and hundredths of a point, and
    with what all say said once."""
    head, rest = svg.split("\n", 1)
    rest = re.sub(r"<(path|use|circle)[^>]* id='gpPt[^>]*>\s*|<filter .*?</filter>\s*", "", rest, flags=re.DOTALL)
    for shared in SHARED:
        rest = rest.replace(shared, "")
    rest = rest.replace("<svg ", f"<svg{''.join(SHARED)} ", 1)
    rest = re.sub(r"\s*<g [^>]*>\s*</g>", "", rest)
    rest = re.sub(r"(\d\.\d)\d+", r"\1", rest)
    rest = re.sub(r"\s*\n\s*", "\n", rest)
    return f"{head}\n<!-- SPDX-License-Identifier: MIT -->\n{rest}"


def draw(family, operations, path):
    most = max(100, *(items for curves in operations.values() for curve in curves.values() for items in curve))
    rows = (len(operations) + 1) // 2
    height = 250 * rows
    script = SETTINGS.format(width=840, height=height, rows=rows, most=most, bottom=30 / height, top=1 - 25 / height,
                             between=60 / height, ticks=", ".join(f"'{text}' {text}" for text in TICKS))
    script += cache_marks(operations.get("bytes", {}), most)
    for operation, curves in operations.items():
        title = "bytes for an item" if operation == "bytes" else operation + " (ns)"
        script += plot_of(title, curves)
    drawn = subprocess.run(["gnuplot"], input=script + "unset multiplot\n", capture_output=True, text=True)
    if drawn.returncode or not drawn.stdout.startswith("<?xml"):
        sys.exit(f"growth: {family}: {drawn.stderr}")
    with open(path, "w") as file:
        file.write(tidied(drawn.stdout))


def main(figures, directory):
    os.makedirs(directory, exist_ok=True)
    table = os.path.join(directory, "figures.csv")
    new = read_new(figures)
    for family, operations in new.items():
        draw(family, operations, os.path.join(directory, family + ".svg"))
    write(table, read_old(table) | new)


main(*sys.argv[1:])
