# installed_tree.py: what the tests of an installation and of a package share: which files there have to be.

import fnmatch
import os
import pathlib
import re
import subprocess

PROJECT = pathlib.Path(__file__).resolve().parents[2]
LIST = pathlib.Path(__file__).with_name("files.txt")


def environment(**changes):
    """The tests' own, without what would lead the tool or a build elsewhere."""
    misleading = ("KEL", "KEL_PLUGIN", "DESTDIR", "CMAKE_PREFIX_PATH", "PKG_CONFIG_PATH")
    return {name: value for name, value in os.environ.items() if name not in misleading} | changes


def run(*command, check=True, folder=None, **changes):
    """The result of a command; one that fails although `check` is set shows what it said."""
    result = subprocess.run([*map(str, command)], cwd=folder, env=environment(**changes), encoding="utf-8", check=False,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
    if check and result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}")
    return result


def files_below(folder):
    return {str(file.relative_to(folder)) for file in pathlib.Path(folder).rglob("*") if not file.is_dir()}


def commands_of(kel):
    listed = re.search(r"^Subcommands:\n((?: .*\n)+)", run(kel, "--help").stdout, re.MULTILINE)
    return re.findall(r"^  (\w\S*)", listed[1], re.MULTILINE)


def listed_files(kel):
    """{file below the prefix: the file here of which it is a copy, or None for one that is built}."""
    files = {}
    for line in LIST.read_text(encoding="utf-8").splitlines():
        if not line or line.startswith("#"):
            continue
        installed, source = line.split(maxsplit=1)
        if source == "is built":
            names = commands_of(kel) if "COMMAND" in installed else [""]
            files.update((installed.replace("COMMAND", name), None) for name in names)
        elif installed.endswith("/"):
            folder, *patterns = source.split()
            for name in files_below(PROJECT / folder):
                if not patterns or any(fnmatch.fnmatch(name, pattern) for pattern in patterns):
                    files[installed + name] = PROJECT / folder / name
        else:
            files[installed] = PROJECT / source
    return files
