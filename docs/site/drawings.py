# SPDX-License-Identifier: MIT
"""Turns drawings of text into SVG: boxes of + - |, arrows of - < > ^ v, slopes of / and \\; all else is text.

python3 drawings.py TEXT-FILE SVG-FILE   one drawing, as a picture of its own
"""
import html
import re
import sys

WIDTH, HEIGHT = 8, 17  # of a character

# What a picture of its own looks like where nothing around it says so; in a page it takes the page's colours.
ALONE = ("<style>svg{color:#1f2328;background:#fff}"
         "@media(prefers-color-scheme:dark){svg{color:#e6edf3;background:#0d1117}}</style>")


def is_drawing(lines):
    text = "\n".join(lines)
    return re.search(r"\+--|<->|-> null|\| \S.* \|", text) is not None


class Drawing:
    def __init__(self, lines):
        self.rows = [line.rstrip() for line in lines]
        self.columns = max(map(len, self.rows))

    def at(self, row, column):
        inside = 0 <= row < len(self.rows) and 0 <= column < len(self.rows[row])
        return self.rows[row][column] if inside else " "

    def is_level(self, row, column):
        """A dash that is part of a line, not a minus or a hyphen."""
        return self.at(row, column) == "-" and (
            self.at(row, column - 1) in "-+<|" or self.at(row, column + 1) in "-+>^|")

    def is_corner(self, row, column):
        return self.at(row, column) == "+" and (self.is_level(row, column - 1) or self.is_level(row, column + 1))

    def is_slope(self, row, column):
        return (self.at(row, column) in "/\\"
                and self.at(row, column - 1) == " " and self.at(row, column + 1) == " ")

    def joins_up(self, row, column):
        return self.at(row - 1, column) in "|^" or self.is_corner(row - 1, column)

    def joins_down(self, row, column):
        return self.at(row + 1, column) in "|v" or self.is_corner(row + 1, column)

    def stroke(self, row, column):
        """The path of a character that is part of a line, or null: it is text."""
        character = self.at(row, column)
        left, top = column * WIDTH, row * HEIGHT
        middle, level = left + WIDTH // 2, top + HEIGHT // 2
        if self.is_level(row, column):
            return f"M{left} {level}h{WIDTH}"
        if character == "|":
            return f"M{middle} {top}v{HEIGHT}"
        if self.is_corner(row, column):
            path = ""
            if self.is_level(row, column - 1):
                path += f"M{left} {level}H{middle}"
            if self.is_level(row, column + 1):
                path += f"M{middle} {level}h{WIDTH // 2}"
            if self.joins_up(row, column):
                path += f"M{middle} {level}V{top}"
            if self.joins_down(row, column):
                path += f"M{middle} {level}V{top + HEIGHT}"
            return path
        if character == "<" and self.is_level(row, column + 1):
            return f"M{left + WIDTH} {level}H{left + 1}m5 -4l-5 4l5 4"
        if character == ">" and self.is_level(row, column - 1):
            return f"M{left} {level}h{WIDTH - 1}m-5 -4l5 4l-5 4"
        if character == "v" and self.joins_up(row, column):
            return f"M{middle} {top}v{HEIGHT - 2}m-4 -5l4 5l4 -5"
        if character == "^" and (self.joins_down(row, column) or self.is_level(row, column - 1)
                                 or self.at(row - 1, column) in "-+"):
            side = f"M{left} {level}H{middle}" if self.is_level(row, column - 1) else f"M{middle} {top + HEIGHT}"
            return f"{side}V{top + 1}m-4 5l4 -5l4 5"
        if self.is_slope(row, column):
            return (f"M{left + WIDTH} {top}l-{WIDTH} {HEIGHT}" if character == "/"
                    else f"M{left} {top}l{WIDTH} {HEIGHT}")
        return None

    def svg(self, alone=False):
        paths, texts = [], []
        for row, line in enumerate(self.rows):
            rest = list(line)
            for column in range(len(line)):
                path = self.stroke(row, column)
                if path:
                    paths.append(path)
                    rest[column] = " "
            for run in re.finditer(r"\S+(?: \S+)*", "".join(rest)):
                text = run.group()
                texts.append(f'<text x="{run.start() * WIDTH}" y="{row * HEIGHT + 13}" '
                             f'textLength="{len(text) * WIDTH}">{html.escape(text)}</text>')
        width, height = self.columns * WIDTH + 2, len(self.rows) * HEIGHT + 2
        edge = 12 if alone else 0
        box = f'viewBox="{-edge - 1} {-edge - 1} {width + 2 * edge} {height + 2 * edge}"'
        size = f'width="{width + 2 * edge}" height="{height + 2 * edge}"'
        return (f'<svg xmlns="http://www.w3.org/2000/svg" class="drawing" role="img" {size} {box}>'
                + (ALONE if alone else "") +
                f'<path d="{"".join(paths)}" fill="none" stroke="currentColor" stroke-width="1.3"/>'
                f'<g fill="currentColor" font-family="monospace" font-size="13" xml:space="preserve">'
                + "".join(texts) + "</g></svg>")


def main(source, target):
    with open(source, encoding="utf-8") as file:
        lines = [line for line in file.read().rstrip("\n").split("\n") if not line.startswith("# SPDX")]
    with open(target, "w", encoding="utf-8") as file:
        file.write("<!-- SPDX-License-Identifier: MIT -->\n" + Drawing(lines).svg(alone=True) + "\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
