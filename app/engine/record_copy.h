#ifndef PHOTOLIB_ENGINE_RECORD_COPY_H
#define PHOTOLIB_ENGINE_RECORD_COPY_H

#include "base/folders.h"

#include <QByteArray>

class CancelToken;

/// A copy of the database of an export's record with its write-ahead log, as long as the object
/// lives: as it was at one moment, even if an exporter writes it meanwhile. What a program that was
/// killed left of one is removed by the next one.
class RecordCopy
{
public:
    /// Copies from the folder that the descriptor `folder` holds open. Messages call the database
    /// `name`. Throws Error, also when one of the files is a link or no regular file, and of the
    /// kind Cancelled soon after `cancel` is.
    RecordCopy(int folder, const QByteArray &name, const CancelToken &cancel);
    ~RecordCopy();

    RecordCopy(const RecordCopy &) = delete;
    RecordCopy &operator=(const RecordCopy &) = delete;

    /// Whether there was a database to be copied.
    bool exists() const { return m_exists; }

    /// Where the copied database is.
    QByteArray path() const { return m_path + "/export.sqlite"; }

private:
    void copy(int folder, const QByteArray &name, const CancelToken &cancel);

    const QByteArray m_path;
    LockedFolder m_folder; // of that path: a program that clears up leaves it alone
    bool m_exists = false;
};

#endif // PHOTOLIB_ENGINE_RECORD_COPY_H
