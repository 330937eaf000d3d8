# SPDX-License-Identifier: MIT
"""Prepares what Doxygen reads: the public headers with their plain comments as its own, and the guides with links that it
follows. The headers themselves stay free of marks.

python3 prepare.py SOURCE DIRECTORY   writes DIRECTORY/mova/… and DIRECTORY/*.md
python3 prepare.py --headers SOURCE DIRECTORY   the headers of the C functions alone, for the manual
"""
import collections
import glob
import html
import os
import re
import shutil
import sys

import conventions
import drawings

LABELS = "Ownership|Errors|Failures|Threads|Cost|Units|Invariants?"


# ---- texts ----

FUNCTIONS = set()  # of the C headers


def escaped(prose):
    """What Doxygen would read as a mark, but for code between backticks; with links to the functions that are named."""
    parts = re.split(r"(`[^`]*`)", prose)
    for at in range(0, len(parts), 2):
        parts[at] = re.sub(r'[\\@&$#<>%*]', r"\\\g<0>", parts[at])
        parts[at] = re.sub(r"\b[A-Za-z]\w*_\w+\b", lambda found: f"[{found[0]}](@ref {found[0]})"
                           if found[0] in FUNCTIONS else found[0], parts[at])
    return "".join(parts)


def table_of(lines):
    """The cells of lines in columns, or null. A line whose first cell is empty, or set back, goes on with the row above."""
    width = max(map(len, lines))
    padded = [line.ljust(width + 2) for line in lines]
    starts = [0] + [at for at in range(2, width)
                    if all(line[at - 2:at] == "  " for line in padded) and any(line[at] != " " for line in padded)
                    and sum(line[at] != " " for line in padded) * 2 >= len(padded)]
    if len(starts) < 2:
        return None
    rows = []
    for line in padded:
        cells = [line[start:end].strip() for start, end in zip(starts, starts[1:] + [width + 2])]
        goes_on = rows and (not cells[0] or line.startswith("  "))
        if goes_on and (len(cells) < 3 or not all(cells[1:])):
            rows[-1] = [(above + " " + cell).strip() for above, cell in zip(rows[-1], cells)]
        else:
            rows.append(cells)
    return rows


def coded(text):
    return re.sub(r"`([^`]*)`", r"<code>\1</code>", html.escape(text, quote=False))


def block(lines):
    """A drawing, a table or code: as it stands for the manual, and as it reads best for the pages."""
    indent = min(len(line) - len(line.lstrip()) for line in lines if line)
    lines = [line[indent:] for line in lines]
    rows = None if drawings.is_drawing(lines) else table_of(lines)
    if drawings.is_drawing(lines):
        shown = '<div class="wide">' + drawings.Drawing(lines).svg() + "</div>"
    elif rows:
        head = rows[0][0] in ("edit", "group", "range", "keys", "a null answer") or rows[0][0].endswith("index")
        shown = "".join("<tr>" + "".join(f"<{tag}>{coded(cell)}</{tag}>" for cell in row) + "</tr>"
                        for row in rows for tag in ["th" if head and row is rows[0] else "td"])
        shown = f'<div class="wide"><table class="columns">{shown}</table></div>'
    else:
        shown = '<pre class="fragment">' + html.escape("\n".join(lines), quote=False) + "</pre>"
    plain = html.escape("\n".join(lines), quote=False)
    return f"@htmlonly[block]\n{shown}\n@endhtmlonly\n@xmlonly<verbatim>{plain}</verbatim>@endxmlonly"


def paragraphs(lines):
    """Yields ("block" | "item" | "prose", lines or text)."""
    at = 0
    while at < len(lines):
        line = lines[at]
        indent = len(line) - len(line.lstrip())
        if not line:
            at += 1
        elif indent >= 4:
            end = at
            while end < len(lines) and (not lines[end] or lines[end].startswith("    ")):
                end += 1
            while not lines[end - 1]:
                end -= 1
            yield "block", lines[at:end]
            at = end
        else:
            item = re.match(r" *(\d+\.|-) ", line)
            end = at + 1
            while end < len(lines) and lines[end] and not re.match(r" *(\d+\.|-) |Raises ", lines[end]) and (
                    not item or lines[end].startswith(" " * (indent + 2))):
                end += 1
            yield "item" if item else "prose", " ".join(each.strip() for each in lines[at:end])
            at = end


def text_of(comment):
    """The body of a comment, in Doxygen's words."""
    lines = comment.strip().split("\n")
    lines = [lines[0]] + [re.sub(r"^ {1,3}", "", line).rstrip() if line[:3].strip() == "" else line.strip()
                          for line in dedented(lines[1:])]
    out = []
    for kind, what in paragraphs(lines):
        if kind == "block":
            out.append(block(what))
        elif kind == "item":
            number, rest = what.split(" ", 1)
            out.append(f"{number} {escaped(rest)}")
        else:
            for part in re.split(rf"(?<=\.) (?=(?:{LABELS}): )|(?<=\.) (?=One thread at a time\.)", what):
                label = re.match(rf"((?:{LABELS})(?:, [^:]*)?): ", part)
                if part.startswith("One thread at a time"):
                    out.append(f"@par Threads\n{escaped(part)}")
                elif label and part[label.end():]:
                    rest = part[label.end():]
                    out.append(f"@par {label[1]}\n{escaped(rest[0].upper() + rest[1:])}")
                elif part.startswith("Raises "):
                    out.append(f"@par Raises\n{escaped(part[7].upper() + part[8:])}")
                else:
                    out.append(escaped(part))
    return joined(out)


def joined(parts):
    """Items follow each other without a blank line: else each would be a list of its own."""
    text = ""
    for part in parts:
        is_item = re.match(r"(\d+\.|-) ", part)
        text += ("" if not text else "\n" if is_item and was_item else "\n\n") + part
        was_item = is_item
    return text


def dedented(lines):
    """Of a comment that stands inside a scope, by the columns that it is set in there."""
    indents = [len(line) - len(line.lstrip()) for line in lines if line.strip()]
    less = max(0, min(indents) - 3) if indents else 0
    return [line[less:] for line in lines]


# ---- headers ----

class Header:
    """Passes once over a header, from comment to comment, and follows the scopes in between."""

    def __init__(self, text, in_c):
        self.in_c = in_c
        self.out = []
        self.scopes = []       # what each brace opened: "scope" or "body"
        self.names = []        # of the classes and records that the scopes are
        self.sections = []     # (depth, note) of the sections that are open
        self.since = ""        # the code since the last declaration ended
        self.shared = None     # the comment that declarations right below each other share
        self.parentheses = 0
        pieces = re.split(r"(/\*.*?\*/|//[^\n]*|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+')", text, flags=re.S)
        self.heads = 0
        for at, piece in enumerate(pieces):
            after = "".join(pieces[at + 1:at + 2])
            if piece.startswith("/*"):
                self.comment(piece[2:-2].strip(" "), after)
            elif piece[:1] in "\"'" and piece:
                self.add(piece)
            elif piece.startswith("//"):
                continue
            else:
                self.code(piece)
        self.close_sections(0)

    def add(self, text):
        self.out.append(text)

    def line_begun(self):
        return "".join(self.out[-200:]).rsplit("\n", 1)[-1]

    def in_body(self):
        return "body" in self.scopes or self.parentheses != 0

    def comment(self, text, after):
        begun = self.line_begun()
        if text.startswith("SPDX-License") or self.in_body():
            return
        if self.heads == 0 and not begun.strip():
            self.heads = 1
            self.add("/** @file\n" + text_of(text) + "\n*/")
        elif text.startswith("----"):
            self.section(text.strip("- \n"))
        elif begun.strip():
            self.trailing(begun, text)
        elif re.match(r"[ \t]*\n[ \t]*\n", after):
            if self.sections:
                depth, note = self.sections[-1]
                self.sections[-1] = (depth, (note + " " + " ".join(text.split())).strip())
        else:
            self.shared = text
            self.add(self.documented(text, after))

    def documented(self, text, before):
        note = self.sections[-1][1] if self.sections and self.in_c and not re.match(r"\s*(typedef )?(struct|enum)|\s*#", before) else ""
        return "/** " + text_of(text) + (f"\n\n{escaped(note)}" if note else "") + "\n*/"

    def trailing(self, begun, text):
        """Goes ahead of the line that it ends."""
        done = "".join(self.out)
        line = done[len(done) - len(begun):]
        blank = len(line) - len(line.lstrip())
        mark = "/** " + text_of(text[:1].upper() + text[1:]) + " */"
        several = re.match(r"((?:const |struct )*[\w:]+ )(\**\w+(?:, \**\w+)+);", line.lstrip())
        if line.lstrip().startswith("#"):
            mark += "\n"
        if several:
            line = " " * blank + f" {mark} ".join(f"{several[1]}{name};" for name in several[2].split(", "))
        self.out = [done[:len(done) - len(begun)] + line[:blank] + mark + " " + line[blank:]]

    def section(self, text):
        first, _, more = text.partition("\n")
        title, _, note = first.partition(": ")
        note, more = note.replace("----", "").strip(), more.replace("----", "").strip()
        note = " ".join((note.rstrip(".") + ". " + more if note and more else note + more).split())
        # What is said of each is said with each.
        if self.in_c:
            note = re.sub(r"^each (constructor )?", "", note).replace("none of these allocates", "allocates nothing")
        note = (note[0].upper() + note[1:]) if note else ""
        if note and not note.endswith("."):
            note += "."
        self.close_sections(len(self.scopes))
        self.sections.append((len(self.scopes), note))
        name = title[0].upper() + title[1:]
        told = f"\n\n{escaped(note)}\n" if note and not self.in_c else ""
        self.add(f"/** @name {escaped(name)}{told} */\n/** @{{ */\n")
        self.shared = None

    def close_sections(self, depth):
        while self.sections and self.sections[-1][0] >= depth:
            self.sections.pop()
            self.add("\n/** @} */\n")

    def code(self, text):
        at = 0
        while at < len(text):
            character = text[at]
            if character not in " \n\t#}" and not self.since.strip() and not self.in_body():
                self.undocumented(text[at:])
            if text.startswith("#pragma GCC visibility pop", at):
                self.close_sections(len(self.scopes))
            if character == "{":
                self.scopes.append(self.kind_of_scope())
                if self.scopes[-1] == "scope":
                    self.shared = None
            elif character == "}" and self.scopes:
                if not self.in_body():
                    self.close_sections(len(self.scopes))
                was = self.scopes.pop()
                self.names.pop()
                if was == "body" and not self.in_body():
                    self.add("}")
                    at += 1
                    at = self.end_declaration(text, at)
                    continue
            elif character == ":" and re.match(r"\s*(public|private)$", self.since):
                self.add(character)
                self.since = ""
                at += 1
                continue
            elif character in "()":
                self.parentheses += 1 if character == "(" else -1
            self.since = "" if character in "{};" else self.since + character
            self.add(character)
            at += 1
            if character == ";" and not self.in_body():
                at = self.end_declaration(text, at)

    def undocumented(self, text):
        """A declaration begins: where it has no comment, and a name that says all, it gets the text of that."""
        if self.in_c or re.search(r"\*/\s*$", "".join(self.out[-30:])) or re.match(r"(public|private|protected):", text):
            return
        said = self.meaning_of(text)
        if said:
            self.add(f"/** {escaped(said)} */ ")

    def meaning_of(self, text):
        declared = re.sub(r"requires\(.*?\)\) |requires !?\w+\S* ", "", self.without_templates(re.split(r"[;{]", text, 1)[0]))
        return conventions.meaning(" ".join(declared.split()), self.class_name())

    def class_name(self):
        return self.names[-1] if self.names else ""

    def end_declaration(self, text, at):
        """Whether what comes right below shares the comment."""
        next_one = re.match(r"\n([ \t]*)(?=[^\s/}#])", text[at:])
        if not next_one or not self.shared:
            if re.match(r"\s*\n\s*\n", text[at:]):
                self.shared = None
            return at
        declared = re.findall(r"(\w+|operator\S+)\s*\(", "".join(self.out[-900:]).rsplit("*/", 1)[-1])
        following = re.match(r"[^;{(]*?(\w+|operator\S+)\s*\(", text[at:])
        refused = not self.in_c and (self.meaning_of(text[at:]) or "").startswith("Refused")
        if self.in_c or (not refused and declared and following and declared[0] == following[1]):
            self.add("\n" + next_one[1] + self.documented(self.shared, text[at:]) + "\n")
            return at + 1
        self.shared = None
        return at

    @staticmethod
    def without_templates(head):
        return re.sub(r"template\s*<[^<>]*(?:<[^<>]*(?:<[^<>]*>[^<>]*)*>[^<>]*)*>", "", head)

    def kind_of_scope(self):
        head = re.sub(r"#[^\n]*", "", self.without_templates(self.since))
        self.names.append((re.findall(r"(?:struct|class) (?:__attribute__\S* )?(\w+)", head) or [""])[0])
        if re.match(r"\s*(typedef\s+)?(struct|class|enum|union|namespace|extern)\b", head):
            return "scope"
        return "body"

    def text(self):
        return "".join(self.out)


def public_headers(source, c_alone):
    for room in sorted(os.listdir(os.path.join(source, "mova"))):
        folder = os.path.join(source, "mova", room)
        if room == "checked":
            names = ["checked.h"]
        elif c_alone and room == "cxx":
            continue
        elif os.path.isdir(folder):
            names = sorted(name for name in os.listdir(folder) if name.endswith(".h"))
        elif room.endswith(".h") and not (c_alone and room == "cxx.h"):
            yield os.path.join("mova", room)
            continue
        else:
            continue
        for name in names:
            # How an iterator steps, and how bodies get into headers, is nobody's to call.
            if name not in ("iterator_step.h", "inline.h"):
                yield os.path.join("mova", room, name)


def collect_functions(source):
    for path in public_headers(source, c_alone=True):
        with open(os.path.join(source, path), encoding="utf-8") as file:
            FUNCTIONS.update(re.findall(r"^[A-Za-z_][\w ]*[ *]+(\w+)\(", file.read(), re.M))


def prepare_headers(source, directory, c_alone):
    collect_functions(source)
    for path in public_headers(source, c_alone):
        with open(os.path.join(source, path), encoding="utf-8") as file:
            # What the standard is told of a range, Doxygen does not understand.
            text = re.sub(r"template <[^;{]*std::ranges::enable_\w+<[^;]*;\n", "", file.read())
        # A member that is defined below its class is declared in it.
        text = re.sub(r"^template <[^\n]*\n[^\n{;]*>::\w+\([^\n;]*\n\{.*?^\}\n", "", text, flags=re.M | re.S)
        # What a class has for those that are built on it is no program's.
        text = re.sub(r"^( *)protected:", r"\1private:", text, flags=re.M)
        target = os.path.join(directory, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "w", encoding="utf-8") as file:
            file.write(Header(text, "/cxx" not in path).text())


# ---- guides ----

def guides(source):
    yield from (name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md"))
    yield from sorted(glob.glob("examples/**/README.md", root_dir=source, recursive=True))
    yield from sorted(os.path.join("docs", name) for name in os.listdir(os.path.join(source, "docs")) if name.endswith(".md"))


def page_of(path):
    return "guide_" + os.path.splitext(path)[0].replace("docs/", "").replace("/", "_").lower()


def slug(title):
    """As the pages of a repository name a heading."""
    return re.sub(r"[^\w\- ]", "", title.lower().replace("`", "")).strip().replace(" ", "-")


class Guide:
    def __init__(self, source, path, files):
        self.source, self.path, self.files = source, path, files
        with open(os.path.join(source, path), encoding="utf-8") as file:
            lines = file.read().split("\n")
        self.out, fenced, self.titles = [], False, collections.Counter()
        for line in lines:
            if line.startswith("```"):
                fenced = not fenced
                line = re.sub(r"^```(\w+)$", lambda found: "```{." + found[1] + "}", line)
            elif not fenced and not line.startswith("    ") and not line.startswith("<!--"):
                line = self.line(line)
            if not line.startswith("<!--"):
                self.out.append(line)

    def line(self, line):
        title = re.match(r"(#+) (.*)", line)
        if title:
            name, again = page_of(self.path), self.titles[slug(title[2])]
            if self.titles:
                name += f"_{slug(title[2])}" + (f"-{again}" if again else "")
            self.titles[slug(title[2])] += 1
            return f"{title[1]} {title[2]} {{#{name}}}"
        line = re.sub(r"(!?)\[([^][]*(?:\[[^][]*\][^][]*)*)\]\(([^)\s]+)\)", self.link, line)
        return line

    def link(self, found):
        image, text, target = found.groups()
        file, _, anchor = target.partition("#")
        if ":" in file:
            return found[0]
        path = os.path.normpath(os.path.join(os.path.dirname(self.path), file)) if file else self.path
        if path.endswith(".md"):
            name = page_of(path) + (f"_{anchor}" if anchor else "")
            return f"[{text}](@ref {name})"
        if re.match(r"mova/.*\.h$", path) and not image:
            return f"[{text}](@ref {path})"
        if not os.path.isfile(os.path.join(self.source, path)):
            return text
        self.files.add(path)
        place = "files/" + path + ("" if "." in os.path.basename(path) else ".txt")
        if image:
            return f'<img src="{place}" alt="{text}" class="picture"/>'
        return f'<a href="{place}">{text}</a>'


def prepare_guides(source, directory):
    files = set()
    for path in guides(source):
        target = os.path.join(directory, path if path == "README.md" else page_of(path) + ".md")
        with open(target, "w", encoding="utf-8") as file:
            file.write("\n".join(Guide(source, path, files).out))
    for path in files:
        target = os.path.join(directory, "html", "files", path + ("" if "." in os.path.basename(path) else ".txt"))
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(os.path.join(source, path), target)


# ---- examples ----

def examples(source):
    """The small programs, which the tests run."""
    for room in sorted(os.listdir(os.path.join(source, "examples"))):
        folder = os.path.join(source, "examples", room)
        if room != "atlas" and os.path.isdir(folder):
            for name in sorted(os.listdir(folder)):
                if name.endswith((".c", ".cpp")):
                    yield os.path.join(room, name)


def prepare_examples(source, directory):
    with open(os.path.join(directory, "examples.dox"), "w", encoding="utf-8") as file:
        for path in examples(source):
            with open(os.path.join(source, "examples", path), encoding="utf-8") as program:
                text = program.read()
            said = re.search(r"/\*(?! SPDX)(.*?)\*/", text, re.S)
            said = text_of(said[1].strip(" ")) if said else ""
            file.write(f"/** @example {path}\n{said}\n*/\n")


def main(arguments):
    c_alone = arguments[0] == "--headers"
    source, directory = arguments[-2:]
    shutil.rmtree(directory, ignore_errors=True)
    os.makedirs(directory)
    prepare_headers(source, directory, c_alone)
    if not c_alone:
        prepare_guides(source, directory)
        prepare_examples(source, directory)


if __name__ == "__main__":
    main(sys.argv[1:])
