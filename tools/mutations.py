"""mutations: the small changes that tools/mutants makes to the plug-in's sources, one mutant a change.

Knows of C++ what the plug-in is written in, formatted as .clang-format has it: a binary operator has blanks around it, the
asterisk of a declaration and the brackets of a template have not.
"""

import re
from typing import NamedTuple

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<directive>^[ ]*\#(?:\\\n|[^\n])*)|(?P<blank>\s+)|(?P<text>"(?:\\.|[^"\\])*")
        |(?P<character>'(?:\\.|[^'\\])+')|(?P<number>\d\w*)|(?P<name>[A-Za-z_]\w*)
        |(?P<sign><<=|>>=|\.\.\.|->|::|\+\+|--|&&|\|\||[-+*/%&|^<>=!]=|<<|>>|\[\[|\]\]|.)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

REPLACEMENTS = {
    "relational": {
        "<": ("<=", ">="),
        "<=": ("<", ">"),
        ">": (">=", "<="),
        ">=": (">", "<"),
        "==": ("!=",),
        "!=": ("==",),
    },
    "arithmetic": {"+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",), "+=": ("-=",), "-=": ("+=",)},
    "bitwise": {"&": ("|",), "|": ("&",), "^": ("|",), "<<": (">>",), ">>": ("<<",), "|=": ("&=",), "&=": ("|=",)},
    "logical": {"&&": ("||",), "||": ("&&",)},
    "condition": {"?": ("|| true ?", "&& false ?")},
}

BEFORE_NUMBER = {"==": ("<=", ">="), "!=": ("<", ">")}  # on top

# Each name is exchanged for the next of its row, the last for the first.
NAMES = (
    "KL_OBJECT_TYPE_CONTROL KL_OBJECT_TYPE_TABLE KL_OBJECT_TYPE_TEMPLATE KL_OBJECT_TYPE_GROUP KL_OBJECT_TYPE_LAYER"
    " KL_OBJECT_TYPE_LAYER_INSTANCE KL_OBJECT_TYPE_SCREEN KL_OBJECT_TYPE_APP",
    "kld_x kld_y kld_width kld_height kld_alpha kld_hidden kld_rows kld_cols placeholder",
    "leading center trailing",
    "KL_LOG_WARNING KL_LOG_ERROR",
    "LUA_TNIL LUA_TBOOLEAN",
    "LUA_TTABLE LUA_TSTRING",
    "exactly at_least",
    "true false",
    "keldom_traverse keldom_traverse_layers",
    "keldom_objects_equal keldom_names_equal",
)
NEXT_NAME = {name: row[(i + 1) % len(row)] for row in map(str.split, NAMES) for i, name in enumerate(row)}

TYPE_CASTS = {"static_cast", "reinterpret_cast", "const_cast", "template"}
NO_CALLS = TYPE_CASTS | {"if", "for", "while", "switch", "return", "sizeof", "static_assert", "defined", "case", "else"}
HEADING = re.compile(r"(?!namespace|inline namespace|using|static_assert|__attribute__|template)(?:\[\[.*?\]\] )?"
                     r"[A-Za-z_].*?(\w+)(?: ?[({\[=]| : )")
OPENING = {"(": ")", "{": "}", "[": "]", "[[": "]]"}


class Token(NamedTuple):
    kind: str
    text: str
    start: int
    end: int


class Mutant(NamedTuple):
    file: str
    start: int
    end: int
    text: str  # what stands there instead
    operator: str
    line: int
    heading: str  # the name of the function or table
    old: str  # the lines that it is in, as one
    new: str

    def apply(self, source):
        return source[: self.start] + self.text + source[self.end :]

    @property
    def key(self):
        return self.file, self.heading, self.old, self.new


class Source:
    """A file's tokens without what no mutant touches, and the places where their brackets end."""

    def __init__(self, text):
        self.text = text
        found = [Token(match.lastgroup, match[0], match.start(), match.end()) for match in TOKEN.finditer(text)]
        self.tokens = [token for token in found if token.kind not in ("comment", "directive", "blank")]
        self.closing = {}
        self.opening = {}
        self._pair_brackets()
        self.fixed = self._fixed()

    def _pair_brackets(self):
        open_brackets = []
        for i, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                open_brackets.append(i)
            elif open_brackets and token.text == OPENING[self.tokens[open_brackets[-1]].text]:
                self.opening[i] = open_brackets.pop()
                self.closing[self.opening[i]] = i

    def _fixed(self):
        """The indexes of tokens that say what is checked or declared, not what is done."""
        fixed = set()
        for i, token in enumerate(self.tokens):
            if token.text in ("static_assert", "__attribute__"):
                fixed.update(range(i, self.closing[i + 1] + 1))
            elif token.text == "[[":
                fixed.update(range(i, self.closing[i] + 1))
            elif token.text in TYPE_CASTS and self.word(i + 1) == "<":
                end = next(j for j in range(i, len(self.tokens)) if self.tokens[j].text == ">")
                fixed.update(range(i, end + 1))
            elif token.text == "extern":
                fixed.update(range(i, next(j for j in range(i, len(self.tokens)) if self.tokens[j].text == ";")))
        return fixed

    def word(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def stands_free(self, i):
        token = self.tokens[i]
        return self.text[token.start - 1].isspace() and self.text[token.end : token.end + 1].isspace()

    def begins_statement(self, i):
        before = self.word(i - 1)
        if before == ")":
            return self.word(self.opening[i - 1] - 1) in ("if", "for", "while")
        return before in (";", "{", "}", "else", ":")

    def end_of_statement(self, i):
        """The index of its semicolon, or None when a bracket ends first what begins there."""
        while i < len(self.tokens) and self.word(i) != ";":
            if i in self.opening:
                return None
            i = self.closing.get(i, i) + 1
        return i if i < len(self.tokens) else None

    def elements(self, opening):
        """First and last index of each element between two brackets."""
        found = []
        start = i = opening + 1
        end = self.closing[opening]
        while i < end:
            if self.word(i) == ",":
                found.append((start, i - 1))
                start = i + 1
            i = self.closing.get(i, i) + 1
        if start < end:
            found.append((start, end - 1))
        return found

    def between(self, first, last):
        return self.text[self.tokens[first].start : self.tokens[last].end]


# ---- Which changes there are: each yields first token, last token, the new text, the operator ----


def single_tokens(source):
    for i, token in enumerate(source.tokens):
        if token.kind == "sign" and source.stands_free(i):
            for operator, replacements in REPLACEMENTS.items():
                for text in replacements.get(token.text, ()):
                    yield i, i, text, operator
            if i + 1 < len(source.tokens) and source.tokens[i + 1].kind == "number":
                for text in BEFORE_NUMBER.get(token.text, ()):
                    yield i, i, text, "relational"
        elif token.text in ("++", "--"):
            yield i, i, "--" if token.text == "++" else "++", "arithmetic"
        elif token.text == "!":
            yield i, i, "", "logical"
        elif token.text in NEXT_NAME and not is_declared(source, i):
            yield i, i, NEXT_NAME[token.text], "name"
        elif token.kind == "text" and source.word(i - 1) != "sizeof":
            yield i, i, changed_text(token.text), "text"


def is_declared(source, i):
    return i > 0 and source.tokens[i - 1].kind == "name" and source.word(i - 1) not in NO_CALLS


def changed_text(literal):
    """A letter in the other case, or a character more; directives of formats stay as they are."""
    letter = re.search(r"(?<![%\\])[A-Za-z]", literal)
    if not letter:
        return literal[:-1] + '~"'
    return literal[: letter.start()] + letter[0].swapcase() + literal[letter.end() :]


def constants(source):
    for i, token in enumerate(source.tokens):
        if token.kind == "character":
            code = ord(token.text[1]) if len(token.text) == 3 else 0
            for other in (code + 1, code - 1):
                yield i, i, f"'\\x{other:02x}'" if other >= 0 else "'\\xff'", "constant"
        number = re.fullmatch(r"(0x)?([0-9A-Fa-f]+?)([uUlL]*)", token.text) if token.kind == "number" else None
        if not number:
            continue
        value = int(number[2], 16 if number[1] else 10)
        negative = source.word(i - 1) == "-" and not source.stands_free(i - 1)
        first = i - 1 if negative else i
        for other in (value + 1, value - 1):
            if other < 0 or negative and not value:
                continue
            yield first, i, f"{'-' if negative and other else ''}{other}{number[3]}", "constant"


def conditions(source):
    for i, token in enumerate(source.tokens):
        if token.text not in ("if", "while") or source.word(i + 1) != "(":
            continue
        first, last = i + 2, source.closing[i + 1] - 1
        plain = not any(
            source.word(j) in REPLACEMENTS["relational"] | REPLACEMENTS["logical"] or source.word(j) in ("!", "=", "?")
            for j in range(first, last + 1)
        )
        if plain:
            yield first, last, f"!({source.between(first, last)})", "condition"


def statements(source):
    for i, token in enumerate(source.tokens):
        if not source.begins_statement(i):
            continue
        end = source.end_of_statement(i)
        if end is None:
            continue
        if token.text == "return":
            yield from removed_return(source, i, end)
        elif token.text == "break":
            yield i, end, ";", "return removed"
        elif assigns(source, i, end):
            yield i, end, ";", "assignment removed"
        elif calls(source, i, end):
            yield i, end, ";", "call removed"


def removed_return(source, i, end):
    after = end + 1
    while source.word(after) == "}":
        before = source.opening[after] - 1
        if source.word(before) == ")" and source.word(source.opening[before] - 1) not in NO_CALLS:
            return  # nothing comes after it in the function
        after += 1
    yield i, end, ";", "return removed"
    if i + 1 < end and calls(source, i + 1, end):
        yield i, end, source.between(i + 1, end), "return removed"


def assigns(source, i, end):
    """Whether a statement assigns to what is there already; a declaration has two names, or a name and an asterisk."""
    j = i + 1 if source.word(i) == "*" else i
    if source.tokens[j].kind != "name" or source.word(j) in NO_CALLS | {"auto", "const", "constexpr", "using", "enum"}:
        return False
    while j < end and (source.tokens[j].kind == "name" or source.word(j) in ("->", ".", "[", "(")):
        if source.tokens[j].kind == "name" and source.tokens[j + 1].kind == "name":
            return False
        j = source.closing.get(j, j) + 1
    return source.word(j) == "="


def calls(source, i, end):
    j = i
    while j < end and (source.tokens[j].kind == "name" and source.word(j) not in NO_CALLS or source.word(j) in ("->", ".")):
        if source.tokens[j].kind == "name" and source.tokens[j + 1].kind == "name":
            return False
        j += 1
    return j > i and source.word(j) == "(" and source.closing[j] == end - 1


def is_list(source, i):
    """Whether the bracket opens a call's arguments or the elements of a table or record."""
    before = source.word(i - 1)
    if source.word(i) == "(":
        if source.tokens[i - 1].kind != "name" or before in NO_CALLS:
            return False
        return not any(declares(source, *element) for element in source.elements(i))
    if source.word(i) != "{" or any(source.word(j) == ";" for j in range(i, source.closing[i])):
        return False
    return "enum" not in (source.word(j) for j in range(max(0, i - 4), i))


def declares(source, first, last):
    for j in range(first, last):
        if source.tokens[j].kind == "name" and source.word(j) not in NO_CALLS:
            if source.tokens[j + 1].kind == "name":
                return True
            if source.word(j + 1) in ("*", "&", "...") and not source.stands_free(j + 1):
                return True
    return False


def swaps(source):
    for i in source.closing:
        if not is_list(source, i):
            continue
        elements = source.elements(i)
        for (a, b), (c, d) in zip(elements, elements[1:]):
            if source.word(a) == source.word(c) == "{":  # rows: each keeps what it begins with
                (a, b), (c, d) = source.elements(a)[-1], source.elements(c)[-1]
                operator = "rows swapped"
            else:
                operator = "arguments swapped"
            left, right = source.between(a, b), source.between(c, d)
            if left != right and "L" not in (left, right) and (operator == "arguments swapped" or right != "nullptr"):
                between = source.text[source.tokens[b].end : source.tokens[c].start]
                yield a, d, right + between + left, operator


# ---- From changes to mutants ----


def as_one_line(text):
    return " ".join(text.split())


def heading_of(lines):
    for line in reversed(lines):
        found = HEADING.match(line)
        if found:
            return found[1]
    return ""


def mutants_of(name, text):
    """Every mutant of a file, in the order of their places."""
    source = Source(text)
    found = {}
    for generator in (single_tokens, constants, conditions, statements, swaps):
        for first, last, new, operator in generator(source):
            if source.fixed.isdisjoint(range(first, last + 1)):
                start, end = source.tokens[first].start, source.tokens[last].end
                found.setdefault((start, end, new), operator)
    lines = text.split("\n")
    mutants = []
    for (start, end, new), operator in found.items():
        line_start = text.rfind("\n", 0, start) + 1
        line_end = text.find("\n", end)
        line = text.count("\n", 0, start) + 1
        old_lines = text[line_start:line_end]
        new_lines = text[line_start:start] + new + text[end:line_end]
        heading = heading_of(lines[:line])
        mutants.append(
            Mutant(name, start, end, new, operator, line, heading, as_one_line(old_lines), as_one_line(new_lines))
        )
    return sorted(mutants)
