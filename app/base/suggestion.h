#ifndef PHOTOLIB_BASE_SUGGESTION_H
#define PHOTOLIB_BASE_SUGGESTION_H

#include <string>
#include <vector>

/// "; did you mean NAME?" with the one of `names` that `word` is a misspelling of; empty when none
/// is close.
std::string suggestion(const std::string &word, const std::vector<std::string> &names);

#endif // PHOTOLIB_BASE_SUGGESTION_H
