#ifndef PHOTOLIB_ENGINE_ID_LIST_H
#define PHOTOLIB_ENGINE_ID_LIST_H

#include <QList>
#include <QtGlobal>

/// Each of `ids` once, where it comes first.
QList<quint64> withoutDuplicates(const QList<quint64> &ids);

#endif // PHOTOLIB_ENGINE_ID_LIST_H
