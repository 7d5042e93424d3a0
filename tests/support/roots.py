"""Shared by the tests in Python: the command on installations of their own, and documents against their schema."""

import functools
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import jsonschema
import pytest

TOP = Path(__file__).resolve().parents[2]
DEADLINE = 120
I, E = "pxisys.ini", "pxiesys.ini"


class Root:
    """An installation below a folder: the sample, or what make makes of some arguments."""

    # The command, behind what runs it.
    varmex = [os.path.abspath(word) if os.path.exists(word) else word for word in sys.argv[1:]]

    def __init__(self, folder, *made):
        self.folder = folder
        if made:
            run = self.run("make", folder, *made)
            assert run.returncode == 0, run
        else:
            shutil.copytree(TOP / "samples", folder)

    def file(self, name):
        return self.folder / "etc/pxi" / name

    def edit(self, *edits):
        """Another file in the place of each one that is edited, at once."""
        for name in {name for name, *_ in edits}:
            old = text = self.file(name).read_text(encoding="latin-1")
            for _, pattern, by in (edit for edit in edits if edit[0] == name):
                text = re.sub(pattern, by, text, count=1, flags=re.M | re.S)
            assert text != old, edits
            self.file("new").write_text(text, encoding="latin-1")
            self.file("new").replace(self.file(name))

    def environment(self):
        return dict(os.environ, VARMEX_FSROOT=str(self.folder), TZ="IST-5:30")

    def run(self, *arguments, ahead=(), **more):
        return subprocess.run([*ahead, *self.varmex, *arguments], env=self.environment(), capture_output=True,
                              text=True, errors="replace", timeout=DEADLINE, **more)

    def ask(self, kind, *arguments):
        """How a command ends, and its document, which is of that kind; None where it prints none."""
        run = self.run(*arguments, "--json")
        document = json.loads(run.stdout) if run.stdout else None
        if run.stdout:
            conforms(document, kind)
        return run, document

    def show(self, *arguments):
        return self.ask("installation", "show", *arguments)[1]


def strict(schema):
    """Without room for keys that it does not tell of."""
    if "properties" in schema and schema.get("type") == "object":
        schema.setdefault("additionalProperties", False)
    return schema


@functools.cache
def schema_of(name):
    schema = json.loads((TOP / "docs" / name).read_text(), object_hook=strict)
    jsonschema.Draft202012Validator.check_schema(schema)
    return schema


def conforms(document, kind=None, name="varmex.schema.json"):
    """The document is what a schema of docs/ tells of as a whole, or of that kind, and nothing more."""
    schema = schema_of(name)
    part = {"$ref": f"#/$defs/{kind}", "$defs": schema["$defs"]} if kind else schema
    jsonschema.Draft202012Validator(part).validate(document)


def main(file):
    """Runs the tests of a file, in folders that are gone afterwards."""
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", f"--basetemp={folder}/all", file]))
