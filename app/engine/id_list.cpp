#include "engine/id_list.h"

#include <QSet>

QList<quint64> withoutDuplicates(const QList<quint64> &ids)
{
    QSet<quint64> seen;
    QList<quint64> result;
    for (const quint64 id : ids) {
        if (!seen.contains(id))
            result.append(id);
        seen.insert(id);
    }
    return result;
}
