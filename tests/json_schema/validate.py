"""Fails unless the JSON in FILE is what DEFINITION of the schema says, with an item at least in it,
and each key that it has is one that the schema knows. It also fails when the schema accepts the JSON
with a key less, which would tell nothing.

usage: validate.py SCHEMA photos|albums|reportedFile FILE

FILE has a reported file on each line.
"""

import copy
import json
import sys

import jsonschema

REPORT = "reportedFile"
ITEMS = {"photos": "photo", "albums": "album", REPORT: REPORT}


def validator(schema, definition):
    jsonschema.Draft7Validator.check_schema(schema)
    part = {"$ref": "#/definitions/" + definition, "definitions": schema["definitions"]}
    return jsonschema.Draft7Validator(part)


def documents_in(file, definition):
    return [json.loads(line) for line in file] if definition == REPORT else [json.load(file)]


def items_of(document, definition):
    return [document] if definition == REPORT else document[definition]


def document_of(item, definition):
    return item if definition == REPORT else {definition: [item]}


def main(schema_file, definition, json_file):
    with open(schema_file, encoding="utf-8") as file:
        schema = json.load(file)
    with open(json_file, encoding="utf-8") as file:
        documents = documents_in(file, definition)
    check = validator(schema, definition)
    for document in documents:
        check.validate(document)
    items = [item for document in documents for item in items_of(document, definition)]
    assert items, json_file + ": nothing to look at"
    known = set(schema["definitions"][ITEMS[definition]]["properties"])
    for item in items:
        assert set(item) == known, sorted(set(item) ^ known)
    for key in known:
        less = copy.deepcopy(items[0])
        del less[key]
        assert not check.is_valid(document_of(less, definition)), key + " may be left out"


main(*sys.argv[1:])
