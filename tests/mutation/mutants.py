# SPDX-License-Identifier: MIT
"""What is changed in a source in C++, one thing at a time: `mutants_of(text)` yields (start, end, new text).

A small lexer is enough, since the sources are formatted: what stands between two blanks is a binary operator, what does not is
part of a type or unary. A change that makes no program is sorted out by the compiler.
"""
import re

TOKEN = re.compile(
    r"""(?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
      | (?P<text>(?:u8|[uUL])?R"(?P<raw>[^(]*)\(.*?\)(?P=raw)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])+')
      | (?P<number>\.?[0-9](?:[eEpP][+-]|['.\w])*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><=>|<<=|>>=|->\*|\.\.\.|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\[\[|\]\]|.)""",
    re.VERBOSE | re.MULTILINE | re.DOTALL)

# What an operator between blanks becomes.
BINARY = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",), "&": ("|",), "|": ("&",), "^": ("|",),
    "<<": (">>",), ">>": ("<<",), "&&": ("||",), "||": ("&&",), "+=": ("-=",), "-=": ("+=",), "*=": ("/=",),
    "/=": ("*=",), "%=": ("/=",), "&=": ("|=",), "|=": ("&=",), "^=": ("|=",), "<<=": (">>=",), ">>=": ("<<=",)}
# What one that stands before or behind its operand becomes.
UNARY = {"!": "", "~": "", "++": "--", "--": "++"}
LINKS = {"next": "prev", "prev": "next", "first": "last", "last": "first", "left": "right", "right": "left",
         "before": "after", "after": "before", "head": "tail", "tail": "head", "below": "above", "above": "below"}
# What stands in the parentheses behind these does nothing that a program can see, or is no code.
NOT_CODE = {"assert", "static_assert", "MOVA_ASSERT", "alignas", "__attribute__", "decltype", "noexcept", "requires",
            "MOVA_ANNOTATED"}
CONDITIONS = {"if", "while"}
# No statement that could be left out begins with these.
NO_STATEMENT = {"return", "if", "for", "while", "do", "switch", "case", "default", "using", "typedef", "struct", "class",
                "enum", "union", "const", "constexpr", "static", "auto", "template", "public", "private", "protected",
                "goto", "extern", "inline", "namespace", "friend", "else", "try", "catch", "operator", "explicit",
                "virtual", "mutable", "static_assert", "assert", "MOVA_ASSERT", "thread_local", "requires", "concept"}


class Token:
    def __init__(self, match):
        self.kind, self.text, self.start, self.end = match.lastgroup, match.group(), match.start(), match.end()


def tokens_of(text):
    found = []
    for match in TOKEN.finditer(text):
        kind = next(name for name in ("skip", "text", "number", "word", "sign") if match.group(name) is not None)
        if kind != "skip":
            token = Token(match)
            token.kind = kind
            found.append(token)
    return found


def matching(tokens):
    """For each bracket the index of the other."""
    other, open_ones = {}, []
    for at, token in enumerate(tokens):
        if token.text in ("(", "[", "{", "[["):
            open_ones.append(at)
        elif token.text in (")", "]", "}", "]]") and open_ones:
            begin = open_ones.pop()
            # `a[b[i]]` ends two brackets at once.
            if token.text == "]]" and tokens[begin].text == "[" and open_ones:
                other[open_ones.pop()] = at
            other[begin], other[at] = at, begin
    return other


def left_alone(tokens, other):
    """The tokens inside assertions, attributes and the heads of templates, and the names of operators."""
    alone = set()
    for at, token in enumerate(tokens):
        following = tokens[at + 1].text if at + 1 < len(tokens) else ""
        if token.text in NOT_CODE and following == "(":
            alone.update(range(at, other.get(at + 1, at) + 1))
        elif token.text == "[[":
            alone.update(range(at, other.get(at, at) + 1))
        elif token.text == "operator":
            alone.update((at, at + 1))
        elif token.text == "template" and following == "<":
            depth = 0
            for end in range(at + 1, len(tokens)):
                depth += {"<": 1, ">": -1, ">>": -2}.get(tokens[end].text, 0)
                alone.add(end)
                if depth <= 0:
                    break
    return alone


def number_mutants(text):
    match = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*)([uUlLzZ]*)", text)
    if not match:
        return
    digits = match[1].replace("'", "")
    value = int(digits, 16) if digits[:2] in ("0x", "0X") else int(digits)
    yield f"{value + 1}{match[2]}"
    if value > 0:
        yield f"{value - 1}{match[2]}"


def linked_names(name, names):
    """The names that differ in a word that says which way a link goes, where the file has them."""
    words = re.split("(_)", name)
    for at, word in enumerate(words):
        if word in LINKS:
            changed = "".join(words[:at] + [LINKS[word]] + words[at + 1:])
            if changed in names:
                yield changed


def is_declaration(tokens):
    """Whether a name follows a name, or a `*` or `&` that belongs to a type."""
    depth = 0
    for before, token in zip(tokens, tokens[1:]):
        depth += {"(": 1, "[": 1, "{": 1, ")": -1, "]": -1, "}": -1}.get(before.text, 0)
        if depth or token.kind != "word":
            continue
        if before.kind == "word" and before.text not in ("delete", "throw", "co_return"):
            return True
        if before.text in ("*", "&", "&&") and before.end == token.start and before is not tokens[0]:
            return True
        if before.text == ">" and before.end < token.start and tokens[0].kind == "word":
            return True
    return False


def statement_mutants(tokens, other, alone):
    """Statements left out."""
    for at, token in enumerate(tokens):
        before = tokens[at - 1] if at else None
        if before is None or at in alone or token.text in NO_STATEMENT or token.text in (";", "{", "}", ")"):
            continue
        if before.text == ")":
            opened = other.get(at - 1, 0)
            if tokens[opened - 1].text not in ("if", "for", "while", "constexpr"):
                continue
        elif before.text not in (";", "{", "}", "else", "do"):
            continue
        end = at
        while end < len(tokens) and tokens[end].text not in (";", "}", ")"):
            end = other.get(end, end) + 1 if tokens[end].text in ("(", "[", "{") else end + 1
        if end >= len(tokens) or tokens[end].text != ";":
            continue
        statement = tokens[at:end]
        acts = any(part.text in ("(", "=", "++", "--", "break", "continue", "throw", "delete") or
                   (part.text.endswith("=") and part.text in BINARY) for part in statement)
        if acts and not is_declaration(statement):
            yield token.start, tokens[end - 1].end, ""


def mutants_of(text):
    tokens = tokens_of(text)
    other = matching(tokens)
    alone = left_alone(tokens, other)
    names = {token.text for token in tokens if token.kind == "word"}
    yield from statement_mutants(tokens, other, alone)
    for at, token in enumerate(tokens):
        if at in alone:
            continue
        between_blanks = text[token.start - 1].isspace() and text[token.end:token.end + 1].isspace()
        if token.kind == "number":
            new_texts = list(number_mutants(token.text))
        elif token.text in ("true", "false"):
            new_texts = ["false" if token.text == "true" else "true"]
        elif token.kind == "word":
            new_texts = list(linked_names(token.text, names))
        elif token.text in UNARY:
            new_texts = [UNARY[token.text]]
        elif between_blanks:
            new_texts = BINARY.get(token.text, ())
        else:
            new_texts = ()
        for new_text in new_texts:
            yield token.start, token.end, new_text
        if token.text in CONDITIONS and at + 1 < len(tokens) and tokens[at + 1].text == "(":
            inside = tokens[at + 2:other.get(at + 1, at + 2)]
            if inside and not any(part.text in ("==", "!=", "<", ">", "<=", ">=", "&&", "||", "!") for part in inside):
                start, end = inside[0].start, inside[-1].end
                yield start, end, f"!({text[start:end]})"
