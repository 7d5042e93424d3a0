"""Shared by the tests in Python: what counts them, and documents against their schema."""

import json
import sys
from pathlib import Path

import jsonschema

TOP = Path(__file__).resolve().parents[2]
counts = {True: 0, False: 0}


def check(holds, what):
    counts[bool(holds)] += 1
    if not holds:
        print(f"FAILED: {what}")


def equal(got, wanted, what):
    check(got == wanted, f"{what}: wanted {wanted!r}, got {got!r}")


def finish():
    print(f"{counts[True]} passed, {counts[False]} failed")
    sys.exit(counts[False] != 0)


def strict(schema):
    """The schema without room for keys that it does not tell of."""
    if isinstance(schema, dict):
        if "properties" in schema and schema.get("type") == "object":
            schema.setdefault("additionalProperties", False)
        for part in schema.values():
            strict(part)
    elif isinstance(schema, list):
        for part in schema:
            strict(part)
    return schema


def schema_of(name):
    """A schema of docs/, itself checked, without room for more."""
    schema = json.loads((TOP / "docs" / name).read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    return strict(schema)


STRICT = schema_of("varmex.schema.json")


def errors_of(document, schema):
    return [error.message[:200] for error in jsonschema.Draft202012Validator(schema).iter_errors(document)][:3]


def conforms(document, kind, what):
    """The document is one of that kind, by docs/varmex.schema.json."""
    errors = errors_of(document, {"$ref": f"#/$defs/{kind}", "$defs": STRICT["$defs"]})
    check(not errors, f"{what} against the schema: {errors}")
