"""The Markdown pages of this tree as the checks of them see them: lines that know whether they are code, headings with
their anchors, links."""
import collections
import os
import re

Line = collections.namedtuple("Line", "number text code")
Link = collections.namedtuple("Link", "number target")

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def pages(root=ROOT):
    """README, changelog, security and everything below docs/, as paths from the root."""
    found = ["README.md", "CHANGELOG.md", "SECURITY.md"]
    for folder, _, names in os.walk(os.path.join(root, "docs")):
        found += [os.path.relpath(os.path.join(folder, name), root) for name in names if name.endswith(".md")]
    return found[:3] + sorted(found[3:])


def lines_of(path):
    """Lines of a page. Code: inside a fence, or indented by four after an empty line or another line of code."""
    result, fence, indented, blank = [], None, False, True
    with open(path, encoding="utf-8") as page:
        for number, text in enumerate(page.read().splitlines(), 1):
            mark = re.match(r" {0,3}(```+|~~~+)", text)
            if fence:
                code = True
                if mark and mark.group(1).startswith(fence):
                    fence = None
            elif mark:
                fence, code = mark.group(1), True
            else:
                indented = code = bool(re.match(r"    \s*\S", text)) and (indented or blank)
            blank = not text.strip()
            result.append(Line(number, text, code))
    return result


def slug(heading):
    """The anchor that code hosting sites give a heading."""
    heading = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
    return re.sub(r"[^\w\- ]", "", heading).replace(" ", "-")


def anchors(path):
    """The anchors of all headings of a page. A heading that comes again gets a number."""
    seen, result = collections.Counter(), set()
    for line in lines_of(path):
        heading = None if line.code else re.match(r"#+ +(.*?)\s*$", line.text)
        if heading:
            name = slug(heading.group(1))
            result.add(f"{name}-{seen[name]}" if seen[name] else name)
            seen[name] += 1
    return result


def links(path):
    """Targets of links and pictures, and the files of this tree that stand in backticks (`docs/color.md`); a name that
    begins with X is a pattern."""
    for line in lines_of(path):
        if line.code:
            continue
        spans = re.findall(r"`([^`]*)`", line.text)
        for target in re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`]*`", "", line.text)):
            yield Link(line.number, target)
        for target in spans:
            file = re.fullmatch(r"(\w+)/(?:[\w.-]+/)*(?!X)[\w.-]+\.(?:md|h|cpp|sh|py|txt|json)", target)
            if file and os.path.isdir(os.path.join(ROOT, file.group(1))):
                yield Link(line.number, "/" + target)
