#ifndef PHOTOLIB_SAMPLE_SAMPLE_NAMES_H
#define PHOTOLIB_SAMPLE_SAMPLE_NAMES_H

#include <QString>

namespace sample {

/// The keyword `index`, from 0. No two are equal.
QString keywordTitle(int index);

/// The full name of the person `index`, from 0: empty for a face that nobody has named yet. Two
/// people of a family have the same name; all others differ.
QString personName(int index);

/// The title or caption that the asset `index` gets when it gets one.
QString photoTitle(int index);
QString photoCaption(int index);

} // namespace sample

#endif // PHOTOLIB_SAMPLE_SAMPLE_NAMES_H
