#!/usr/bin/env python3
"""Plants faults into the library, one at a time, and counts how many of them the tests catch.

    scripts/mutation.py [COUNT] [SEED] [--folder FOLDER]... [--all] [--jobs N]

COUNT faults (default 200) are chosen by SEED (default 1), as many in each folder and as evenly over the kinds of fault
as the folder allows. Each is planted in a copy of the tree below build/mutation, compiled, and tried by the test programs
of the folder, its own first, until one of them fails, dies or does not end; with --all by every one of them, which also
tells the tests that failed. A fault that does not compile is replaced by another. N folders are worked on at a time (2),
each in a copy of its own.

It goes on where it was stopped. build/mutation/survivors.txt has what no test caught, build/mutation/results-SEED.jsonl
everything; faults that survived, or whose file has changed since, are planted anew.
"""
import argparse
import collections
import difflib
import functools
import json
import multiprocessing
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
HOME = ROOT / "build" / "mutation"
COPY = TREE = BUILD = None  # of this process: work_in()
MEMORY = 6 << 30  # of address space
LARGEST_FILE = 1 << 30

# The programs that link a folder's code: its own first, then what uses it from further away.
PROGRAMS = {
    "sdk": ["sdk_tests", "logger_tests", "system_tests", "leak_tests", "lifetime_tests", "layer_plugins_tests"],
    "link": ["link_tests", "camera_tests", "system_tests", "session_tests"],
    "camera": ["camera_tests", "session_tests", "system_tests", "lifetime_tests"],
    "image": ["image_pool_tests", "post_processing_tests", "fuzz_frame", "camera_tests", "session_tests", "system_tests"],
    "tapbalance": ["tapbalance_tests", "tapbalance_log_tests", "camera_tests"],
    "util": ["util_file_tests", "progress_tests", "system_tests"],
    "kernels": ["kernel_test", "fuzz_kernels", "post_processing_tests", "tapbalance_tests"],
    "devices/kit": ["kit_tests", "sim_tests", "system_tests", "layer_camera_tests"],
}

Fault = collections.namedtuple("Fault", "kind file start end text")

# What is replaced by what, in code as clang-format leaves it: an operator between blanks is no bracket and no sign.
SWAPS = {
    "relation": {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ", " != ": " == "},
    "arithmetic": {" + ": " - ", " - ": " + ", " += ": " -= ", " -= ": " += ", "++": "--", "--": "++",
                   " << ": " >> ", " >> ": " << ", " * ": " + "},
    "logic": {" && ": " || ", " || ": " && "},
    "result": {"return true;": "return false;", "return false;": "return true;"},
}
PLACE = r"[\w.:\[\]*>()-]+"
STATEMENT = re.compile(rf"(?<=[;{{}})])\s*\n\s+((?:{PLACE} [-+*|&^]?= [^;{{}}]+|[\w.:>-]+\([^;{{}}]*\)|{PLACE}(?:\+\+|--));)"
                       rf"|\) ((?:{PLACE} [-+|&]?= [^;{{}}]+|[\w.:>-]+\([^;{{}}]*\));)")


def without(code, pattern):
    """The code with blanks where the pattern is, so that places stay what they are."""
    return re.sub(pattern, lambda found: re.sub(r"[^\n]", " ", found[0]), code, flags=re.S)


def plain_code(text):
    """Comments, texts, preprocessor lines, what is logged and what the compiler asserts are blanks."""
    code = without(text, r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|^#[^\n]*|\n#(?:[^\n]|\\\n)*')
    code = without(code, r"; (?:\+\+|--)\w+\)")  # of a loop, which would only never end
    return without(code, r"\b(?:ZEL_LOG|static_assert)\([^;]*;|\b(?:template|using|enum|alignas)\b[^;{]*[;{]")


def closing(code, opened):
    depth = 0
    for at in range(opened, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return None


def faults_of(file):
    code = plain_code((ROOT / file).read_text())
    for kind, swaps in SWAPS.items():
        for found in re.finditer("|".join(map(re.escape, swaps)), code):
            yield Fault(kind, file, *found.span(), swaps[found[0]])
    for found in re.finditer(r"(?<![\w.])(0x[0-9a-fA-F]+|\d+)(?=[uUlL]*\b(?!\.))", code):
        for step in (1, -1):
            value = int(found[0], 0) + step
            if value >= 0:
                yield Fault("constant", file, *found.span(), hex(value) if found[0].startswith("0x") else str(value))
    for found in re.finditer(r"\b(?:if|while) \(", code):
        end = closing(code, found.end() - 1)
        if end and ";" not in code[found.end():end]:
            start = found.end()
            yield Fault("condition", file, start, end, f"!({code[start:end]})")
    for found in STATEMENT.finditer(code):
        group = 1 if found[1] else 2
        if not found[group].startswith(("return", "delete", "throw", "break", "continue")):
            yield Fault("statement", file, *found.span(group), ";")


def planted(fault):
    text = (ROOT / fault.file).read_text()
    return text[:fault.start] + fault.text + text[fault.end:]


def diff_of(fault):
    old = (ROOT / fault.file).read_text()
    lines = difflib.unified_diff(old.splitlines(True), planted(fault).splitlines(True), fault.file, fault.file, n=1)
    return "".join(lines)


def copy_if_changed(file, text):
    target = TREE / file
    target.parent.mkdir(parents=True, exist_ok=True)
    if not target.exists() or target.read_bytes() != text:
        target.write_bytes(text)


def copy_tree():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True)
    for file in listed.stdout.splitlines():
        if not (ROOT / file).is_file():
            continue
        text = (ROOT / file).read_bytes()
        # The files of the copy never change in number: ninja need not look for new ones each time.
        copy_if_changed(file, text.replace(b"CONFIGURE_DEPENDS", b"") if file.endswith("CMakeLists.txt") else text)
        shutil.copymode(ROOT / file, TREE / file)


def build(targets, jobs=1):
    made = subprocess.run(["ninja", "-C", BUILD, f"-j{jobs}", *targets], capture_output=True, text=True)
    return made.returncode == 0, made.stdout


def work_in(number):
    """This process plants its faults in the copy of that number."""
    global COPY, TREE, BUILD
    COPY = HOME / str(number)
    TREE, BUILD = COPY / "tree", COPY / "build"


def configure():
    options = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DCMAKE_C_COMPILER=clang",
               "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_CXX_FLAGS=-w"]
    if shutil.which("ccache"):  # for files that are whole again; of its own, since faults are of no use to anybody else
        os.environ |= {"CCACHE_DIR": str(HOME / "ccache"), "CCACHE_MAXSIZE": "2G", "CCACHE_BASEDIR": str(COPY),
                       "CCACHE_NOHASHDIR": "1"}
        options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    if shutil.which("ld.lld"):
        options += [f"-DCMAKE_{kind}_LINKER_FLAGS=-fuse-ld=lld" for kind in ("EXE", "SHARED")]
    subprocess.run(["cmake", "-G", "Ninja", "-S", TREE, "-B", BUILD, *options], check=True, stdout=subprocess.DEVNULL)


def program_path(name):
    return next(path for path in (BUILD / "bin" / place / name for place in (".", "sdk", "recorded")) if path.exists())


def limit():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST_FILE, LARGEST_FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(name, seconds, all_tests=False):
    """What became of the program, None when it passes, and the tests that failed; of one that died or hung, unknown ones."""
    scratch, printed = COPY / "scratch", COPY / "output.txt"
    shutil.rmtree(scratch, ignore_errors=True)
    (scratch / "tmp").mkdir(parents=True)
    path = program_path(name)
    environment = {key: value for key, value in os.environ.items() if not key.startswith("ZEL_")}
    environment |= {"XDG_DATA_HOME": str(scratch), "HOME": str(scratch), "TMPDIR": str(scratch / "tmp")}
    if name.startswith("fuzz_"):
        arguments = ["--random", "2000" if name == "fuzz_frame" else "60000"]
    else:
        arguments = ["--gtest_brief=1", *([] if all_tests else ["--gtest_fail_fast"])]
    with open(printed, "w") as output:
        process = subprocess.Popen([path, *arguments], cwd=path.parent, env=environment,
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                   start_new_session=True, preexec_fn=limit)
        try:
            code = process.wait(seconds)
            became = None if code == 0 else "failed" if code > 0 else "died"
        except subprocess.TimeoutExpired:
            became = "hung"
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
    failed = re.findall(r"^\[  FAILED  \] ([\w./]+).* ms\)$", printed.read_text(errors="replace"), re.M)
    return became, failed + [f"{name}: {became}"] * (became in ("hung", "died") or became == "failed" and not failed)


def times(folders):
    """How long each program takes; all must pass without a fault."""
    taken = {}
    for name in dict.fromkeys(name for folder in folders for name in PROGRAMS[folder]):
        start = time.monotonic()
        became, _ = run(name, 300)
        taken[name] = time.monotonic() - start
        if became:
            sys.exit(f"{name} {became} without a fault:\n" + (COPY / "output.txt").read_text()[-2000:])
        print(f"  {name}: {taken[name]:.1f} s", flush=True)
    return taken


def try_fault(fault, folder, taken, all_programs):
    """What became of the fault: none when it does not compile."""
    result = {"caught": {}, "tests": [], "start": time.time()}
    copy_if_changed(fault.file, planted(fault).encode())
    try:
        for name in PROGRAMS[folder]:
            made, output = build([name])
            if not made:
                return None
            became, failed = run(name, 10 + 6 * taken[name], all_programs)
            if became:
                result["caught"][name] = became
                result["tests"] += failed
                if not all_programs:
                    break
    finally:
        copy_if_changed(fault.file, (ROOT / fault.file).read_bytes())
    result["seconds"] = round(time.time() - result.pop("start"), 1)
    return result


@functools.cache
def included(file):
    """The project's files that this one includes, directly or not, and itself."""
    found = {file}
    for name in re.findall(r'^#include "([^"]+)"', (ROOT / file).read_text(), re.M):
        if name not in found and (ROOT / name).is_file():
            found |= included(name)
    return frozenset(found)


@functools.cache
def users():
    """How many source files include each file: the same for everybody, whatever was built."""
    listed = subprocess.run(["git", "ls-files", "*.cpp"], cwd=ROOT, capture_output=True, text=True, check=True).stdout
    return collections.Counter(header for file in listed.split() for header in included(file))


def few_users(folder):
    """Headers with code of their own that few files include: compiling those is as good as compiling one."""
    return [file for file, count in users().items() if file.endswith(".h") and os.path.dirname(file) == folder and count <= 3]


def sources(folder):
    files = [str(path.relative_to(ROOT)) for path in (ROOT / folder).glob("*.cpp")]
    return sorted(files + few_users(folder))


def chosen(folder, seed):
    """All faults of the folder in the order in which they are tried: the kinds in turn, each in random order."""
    dice = random.Random(f"{seed} {folder}")
    by_kind = collections.defaultdict(list)
    for file in sources(folder):
        for fault in faults_of(file):
            by_kind[fault.kind].append(fault)
    for faults in by_kind.values():
        dice.shuffle(faults)
    while by_kind:
        for kind in sorted(by_kind):
            yield by_kind[kind].pop()
            if not by_kind[kind]:
                del by_kind[kind]


def table(results, folders):
    """Programs and tests that caught a fault: means of those caught, of use with --all."""
    print(f"\n{'folder':<12} {'planted':>8} {'caught':>7} {'by its own':>11} {'hung':>5} {'programs':>9} {'tests':>6} {'by one':>7}")
    for folder in [*folders, "all"]:
        rows = [row for row in results if folder in (row["folder"], "all")]
        caught = [row for row in rows if row["caught"]]
        own = sum(any(PROGRAMS[row["folder"]].index(name) < own_programs(row["folder"]) for name in row["caught"]) for row in rows)
        hung = sum("hung" in row["caught"].values() for row in rows)
        programs, tests = (sum(counts) / max(len(caught), 1) for counts in
                           ((len(row["caught"]) for row in caught), (len(row["tests"]) for row in caught)))
        by_one = sum(len(row["tests"]) == 1 for row in caught)
        print(f"{folder:<12} {len(rows):>8} {len(caught):>7} {own:>11} {hung:>5} {programs:>9.1f} {tests:>6.1f} {by_one:>7}")
    print(f"{sum(row['seconds'] for row in results) / max(len(results), 1):.1f} s per fault")


def own_programs(folder):
    return {"sdk": 2, "image": 3, "tapbalance": 2, "util": 2, "kernels": 2}.get(folder, 1)


def try_folder(folder, wanted, taken, options, known, kept):
    """The results of so many faults in the folder, in this process's copy."""
    results = []
    for fault in chosen(folder, options.seed):
        if len(results) == wanted:
            break
        diff = diff_of(fault)
        row = known.get(diff)
        if not row:
            became = try_fault(fault, folder, taken, options.all)
            row = {"folder": folder, "kind": fault.kind, "diff": diff, "planted": bool(became), **(became or {})}
            with open(kept, "a") as file:
                file.write(json.dumps(row) + "\n")
        if row["planted"]:
            results.append(row)
            line = (ROOT / fault.file).read_text().count("\n", 0, fault.start) + 1
            print(f"{folder} {len(results)}/{wanted} {fault.file}:{line} {fault.kind}: {row['caught'] or 'SURVIVED'}, "
                  f"{len(row['tests'])} tests, {row['seconds']} s", flush=True)
    return results


def prepare(number, folders):
    work_in(number)
    copy_tree()
    configure()
    made, output = build(dict.fromkeys(name for folder in folders for name in PROGRAMS[folder]), os.cpu_count())
    if not made:
        sys.exit(output[-3000:])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=200)
    parser.add_argument("seed", nargs="?", type=int, default=1)
    parser.add_argument("--folder", action="append", choices=PROGRAMS)
    parser.add_argument("--all", action="store_true", help="every program tries every fault")
    parser.add_argument("--jobs", type=int, default=2, help="folders that are worked on at a time")
    options = parser.parse_args()
    folders = options.folder or list(PROGRAMS)

    for number in range(options.jobs):
        prepare(number, folders)
    taken = times(folders)

    kept = HOME / f"results-{options.seed}{'-all' if options.all else ''}.jsonl"
    rows = map(json.loads, kept.read_text().splitlines()) if kept.exists() else []
    known = {row["diff"]: row for row in rows if row.get("caught") or not row["planted"]}
    shares = [options.count * (index + 1) // len(folders) - options.count * index // len(folders) for index in range(len(folders))]
    numbers = multiprocessing.Queue()
    for number in range(options.jobs):
        numbers.put(number)
    with multiprocessing.Pool(options.jobs, lambda: work_in(numbers.get())) as workers:
        begun = [workers.apply_async(try_folder, (folder, wanted, taken, options, known, kept))
                 for folder, wanted in zip(folders, shares)]
        results = [row for job in begun for row in job.get()]
    survivors = [row for row in results if not row["caught"]]
    (HOME / "survivors.txt").write_text("\n".join(f"{row['kind']}\n{row['diff']}" for row in survivors))
    table(results, folders)
    print(f"{len(survivors)} survived: build/mutation/survivors.txt")


if __name__ == "__main__":
    main()
