#include "classic/case_blind_paths.h"

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
    // What is behind a name that is not there is not looked for: a path may have any number
    // of names.
    bool isThere = true;
    for (const QByteArray &name : path.split('/')) {
        if (name.isEmpty())
            continue;
        const QByteArray found = isThere ? nameIn(result, name) : QByteArray();
        isThere = !found.isEmpty();
        result += '/' + (isThere ? found : name);
    }
    return result;
}

// Empty when there is no such name.
QByteArray CaseBlindPaths::nameIn(const QByteArray &folder, const QByteArray &name)
{
    const QList<QByteArray> same = namesIn(folder).value(keyOf(name));
    return same.contains(name) ? name : same.value(0);
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
