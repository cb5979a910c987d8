#!/usr/bin/env python3
"""Holds the pages of this tree to what is there.

    scripts/check-docs.py links                     links, pictures and files in backticks lead somewhere
    scripts/check-docs.py programs                  programs shown are files of the tree, or lines of one
    scripts/check-docs.py commands BIN [PAGE...]    commands shown print what the pages say
    scripts/check-docs.py commands BIN --update [PAGE...]    writes what they print into the pages

A command is a line "$ ..." of a block of code; the lines up to the next one are what it prints on both streams. Every
page has an empty folder of its own, and the programs of BIN; ZEL_... variables of the caller are gone, `export` holds
for the rest of the page. A command that ends with a failure says so in a line "PROGRAM: ..." or "FAIL ...".

Compared are whole lines. Three things count as measured and may differ: numbers with a decimal point, numbers in
milliseconds (`12 ms`, `"..._ms": 12`) and time stamps; so may the width of the gaps in a line that has one of them.
"..." stands for any text, alone for any lines. Above a block may stand

    <!-- not run: REASON -->    the commands of the block are not run; the reason is printed
    <!-- exact -->              nothing in it counts as measured

A program is a fenced block with a language (cpp, c, python, ...) other than text; the paragraph before it names its
file in backticks, or it is of the last file below examples/ that the page has named.
"""
import argparse
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
import time

sys.dont_write_bytecode = True
from markdown_pages import ROOT, anchors, lines_of, links, pages  # noqa: E402

Command = collections.namedtuple("Command", "page number text indent expected first last exact reason")
TIMEOUT = 60


def blocks_of(page):
    """Runs of code lines with the mark above them; blank lines inside a run belong to it."""
    block, mark, blanks = [], "", []
    for line in lines_of(os.path.join(ROOT, page)):
        if line.code:
            block += (blanks if block else []) + [line]
        elif line.text.strip():
            if block:
                yield mark, block
                block, mark = [], ""
            comment = re.fullmatch(r"\s*<!-- *(not run: .*?|exact) *-->\s*", line.text)
            mark = comment.group(1) if comment else ""
        blanks = [] if line.text.strip() else blanks + [line]
    if block:
        yield mark, block


def commands_of(page):
    for mark, block in blocks_of(page):
        starts = [i for i, line in enumerate(block) if re.match(r"\s*\$ ", line.text)]
        for i, end in zip(starts, starts[1:] + [len(block)]):
            indent, text = re.match(r"(\s*)\$ (.*)", block[i].text).groups()
            first = i + 1
            while text.endswith("\\"):
                text = text[:-1] + block[first].text.strip()
                first += 1
            output = [line for line in block[first:end] if not re.match(r"\s*(```|~~~)", line.text)]
            while output and not output[-1].text.strip():
                output.pop()
            expected = [line.text[len(indent):].rstrip() for line in output]
            reason = mark[len("not run: "):] if mark.startswith("not run: ") else ""
            yield Command(page, block[i].number, text, indent, expected, block[first - 1].number,
                          block[first - 1].number + len(output), mark == "exact", reason)


class Shell:
    """Runs the commands of one page: an empty folder, an environment that lasts."""

    def __init__(self, programs):
        self.top = tempfile.mkdtemp(prefix="zel-docs.")
        self.folder = os.path.join(self.top, "here")
        os.makedirs(os.path.join(self.folder, "build"))
        os.symlink(os.path.dirname(programs), os.path.join(self.folder, "build", "linux"))
        for name in ("scripts", "examples", "docs"):
            os.symlink(os.path.join(ROOT, name), os.path.join(self.folder, name))
        home = os.path.join(self.top, "home")
        os.mkdir(home)
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith(("ZEL_", "XDG_"))}
        self.environment.update(HOME=home, PATH=programs + ":" + os.environ["PATH"], PROGRAMS=programs, COLUMNS="80")
        self.state = os.path.join(self.top, "state")
        self.code = 0

    def run(self, text):
        script = f'[ ! -f {self.state} ] || . {self.state}\n(exit {self.code})\n{text}\ncode=$?\nexport -p >{self.state}\nexit $code\n'
        done = subprocess.run(["bash", "-c", script], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT, check=False)
        self.code = done.returncode
        return [line.rstrip() for line in done.stdout.decode("utf-8", "replace").splitlines()]

    def close(self):
        shutil.rmtree(self.top)


MEASURED = re.compile(r"""\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?Z?   # time stamp
                        | (?<![\w.])[-−]?\d+(\.\d+)+                  # number with a decimal point
                        | \b\d+(?=\ ms\b)                             # milliseconds
                        | (?<=_ms":)\ ?\d+""", re.VERBOSE)


def same_line(expected, printed, exact):
    if not exact and (MEASURED.search(expected) or MEASURED.search(printed)):
        expected, printed = (re.sub(r" +", " ", MEASURED.sub("#", line)) for line in (expected, printed))
    return re.fullmatch(".*".join(map(re.escape, expected.split("..."))), printed) is not None


def same(expected, printed, exact):
    """Whether what was printed is what the page says."""
    if not expected:
        return not printed
    if expected[0] == "...":
        return any(same(expected[1:], printed[i:], exact) for i in range(len(printed) + 1))
    return bool(printed) and same_line(expected[0], printed[0], exact) and same(expected[1:], printed[1:], exact)


def failure_is_shown(command):
    return any(re.match(r"FAIL |\w[\w.-]*: ", line) for line in command.expected)


def write_output(command, printed, shift):
    """Puts what was printed in the place of what the page says; answers how many lines there are more."""
    path = os.path.join(ROOT, command.page)
    with open(path, encoding="utf-8") as page:
        lines = page.read().split("\n")
    lines[command.first + shift:command.last + shift] = [(command.indent + line).rstrip() for line in printed]
    with open(path, "w", encoding="utf-8") as page:
        page.write("\n".join(lines))
    return len(printed) - (command.last - command.first)


def check_commands(programs, names, update):
    failed, count, left_out, begin = 0, 0, 0, time.monotonic()
    for page in names:
        shell, shift = Shell(os.path.abspath(programs)), 0
        for command in list(commands_of(page)):
            if command.reason:
                print(f"{page}:{command.number}: not run: {command.reason}")
                left_out += 1
                continue
            try:
                printed = shell.run(command.text)
            except subprocess.TimeoutExpired:
                printed = [f"(did not end within {TIMEOUT} s)"]
            count += 1
            right = same(command.expected, printed, command.exact)
            if right and (shell.code == 0 or failure_is_shown(command)):
                continue
            if update and not right and shell.code not in (126, 127):  # the shell did not find it
                shift += write_output(command, printed, shift)
                print(f"{page}:{command.number}: updated")
                continue
            failed += 1
            print(f"{page}:{command.number}: $ {command.text}\n  exit code {shell.code}; the page says:")
            print(textwrap.indent("\n".join(command.expected), "    "))
            print("  it prints:\n" + textwrap.indent("\n".join(printed), "    "))
        shell.close()
    print(f"{count} commands of {len(names)} pages run in {time.monotonic() - begin:.0f} s, {left_out} not run, "
          f"{failed} not as shown")
    return failed == 0 and count > 0


def check_links():
    known, found, bad = {}, 0, 0
    for page in pages():
        for link in links(os.path.join(ROOT, page)):
            if re.match(r"\w+:", link.target):
                continue
            found += 1
            path, _, anchor = link.target.partition("#")
            base = ROOT if path.startswith("/") else os.path.dirname(os.path.join(ROOT, page))
            file = os.path.normpath(os.path.join(base, path.lstrip("/"))) if path else os.path.join(ROOT, page)
            if os.path.exists(file) and (not anchor or anchor in known.setdefault(file, anchors(file))):
                continue
            print(f"{page}:{link.number}: leads nowhere: {link.target}")
            bad += 1
    print(f"{found} links, {bad} of them lead nowhere")
    return bad == 0 and found > 0


def check_programs():
    count, bad = 0, 0
    for page in pages():
        paragraph, program, language, example = [], [], None, []
        for line in lines_of(os.path.join(ROOT, page)):
            fence = line.code and re.match(r"\s*```+\s*(\w*)", line.text)
            if fence and language is None:
                language, program = fence.group(1), []
            elif fence:
                if language not in ("", "text", "sh", "console"):
                    count += 1
                    names = re.findall(r"`([\w./-]+\.\w+|[\w./-]+/Makefile)`", " ".join(paragraph)) + example
                    if not any(stands_in(program, name) for name in names):
                        print(f"{page}:{line.number}: this program is no file of the tree: {', '.join(names) or 'no name'}")
                        bad += 1
                language = None
            elif language is not None:
                program.append(line.text)
                continue
            if not line.code:
                example = re.findall(r"`(examples/[\w./-]+\.\w+)`", line.text)[-1:] or example
            if language is not None or fence:
                continue
            if not line.text.strip():
                paragraph = [] if not paragraph or paragraph[-1] == "" else paragraph + [""]
            else:
                paragraph = [line.text] if paragraph and paragraph[-1] == "" else paragraph + [line.text]
    print(f"{count} programs shown, {bad} of them are no files of the tree")
    return bad == 0 and count > 0


def stands_in(program, name):
    """Whether a file holds these lines one after the other, indented as one likes."""
    path = os.path.join(ROOT, name)
    if not os.path.isfile(path):
        return False
    with open(path, encoding="utf-8") as file:
        text = [line.strip() for line in file.read().splitlines()]
    lines = [line.strip() for line in program]
    return any(text[i:i + len(lines)] == lines for i in range(len(text)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["links", "programs", "commands"])
    parser.add_argument("programs", nargs="?")
    parser.add_argument("names", nargs="*")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_intermixed_args()
    if arguments.what == "links":
        return check_links()
    if arguments.what == "programs":
        return check_programs()
    names = [os.path.relpath(os.path.abspath(name), ROOT) for name in arguments.names] or pages()
    return check_commands(arguments.programs or parser.error("commands needs the folder of the programs"), names,
                          arguments.update)


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
