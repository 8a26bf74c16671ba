#!/usr/bin/env python3
"""Validates field schemas against the GDD meta-schema kept in
tests/fixtures/gdd, with Debian's python3-jsonschema (JSON Schema 2020-12):
    /usr/bin/python3 validate_gdd.py FILE.gdd.json...
Exit 0 when every file is a valid GDD schema, 1 with the reasons otherwise.

The GDD meta-schema says, with a $ref to JSON Schema's own 2020-12
meta-schema, that a field schema is also a JSON Schema. The library's
resolver cannot follow that $ref from inside another document (the
meta-schema's $dynamicRef then finds no anchor), so that part is checked on
its own with check_schema, and the rest against the GDD meta-schema with
those $refs read as "true"."""
import json
import pathlib
import sys

from jsonschema import Draft202012Validator, RefResolver

HERE = pathlib.Path(__file__).resolve().parent
META = HERE.parent / "fixtures" / "gdd" / "v1"
BASE = "https://superflytv.github.io/GraphicsDataDefinition/gdd-meta-schema/v1/"


JSON_SCHEMA_2020_12 = "https://json-schema.org/draft/2020-12/schema"


def without_json_schema_refs(node):
    if isinstance(node, dict):
        if node.get("$ref") == JSON_SCHEMA_2020_12:
            return {}
        return {key: without_json_schema_refs(value) for key, value in node.items()}
    if isinstance(node, list):
        return [without_json_schema_refs(item) for item in node]
    return node


def meta_schemas():
    store = {}
    for path in META.rglob("*.json"):
        document = json.loads(path.read_text())
        store[document["$id"]] = without_json_schema_refs(document)
    return store


def main(paths):
    store = meta_schemas()
    root = store[BASE + "schema.json"]
    resolver = RefResolver(base_uri=BASE + "schema.json", referrer=root, store=store)
    validator = Draft202012Validator(root, resolver=resolver)
    failed = False
    for path in paths:
        document = json.loads(pathlib.Path(path).read_text())
        try:
            Draft202012Validator.check_schema(document)
        except Exception as error:  # SchemaError: not a JSON Schema at all
            failed = True
            print(f"{path}: not a JSON Schema: {error}", file=sys.stderr)
        errors = sorted(validator.iter_errors(document), key=lambda e: list(e.path))
        for error in errors:
            failed = True
            where = "/".join(str(p) for p in error.absolute_path) or "(root)"
            print(f"{path}: {where}: {error.message}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
