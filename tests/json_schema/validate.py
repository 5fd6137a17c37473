"""Fails unless the JSON in FILE is what DEFINITION of the schema says, with an item at least in it,
and each key that it has is one that the schema knows. It also fails when the schema accepts the JSON
with a key less, which would tell nothing.

usage: validate.py SCHEMA DEFINITION FILE

DEFINITION is photos, albums, exportPreview, verification or reportedFile; in the last case, FILE has
an object on each line.
"""

import copy
import json
import sys

import jsonschema

REPORT = "reportedFile"
# Which key of the object leads to the items, and the definition of one.
LISTS = {
    "photos": ("photos", "photo"),
    "albums": ("albums", "album"),
    "exportPreview": ("files", "plannedFile"),
    "verification": ("files", "verifiedFile"),
}


def validator(schema, definition):
    jsonschema.Draft7Validator.check_schema(schema)
    part = {"$ref": "#/definitions/" + definition, "definitions": schema["definitions"]}
    return jsonschema.Draft7Validator(part)


def require_keys(objects, schema, definition):
    known = set(schema["definitions"][definition]["properties"])
    for each in objects:
        assert set(each) == known, sorted(set(each) ^ known)
    check = validator(schema, definition)
    for key in known:
        less = copy.deepcopy(objects[0])
        del less[key]
        assert not check.is_valid(less), key + " may be left out"


def main(schema_file, definition, json_file):
    with open(schema_file, encoding="utf-8") as file:
        schema = json.load(file)
    with open(json_file, encoding="utf-8") as file:
        objects = [json.loads(line) for line in file] if definition == REPORT else [json.load(file)]
    assert objects, json_file + ": nothing to look at"
    check = validator(schema, definition)
    for each in objects:
        check.validate(each)
    require_keys(objects, schema, definition)
    if definition == REPORT:
        return
    key, item = LISTS[definition]
    assert objects[0][key], json_file + ": nothing to look at"
    require_keys(objects[0][key], schema, item)


main(*sys.argv[1:])
