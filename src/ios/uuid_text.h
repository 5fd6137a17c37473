#ifndef PHOTOLIB_IOS_UUID_TEXT_H
#define PHOTOLIB_IOS_UUID_TEXT_H

#include "photolib_export.h"

/// Writes the text form of the 16 bytes at `in`, 8-4-4-4-12 upper-case hexadecimal
/// digits in input order, and a closing NUL to the 37 bytes at `out`.
PHOTOLIB_EXPORT void convterHexFormat(const char *in, char *out);

#endif // PHOTOLIB_IOS_UUID_TEXT_H
