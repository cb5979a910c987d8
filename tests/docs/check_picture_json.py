"""The files that zelcam writes beside pictures are what docs/picture.schema.json says, and docs/picture-json.md names
the members of the schema, no more and no less.

    check_picture_json.py FOLDER-OF-PROGRAMS
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"
RUNS = [
    "capture --camera 0",
    "capture --camera 1 --frames 2 --format png --scale --roi 8,8,32,16 --bin 2,2 --gain 3",
    "capture --camera 3 --frames 2 --average 3",
    "trigger --camera 3 --frames 2 --save",
    "trigger --camera 2 --save --color --color-space sensor --format 8",
] + [f"capture --camera 2 --color --scale --color-space {space} --format {form}"
     for space, form in (("srgb", "16"), ("ccir709", "16"), ("xyz", "8"), ("srgb", "rgba8"))]
PICTURES = 12


def names_of(schema, prefix=""):
    for name, member in schema["properties"].items():
        yield prefix + name
        if "properties" in member:
            yield from names_of(member, prefix + name + ".")


def main(programs):
    schema = json.loads((DOCS / "picture.schema.json").read_text("utf-8"))
    described = re.findall(r"^\| `([\w.]+)` \|", (DOCS / "picture-json.md").read_text("utf-8"), re.MULTILINE)
    if described != list(names_of(schema)):
        differ = set(described) ^ set(names_of(schema))
        sys.exit(f"picture-json.md and picture.schema.json differ: {', '.join(sorted(differ)) or 'the order'}")

    validator = jsonschema.Draft202012Validator(schema)
    validator.check_schema(schema)
    environment = dict(os.environ, ZEL_SIM_SIZE="64x48", ZEL_SIM_PACE="none")
    faults = []
    with tempfile.TemporaryDirectory(prefix="zel-json.") as folder:
        for run in RUNS:
            subprocess.run([os.path.abspath(programs + "/zelcam")] + run.split() + ["--exposure", "500"], cwd=folder,
                           env=environment, check=True, stdout=subprocess.DEVNULL, timeout=60)
        files = sorted(pathlib.Path(folder).glob("*.json"))
        for path in files:
            described = json.loads(path.read_text())
            faults += [f"{path.name}: {error.json_path}: {error.message}" for error in validator.iter_errors(described)]
            if not (path.parent / described["file"]).exists():
                faults.append(f"{path.name}: there is no {described['file']}")
    print("\n".join(faults + [f"{len(files)} files, {len(faults)} faults"]))
    return not faults and len(files) == PICTURES


if __name__ == "__main__":
    sys.exit(0 if main(sys.argv[1]) else 1)
