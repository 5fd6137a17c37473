#ifndef PHOTOLIB_TESTS_APP_CATALOG_TEXTS_H
#define PHOTOLIB_TESTS_APP_CATALOG_TEXTS_H

#include "catalog/catalog.h"

#include <map>
#include <string>

/// A field's name, and its value as a text: "null" for a null text and for nothing, "true" and
/// "false", numbers so that they can be told apart, the elements of lists with " " between them,
/// and with "|" those of lists of texts.
using FieldTexts = std::map<std::string, std::string>;

FieldTexts fieldsOf(const Asset &asset);
FieldTexts fieldsOf(const Album &album);

/// With `changes` in place of the fields of the same names.
FieldTexts with(FieldTexts fields, const FieldTexts &changes);

/// As in the fields of numbers that may be no whole ones.
std::string numberText(double number);

#endif // PHOTOLIB_TESTS_APP_CATALOG_TEXTS_H
