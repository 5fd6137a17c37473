#include "base/suggestion.h"

#include <algorithm>
#include <numeric>

namespace {

// How many letters must be changed, added or removed to make one word of the other.
std::size_t editDistance(const std::string &from, const std::string &to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string suggestion(const std::string &word, const std::vector<std::string> &names)
{
    // A third of the letters may be wrong; in longer words no more than a few are typed wrong.
    const std::size_t longest = 32;
    if (word.size() > longest)
        return std::string();
    std::size_t best = std::max<std::size_t>(1, word.size() / 3) + 1;
    std::string found;
    for (const std::string &name : names) {
        const bool isStart = word.size() > 1 && name.compare(0, word.size(), word) == 0;
        const std::size_t distance = isStart ? 1 : editDistance(word, name);
        if (distance < best) {
            best = distance;
            found = name;
        }
    }
    return found.empty() ? found : "; did you mean " + found + "?";
}
