#include "engine/taken_text.h"

#include "catalog/asset.h"
#include "engine/library_date.h"

QString takenText(const Asset &asset)
{
    constexpr int toTheMinute = 16; // letters
    const QString text = clockText(asset.taken, asset.utcOffset.value_or(0)).left(toTheMinute);
    return asset.utcOffset || text.isEmpty() ? text : text + QLatin1Char('Z');
}
