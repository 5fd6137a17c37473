#ifndef PHOTOLIB_TESTS_APP_DEVICE_FOLDER_H
#define PHOTOLIB_TESTS_APP_DEVICE_FOLDER_H

#include "support/photos_database.h"

#include <QByteArray>
#include <QList>

/// A temporary folder whose files have names in any bytes; gone at the end of the test.
/// Paths are relative to it unless they begin with "/". What does not work fails the test.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();

    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    /// The folder, without a closing "/".
    QByteArray root() const { return m_root; }
    QByteArray path(const QByteArray &relative) const { return root() + '/' + relative; }

    /// Creates a folder with its parents.
    void makeFolder(const QByteArray &relative) const;

    /// Writes a file; its folder is created.
    void write(const QByteArray &relative, const QByteArray &bytes) const;

    /// A file of `size` bytes that takes no room on the disk.
    void writeSparse(const QByteArray &relative, qint64 size) const;

    /// One that takes longer to copy than any test, though there is room for the copy: half of
    /// what is free. Returns its size.
    qint64 writeEndless(const QByteArray &relative) const;

    /// Adds `count` bytes, all zero, to the end of a file.
    void lengthen(const QByteArray &relative, qint64 count) const;

    void makeLink(const QByteArray &relative, const QByteArray &target) const;
    void makePipe(const QByteArray &relative) const;

    bool exists(const QByteArray &relative) const;
    QByteArray read(const QByteArray &relative) const;

    /// The size of a file, or -1 when there is none.
    qint64 size(const QByteArray &relative) const;

    /// Every file and folder in `relative` or, when it is empty, in the whole folder.
    QList<QByteArray> everythingIn(const QByteArray &relative = QByteArray()) const;

private:
    QByteArray m_root;
};

/// Writes the photo database of a device into the folder `device` of `scratch`.
void writeDatabase(const ScratchFolder &scratch, const QByteArray &device,
                   const PhotosDatabase &database);

#endif // PHOTOLIB_TESTS_APP_DEVICE_FOLDER_H
