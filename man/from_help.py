# from_help.py: writes the tool's manual pages, kel(1) and one a command, from what its --help says.
#
#     python3 man/from_help.py build/release/bin/kel FOLDER
#
# The help is the one source: a page has its words and no others, so that both say the same.

import pathlib
import re
import subprocess
import sys

SECTIONS = {"Positionals": "ARGUMENTS", "Options": "OPTIONS", "Subcommands": "COMMANDS", "Examples": "EXAMPLES"}
ORDER = ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "ARGUMENTS", "OPTIONS", "EXAMPLES", "EXIT STATUS", "SEE ALSO"]
ESCAPES = {"\\": r"\e", "-": r"\-", "'": r"\(aq", "`": r"\(ga", "^": r"\(ha", "~": r"\(ti", '"': r"\(dq"}


def escaped(text):
    """What troff prints as it stands; a line that it would take for a request gets an empty character before it."""
    plain = "".join(ESCAPES.get(letter, letter) for letter in text)
    return rf"\&{plain}" if plain.startswith(".") else plain


def marked(term):
    """Options and commands bold, what stands for a value italic."""
    def mark(word):
        return rf"\f{'I' if word.group().isupper() else 'B'}{escaped(word.group())}\fR"
    return re.sub(r"-{0,2}[A-Za-z][A-Za-z_-]*", mark, term)


def entries(lines):
    """[(term, text)] of a list; a text stands beside its term or, after a long one, on the lines below it."""
    found = []
    for line in lines:
        indented = re.fullmatch(r" {2}(\S.*?)(?: {2,}(.*))?", line)
        if indented:
            found.append((indented[1], [indented[2] or ""]))
        else:
            found[-1][1].append(line)
    return [(term.removesuffix(" REQUIRED"), " ".join(" ".join(text).split())) for term, text in found]


def markup_of_entries(lines):
    return [line for term, text in entries(lines) for line in (".TP", marked(term), escaped(text))]


def sections_of(help_text):
    """{section: lines of troff} of all that the help says."""
    head, *blocks = [block.split("\n") for block in re.split(r"\n{2,}", help_text.strip("\n"))]
    *about, usage = head
    command, _, arguments = usage.removeprefix("Usage: ").partition(" [")
    name = command.replace(" ", "-")
    sections = {
        "NAME": [rf"{escaped(name)} \- {escaped(' '.join(about))}"],
        "SYNOPSIS": [rf"\fB{escaped(command)}\fR [{escaped(arguments)}"],
        "DESCRIPTION": [escaped(" ".join(about).removesuffix(".") + ".")],
    }
    for first, *rest in blocks:
        heading = SECTIONS.get(first.removesuffix(":"))
        if heading == "EXAMPLES":
            sections[heading] = [".nf", *(escaped(line.strip()) for line in rest), ".fi"] # as lines, not as a paragraph
        elif heading:
            sections[heading] = markup_of_entries(rest)
        elif first.startswith("Exit status: "):
            sections["EXIT STATUS"] = [escaped(line) for line in (first.removeprefix("Exit status: "), *rest)]
        else:
            sections["DESCRIPTION"] += [".PP", *(escaped(line) for line in (first, *rest))]
    return name, sections


def page(help_text, version, others):
    name, sections = sections_of(help_text)
    sections["SEE ALSO"] = [",\n".join(rf"\fB{escaped(other)}\fR(1)" for other in others if other != name)]
    lines = [rf'.TH {escaped(name.upper())} 1 "" "{escaped(version)}" "User Commands"']
    for heading in ORDER:
        if heading in sections:
            lines += [f".SH {heading}", *sections[heading]]
    return name, "\n".join(lines) + "\n"


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, encoding="utf-8").stdout


def commands_of(help_text):
    listed = re.search(r"^Subcommands:\n((?: .*\n)+)", help_text, re.MULTILINE)
    return [name for name, _ in entries(listed[1].splitlines())]


def main(tool, folder):
    version = output_of(tool, "--version").strip()
    about_tool = output_of(tool, "--help")
    commands = commands_of(about_tool)
    texts = [about_tool, *(output_of(tool, command, "--help") for command in commands)]
    others = ["kel", *(f"kel-{command}" for command in commands)]
    for text in texts:
        name, markup = page(text, version, others)
        (pathlib.Path(folder) / f"{name}.1").write_text(markup, encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
