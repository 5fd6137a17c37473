"""Fails unless the JSON in FILE is what DEFINITION of the schema says, with a photo or album at least
in it, and each key that it has is one that the schema knows. It also fails when the schema accepts
the JSON with a key less, which would tell nothing.

usage: validate.py SCHEMA DEFINITION FILE
"""

import copy
import json
import sys

import jsonschema


def validator(schema, definition):
    jsonschema.Draft7Validator.check_schema(schema)
    part = {"$ref": "#/definitions/" + definition, "definitions": schema["definitions"]}
    return jsonschema.Draft7Validator(part)


def main(schema_file, definition, json_file):
    with open(schema_file, encoding="utf-8") as file:
        schema = json.load(file)
    with open(json_file, encoding="utf-8") as file:
        printed = json.load(file)
    check = validator(schema, definition)
    check.validate(printed)
    items = printed[definition]
    assert items, json_file + ": nothing to look at"
    known = set(schema["definitions"][definition[:-1]]["properties"])
    for item in items:
        assert set(item) == known, sorted(set(item) ^ known)
    for key in known:
        less = copy.deepcopy(items[0])
        del less[key]
        assert not check.is_valid({definition: [less]}), key + " may be left out"


main(*sys.argv[1:])
