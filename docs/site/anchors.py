#!/usr/bin/env python3
"""Doxygen's input filter for Markdown pages: gives headings the anchors that code hosting sites give them, and turns
links to such anchors into Doxygen's own references. What it prints is for Doxygen; the pages stay as they are.

    anchors.py PAGE.md
"""
import os
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts"))
from markdown_pages import lines_of, slug  # noqa: E402


def anchor(page, name):
    """Anchors are one for all pages, so they begin with the page's name."""
    return re.sub(r"\W", "-", os.path.splitext(os.path.basename(page))[0]) + "--" + name


def main(page):
    def reference(match):
        text, target, name = match.groups()
        return f'@ref {anchor(target or page, name)} "{text}"'

    title = True
    for line in lines_of(page):
        text = line.text
        if not line.code:
            text = re.sub(r"(?<!!)\[([^\]]*)\]\(([^)#\s:]*\.md)?#([^)\s]+)\)", reference, text)
            heading = re.match(r"(#+) +(.*?)\s*$", text)
            if heading and not title:
                text += " {#" + anchor(page, slug(heading.group(2))) + "}"
            title = title and not heading
        print(text)


if __name__ == "__main__":
    main(sys.argv[1])
