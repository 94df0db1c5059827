# test_links.py: links between the pages of the repository, and of the manual that is built from them, lead somewhere; and
# the manual takes nothing from the network.

import html.parser
import os
import pathlib
import re
import subprocess
import tempfile
import unicodedata
import unittest
import urllib.parse

from pages import PROJECT, all_pages, manual_pages


def without_code(text):
    text = re.sub(r"^( *)(```+).*?^\1\2$", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", lambda code: code[0].replace("[", "").replace("]", ""), text)


def slug(heading):
    """What a heading's anchor is called, by both who shows the repository and who builds the manual."""
    text = unicodedata.normalize("NFKD", re.sub(r"\[(.*?)\]\(.*?\)", r"\1", heading))
    return re.sub(r"\s+", "-", re.sub(r"[^\w\s-]", "", text).strip().lower())


def anchors(path):
    text = re.sub(r"^( *)(```+).*?^\1\2$", "", path.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    return {slug(heading) for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def broken_links(root, pages):
    faults = []
    for page in pages:
        path = root / page
        for link in re.findall(r"\]\(([^)\s]+)\)", without_code(path.read_text(encoding="utf-8"))):
            place, _, anchor = link.partition("#")
            if re.match(r"[a-z]+:", link):
                continue
            target = path.parent / place if place else path
            if not target.exists() or anchor and anchor not in anchors(target):
                faults.append(f"{page}: {link}")
    return faults


class Reader(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.names, self.links, self.loaded = set(), set(), set()

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.names |= {values[key] for key in ("id", "name") if values.get(key)}
        if tag == "a" and values.get("href"):
            self.links.add(values["href"])
        self.loaded |= {values[key] for key in ("src", "href") if tag != "a" and values.get(key)}


def read_site(site):
    read = {}
    for path in site.rglob("*.html"):
        read[path] = Reader()
        read[path].feed(path.read_text(encoding="utf-8"))
    return read


def broken_in_site(site):
    read, faults = read_site(site), []
    for path, reader in read.items():
        name = path.relative_to(site)
        for link in reader.links | reader.loaded:
            where = urllib.parse.urlsplit(link)
            if where.scheme and link in reader.links or path.name == "404.html":
                continue
            target = pathlib.Path(os.path.normpath(path.parent / urllib.parse.unquote(where.path))) \
                if where.path else path
            if where.scheme or not target.exists():
                faults.append(f"{name}: {link}")
            elif where.fragment and where.fragment not in read[target].names:
                faults.append(f"{name}: {link}")
    return sorted(faults)


class Links(unittest.TestCase):
    def folder(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-manual-")
        self.addCleanup(holder.cleanup)
        return pathlib.Path(holder.name)

    def test_those_of_the_repository_lead_somewhere(self):
        self.assertEqual(broken_links(PROJECT, all_pages()), [])

    def test_broken_ones_are_found(self):
        folder = self.folder()
        (folder / "b.md").write_text("# A `b` c\n```\n# no heading\n[x](no_link.md)\n```\n", encoding="utf-8")
        (folder / "a.md").write_text(
            "[1](b.md) [2](c.md) [3](b.md#a-b-c) [4](b.md#no-heading) [`x`](d.md) `[y](e.md)` [z](https://f.example)\n",
            encoding="utf-8")
        self.assertEqual(broken_links(folder, ["a.md", "b.md"]), ["a.md: c.md", "a.md: b.md#no-heading", "a.md: d.md"])

    def build(self, settings, folder):
        return subprocess.run(["mkdocs", "build", "--strict", "--config-file", settings, "--site-dir", folder],
                              env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"}, capture_output=True, text=True,
                              check=False)

    def test_the_manual_builds_without_warnings_and_its_links_lead_somewhere(self):
        site = self.folder()
        done = self.build(PROJECT / "mkdocs.yml", site)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(broken_in_site(site), [])
        self.assertGreater(len(read_site(site)), len(manual_pages()))

    def test_each_page_is_in_the_navigation(self):
        listed = re.findall(r"([\w/-]+\.md)$", (PROJECT / "mkdocs.yml").read_text(encoding="utf-8"), re.MULTILINE)
        self.assertEqual(sorted(f"docs/{page}" for page in listed), manual_pages())

    def test_what_is_broken_in_a_built_page_is_found(self):
        site = self.folder()
        (site / "b.html").write_text('<p id="here">', encoding="utf-8")
        (site / "a.html").write_text(
            '<a href="b.html#here"> <a href="b.html#there"> <a href="c.html"> <a href="https://d.example">'
            '<script src="https://e.example/x.js"></script> <a name="top"> <a href="#top"> <a href="#bottom">',
            encoding="utf-8")
        self.assertEqual(broken_in_site(site), ["a.html: #bottom", "a.html: b.html#there", "a.html: c.html",
                                                "a.html: https://e.example/x.js"])

    def test_a_link_to_nowhere_stops_the_build(self):
        folder = self.folder()
        (folder / "docs").mkdir()
        (folder / "docs/index.md").write_text("# A\n[b](b.md)\n", encoding="utf-8")
        (folder / "mkdocs.yml").write_text("site_name: x\n", encoding="utf-8")
        self.assertNotEqual(self.build(folder / "mkdocs.yml", folder / "site").returncode, 0)


if __name__ == "__main__":
    unittest.main()
