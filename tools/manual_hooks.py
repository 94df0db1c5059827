# manual_hooks.py: what the manual's build does besides what mkdocs does. See mkdocs.yml.

import re


def on_page_markdown(markdown, page, **_):
    """The manual stands alone: what links to the repository's other files is their name there."""
    out_of_docs = r"(?:\.\./){" + str(page.file.src_path.count("/") + 1) + "}"
    return re.sub(r"\[`?([^\]\[`]+)`?\]\(" + out_of_docs + r"[^)]*\)", r"`\1`", markdown)
