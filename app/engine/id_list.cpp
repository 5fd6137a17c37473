#include "engine/id_list.h"

#include "base/error.h"

#include <QByteArray>

#include <algorithm>
#include <set>

QList<quint64> withoutDuplicates(const QList<quint64> &ids)
{
    std::set<quint64> seen; // sorted: a device may choose ids that a hash holds for one
    QList<quint64> result;
    for (const quint64 id : ids) {
        if (seen.insert(id).second)
            result.append(id);
    }
    return result;
}

QList<quint64> knownIds(const std::vector<std::string> &texts, QList<quint64> ids,
                        const std::string &unknown)
{
    std::sort(ids.begin(), ids.end());
    QList<quint64> known;
    for (const std::string &text : texts) {
        bool isKey = false;
        const quint64 id = QByteArray::fromStdString(text).toULongLong(&isKey);
        if (!isKey || !std::binary_search(ids.cbegin(), ids.cend(), id))
            throw Error(text, unknown);
        known.append(id);
    }
    return withoutDuplicates(known);
}
