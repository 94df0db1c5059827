# manual_hooks.py: what the manual's build does besides what mkdocs does. See mkdocs.yml.

import re



def on_page_markdown(markdown, page, **_):
    """The manual stands alone: what links to the repository's other files is their name there."""
    depth = page.file.src_path.count("/")
    outward = re.compile(r"\[`?([^\]\[`]+)`?\]\((?:\.\./){" + str(depth + 1) + r"}[^)]*\)")
    return outward.sub(r"`\1`", markdown)
