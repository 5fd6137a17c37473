#ifndef PHOTOLIB_CLI_ID_LIST_H
#define PHOTOLIB_CLI_ID_LIST_H

#include <QList>
#include <QtGlobal>

/// Each of `ids` once, where it comes first.
QList<quint64> eachOnce(const QList<quint64> &ids);

#endif // PHOTOLIB_CLI_ID_LIST_H
