#ifndef PHOTOLIB_ENGINE_ID_LIST_H
#define PHOTOLIB_ENGINE_ID_LIST_H

#include <QList>
#include <QtGlobal>

#include <string>
#include <vector>

/// Each of `ids` once, where it comes first.
QList<quint64> withoutDuplicates(const QList<quint64> &ids);

/// Those of `ids` that `texts`, decimal numbers of any length, name: each once, where it is named
/// first. Throws Error, "TEXT: `unknown`", for the first that names none.
QList<quint64> knownIds(const std::vector<std::string> &texts, QList<quint64> ids,
                        const std::string &unknown);

#endif // PHOTOLIB_ENGINE_ID_LIST_H
