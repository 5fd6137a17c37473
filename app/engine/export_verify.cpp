#include "engine/export_verify.h"

#include "base/cancel_token.h"
#include "base/error.h"
#include "base/file_names.h"
#include "base/sha256.h"
#include "engine/export_record.h"
#include "engine/export_tree.h"

#include <QList>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 blockSize = 1 << 20;

QString causeOf(int code)
{
    return QString::fromStdString(std::generic_category().message(code));
}

QString typeText(mode_t mode)
{
    if (S_ISLNK(mode))
        return QStringLiteral("is a link");
    return S_ISDIR(mode) ? QStringLiteral("is a folder") : QStringLiteral("is no regular file");
}

// How one file is.
struct Finding {
    VerifiedState state = VerifiedState::Good;
    QString cause;
};

Finding changed(const QString &cause)
{
    return {VerifiedState::Changed, cause};
}

// That of a file which cannot be looked at.
Finding failed(int code)
{
    return code == ENOENT ? Finding{VerifiedState::Missing, QString()} : changed(causeOf(code));
}

// The path that a link at `path` with this text leads to, by names alone; empty when it leads out
// of the folder.
QByteArray linkTarget(const QByteArray &path, const QByteArray &text)
{
    QList<QByteArray> names = path.split('/');
    names.removeLast();
    if (text.startsWith('/'))
        return QByteArray();
    for (const QByteArray &name : text.split('/')) {
        if (name == ".." && names.isEmpty())
            return QByteArray();
        if (name == "..")
            names.removeLast();
        else if (!name.isEmpty() && name != ".")
            names.append(name);
    }
    return names.join('/');
}

template <typename File>
const File *findIn(const std::vector<File> &files, const QByteArray &path)
{
    const auto found = std::lower_bound(
        files.begin(), files.end(), path,
        [](const File &file, const QByteArray &wanted) { return file.path < wanted; });
    return found != files.end() && found->path == path ? &*found : nullptr;
}

qint64 sum(qint64 one, qint64 other)
{
    qint64 result = 0;
    return __builtin_add_overflow(one, other, &result) ? std::numeric_limits<qint64>::max()
                                                       : result;
}

qint64 readBlock(const UniqueFd &fd, QByteArray &block)
{
    ssize_t count = 0;
    do {
        count = ::read(fd.get(), block.data(), static_cast<std::size_t>(block.size()));
    } while (count < 0 && errno == EINTR);
    return count;
}

// A recorded path, by the file that has it.
struct KnownFile {
    dev_t disk;
    ino_t number;
    QByteArray path;
};

bool isBefore(const KnownFile &one, const KnownFile &other)
{
    return std::tie(one.disk, one.number) < std::tie(other.disk, other.number);
}

class Verification
{
public:
    Verification(const QByteArray &folder, VerifyObserver &observer, const CancelToken &cancel)
        : m_folder(folder), m_tree(folder), m_observer(observer), m_cancel(cancel)
    {
        if (!hasExportRecord(folder))
            throw Error(folder.toStdString(), "has no record of an export");
        m_record = readExportRecord(folder, cancel);
        m_progress.files = static_cast<int>(m_record.files.size() + m_record.albumFiles.size());
        for (const RecordedFile &file : m_record.files)
            m_progress.totalBytes = sum(m_progress.totalBytes, file.size);
        for (const RecordedAlbumFile &file : m_record.albumFiles)
            m_progress.totalBytes = sum(m_progress.totalBytes, bytesOf(file));
    }

    VerifiedExport run()
    {
        for (const RecordedFile &file : m_record.files)
            take(file.path, check(file), file.size);
        m_fileFaults = m_result.faults.size();
        for (const RecordedAlbumFile &file : m_record.albumFiles)
            take(file.path, check(file), bytesOf(file));
        findExtra();
        std::sort(m_result.faults.begin(), m_result.faults.end(),
                  [](const VerifiedFault &one, const VerifiedFault &other) {
                      return one.path < other.path;
                  });
        return std::move(m_result);
    }

private:
    qint64 bytesOf(const RecordedAlbumFile &file) const
    {
        const RecordedFile *const target = findIn(m_record.files, file.target);
        return file.kind != RecordedAlbumFile::Link && target ? target->size : 0;
    }

    void throwIfCancelled() const
    {
        if (!m_cancel.isCancelled())
            return;
        throw Error(Error::Cancelled, QStringLiteral("interrupted: %1 of %2 files verified")
                                          .arg(m_progress.doneFiles)
                                          .arg(m_progress.files)
                                          .toStdString());
    }

    void take(const QByteArray &path, const Finding &finding, qint64 bytes)
    {
        if (finding.state == VerifiedState::Good)
            ++m_result.good;
        else
            m_result.faults.push_back({path, finding.state, finding.cause});
        ++m_progress.doneFiles;
        m_bytesBefore = sum(m_bytesBefore, bytes);
        tellProgress(0);
        throwIfCancelled();
    }

    // Of the file at hand, `done` bytes have been read.
    void tellProgress(qint64 done)
    {
        m_progress.doneBytes = sum(m_bytesBefore, done);
        m_observer.verified(m_progress);
    }

    // Fills `*status`, and remembers whose path it is.
    int look(const QByteArray &path, struct stat *status)
    {
        const int code = m_tree.look(path, status);
        if (code == 0)
            m_known.push_back({status->st_dev, status->st_ino, path});
        return code;
    }

    Finding check(const RecordedFile &file)
    {
        struct stat status = {};
        const int code = look(file.path, &status);
        return code != 0 ? failed(code) : checkContent(file.path, status, file);
    }

    // Whether what has this path and status has the content of `file`.
    Finding checkContent(const QByteArray &path, const struct stat &status,
                         const RecordedFile &file)
    {
        if (!S_ISREG(status.st_mode))
            return changed(typeText(status.st_mode));
        if (status.st_size != file.size)
            return changed(QStringLiteral("has %1 bytes instead of %2")
                               .arg(qint64(status.st_size))
                               .arg(file.size));
        const UniqueFd fd = m_tree.open(path);
        return fd.isOpen() ? checkBytes(fd, file) : failed(errno);
    }

    Finding checkBytes(const UniqueFd &fd, const RecordedFile &file)
    {
        Sha256 bytes;
        qint64 done = 0;
        qint64 count = 0;
        do { // what grows meanwhile is not read for ever
            throwIfCancelled();
            count = readBlock(fd, m_block);
            if (count < 0)
                return changed(causeOf(errno));
            bytes.add(m_block.constData(), count);
            done += count;
            tellProgress(qMin(done, file.size));
        } while (count > 0 && done <= file.size);
        const bool isSame = bytes.takeHex() == file.sha256;
        return isSame ? Finding() : changed(QStringLiteral("has another content"));
    }

    Finding check(const RecordedAlbumFile &file)
    {
        struct stat status = {};
        if (const int code = look(file.path, &status))
            return failed(code);
        return file.kind == RecordedAlbumFile::Link ? checkLink(file, status)
                                                    : checkCopy(file, status);
    }

    Finding checkLink(const RecordedAlbumFile &file, const struct stat &status)
    {
        if (!S_ISLNK(status.st_mode))
            return changed(QStringLiteral("is no link"));
        if (linkTarget(file.path, m_tree.linkText(file.path)) != file.target)
            return changed(QStringLiteral("leads elsewhere"));
        struct stat target = {};
        return m_tree.look(file.target, &target) == 0 ? Finding()
                                                      : changed(QStringLiteral("leads to nothing"));
    }

    Finding checkCopy(const RecordedAlbumFile &file, const struct stat &status)
    {
        const RecordedFile *const target = findIn(m_record.files, file.target);
        if (!target)
            return changed(QStringLiteral("stands for a file that is not in the record"));
        struct stat targetStatus = {};
        const bool isTarget = m_tree.look(file.target, &targetStatus) == 0 &&
                              targetStatus.st_dev == status.st_dev &&
                              targetStatus.st_ino == status.st_ino;
        if (isTarget && isGood(file.target))
            return {};
        return checkContent(file.path, status, *target);
    }

    // Of a recorded file, all of which have been checked.
    bool isGood(const QByteArray &path) const
    {
        const auto end = m_result.faults.begin() + static_cast<std::ptrdiff_t>(m_fileFaults);
        const auto found =
            std::lower_bound(m_result.faults.begin(), end, path,
                             [](const VerifiedFault &fault, const QByteArray &wanted) {
                                 return fault.path < wanted;
                             });
        return found == end || found->path != path;
    }

    void findExtra()
    {
        std::sort(m_known.begin(), m_known.end(), isBefore);
        const auto visit = [this](const QByteArray &path) {
            throwIfCancelled();
            const bool isRecorded =
                findIn(m_record.files, path) || findIn(m_record.albumFiles, path);
            if (!isRecorded && !isOtherSpelling(path))
                m_result.faults.push_back({path, VerifiedState::Extra, QString()});
        };
        const auto failed = [this](const QByteArray &path, int code) {
            if (path.isEmpty())
                throw Error(m_folder.toStdString(), std::generic_category().message(code));
            if (code != ENOENT) // gone by now
                m_result.faults.push_back({path, VerifiedState::Extra, causeOf(code)});
        };
        m_tree.walk(visit, failed);
    }

    // Whether a disk that does not tell case or the composition of letters apart lists a recorded
    // file by this path.
    bool isOtherSpelling(const QByteArray &path)
    {
        struct stat status = {};
        if (m_tree.look(path, &status) != 0)
            return false;
        const auto same = std::equal_range(m_known.begin(), m_known.end(),
                                           KnownFile{status.st_dev, status.st_ino, {}}, isBefore);
        const QString compared = comparedName(path);
        return std::any_of(same.first, same.second, [&compared](const KnownFile &known) {
            return comparedName(known.path) == compared;
        });
    }

    const QByteArray m_folder;
    ExportTree m_tree;
    VerifyObserver &m_observer;
    const CancelToken &m_cancel;
    ExportContents m_record;
    VerifyProgress m_progress;
    qint64 m_bytesBefore = 0; // of the files before that at hand
    std::vector<KnownFile> m_known;
    std::size_t m_fileFaults = 0; // those of recorded files, which come first and by path
    VerifiedExport m_result;
    QByteArray m_block = QByteArray(blockSize, Qt::Uninitialized);
};

} // namespace

const char *wordFor(VerifiedState state)
{
    constexpr const char *words[] = {"good", "changed", "missing", "extra"};
    return words[static_cast<int>(state)];
}

int VerifiedExport::count(VerifiedState state) const
{
    if (state == VerifiedState::Good)
        return good;
    const auto isSo = [state](const VerifiedFault &fault) { return fault.state == state; };
    return static_cast<int>(std::count_if(faults.begin(), faults.end(), isSo));
}

VerifiedExport verifyExport(const QByteArray &folder, VerifyObserver &observer,
                            const CancelToken &cancel)
{
    return Verification(folder, observer, cancel).run();
}
