#ifndef PHOTOLIB_SAMPLE_OUTPUT_FOLDER_H
#define PHOTOLIB_SAMPLE_OUTPUT_FOLDER_H

#include <QByteArray>
#include <QFile>
#include <QSet>
#include <QString>
#include <QStringList>

namespace sample {

/// A file that is being written; every operation throws SampleError on failure, naming the
/// file and the cause.
class OutputFile
{
public:
    explicit OutputFile(const QString &path);

    void write(const QByteArray &bytes);
    /// Closes the file with the modification time `seconds` after 2001-01-01 00:00:00 UTC.
    void close(qint64 seconds);

private:
    [[noreturn]] void fail() const;
    QFile m_file;
};

/// Gives an existing file that modification time. Throws SampleError.
void setFileDate(const QString &path, qint64 seconds);

/// The folder that a sample is written into. Unless kept, it is gone with everything that was
/// put into it, and with the parents made for it, when this object goes.
class OutputFolder
{
public:
    /// Makes the folder unless it is there and empty. Throws SampleError, with nothing left
    /// behind, when it is not empty or cannot be made.
    explicit OutputFolder(const QString &path);
    ~OutputFolder();
    OutputFolder(const OutputFolder &) = delete;
    OutputFolder &operator=(const OutputFolder &) = delete;

    /// The full path of `relative`, whose folder is made if necessary. Throws SampleError.
    QString prepare(const QString &relative);
    /// Writes a whole file. Throws SampleError.
    void writeFile(const QString &relative, const QByteArray &bytes, qint64 seconds);
    /// The sample is complete and stays.
    void keep() { m_kept = true; }

private:
    static void makeFolder(const QString &path);
    void removeMade();
    void holdOpen();

    QString m_path;
    int m_fd = -1; ///< the folder, whatever has its name by the time something is removed
    QStringList m_madeFolders; ///< the sample's own folder and its parents, outermost first
    QSet<QString> m_entries;   ///< what was put directly into the folder
    QString m_lastFolder;
    bool m_kept = false;
};

} // namespace sample

#endif // PHOTOLIB_SAMPLE_OUTPUT_FOLDER_H
