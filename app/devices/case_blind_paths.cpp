#include "devices/case_blind_paths.h"

namespace {

// Equal for names that a disk without case holds for the same. A name that is no UTF-8 is
// the same as itself only.
QByteArray keyOf(const QByteArray &name)
{
    const QString text = QString::fromUtf8(name);
    if (text.toUtf8() != name)
        return name;
    return text.normalized(QString::NormalizationForm_C).toCaseFolded().toUtf8();
}

} // namespace

QByteArray CaseBlindPaths::resolved(const QByteArray &path)
{
    QByteArray result;
    for (const QByteArray &name : path.split('/')) {
        if (!name.isEmpty())
            result += '/' + nameIn(result, name);
    }
    return result;
}

QByteArray CaseBlindPaths::nameIn(const QByteArray &folder, const QByteArray &name)
{
    const QList<QByteArray> same = namesIn(folder).value(keyOf(name));
    return same.isEmpty() || same.contains(name) ? name : same.first();
}

const CaseBlindPaths::NamesByKey &CaseBlindPaths::namesIn(const QByteArray &folder)
{
    const auto known = m_folders.constFind(folder);
    if (known != m_folders.constEnd())
        return *known;
    NamesByKey byKey;
    QList<QByteArray> names;
    FileError ignored; // whoever opens the path meets the same error
    if (m_files.list(folder, &names, &ignored)) {
        for (const QByteArray &name : names)
            byKey[keyOf(name)].append(name);
    }
    return *m_folders.insert(folder, byKey);
}
