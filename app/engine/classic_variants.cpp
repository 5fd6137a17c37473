#include "engine/classic_variants.h"

#include <algorithm>
#include <functional>
#include <limits>

namespace {

// Looks like the plug-in, so that both mean the same variant: the first one that beats
// `start`, and then each other one that beats the best so far.
template <class Beats>
const StoredPicture *bestVariant(const ClassicPhoto &photo, qint32 start, Beats beats)
{
    const StoredPicture *best = nullptr;
    for (const StoredPicture &variant : photo.variants) {
        if (beats(variant.size, best ? best->size : start))
            best = &variant;
    }
    return best;
}

} // namespace

const StoredPicture *smallestVariant(const ClassicPhoto &photo)
{
    return bestVariant(photo, std::numeric_limits<qint32>::max(), std::less<>());
}

const StoredPicture *largestVariant(const ClassicPhoto &photo)
{
    return bestVariant(photo, 0, std::greater<>());
}

qint64 storedBytes(const ClassicPhoto &photo)
{
    qint64 bytes = 0;
    for (const StoredPicture &variant : photo.variants)
        bytes += std::max(variant.size, 0);
    return bytes;
}
