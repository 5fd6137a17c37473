#ifndef PHOTOLIB_TESTS_APP_PROVEN_EXPORT_H
#define PHOTOLIB_TESTS_APP_PROVEN_EXPORT_H

#include "engine/library_export.h"
#include "engine/library_session.h"
#include "support/device_folder.h"
#include "support/environment.h"
#include "support/watched_files.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>

/// What lies in a folder, by the path below it: of a file its time and SHA-256, of a link its text.
using FolderContents = std::map<QByteArray, QByteArray>;

/// Without the record of an export, and what SQLite keeps beside it.
FolderContents contentsOf(const QByteArray &folder);

/// The files of photos and videos on the device in a folder, by their path there.
std::set<QByteArray> photoFilesOf(const QByteArray &device);

/// Expects that `folder` has what its record tells of and nothing else, and that nothing is left of
/// an export that was cut short.
void expectSoundExport(const QByteArray &folder);

/// Expects the same, and that `folder` has a copy of each of the files `sources` of the device,
/// byte for byte and none twice.
void expectWholeExport(const QByteArray &device, const std::set<QByteArray> &sources,
                       const QByteArray &folder);

/// Does nothing about what it hears of exports and the opening of libraries.
class DeafObserver : public ExportObserver, public OpenObserver
{
public:
    void waiting() override {}
    void looked(int, int) override {}
    void copied(const ExportProgress &) override {}
    void absent(const QString &, const QString &) override {}
    void noted(const QString &) override {}
    void failed(const ItemFailure &) override {}
    void waiting(const QByteArray &) override {}
    void copied(qint64, qint64) override {}
};

/// A device with some photos of each sort, and exports of it to the folder "out".
class ProvenExports : public testing::Test
{
protected:
    ProvenExports();

    QByteArray device() const { return m_scratch.path("device"); }
    QByteArray out() const { return m_scratch.path("out"); }

    /// Opens the library, in the place of one that is open, and counts what is asked for from then
    /// on.
    void open();

    /// Exports to `folder`. Returns why that ended early; nothing when it did not.
    std::string exportTo(const QByteArray &folder);

    /// Has an export without any trouble to another folder tell what there is to be in the end:
    /// of what `before` has, if it is not empty.
    void findExpected(const QByteArray &before = QByteArray());

    /// Makes "out" a copy of `before`, or removes it when that is empty.
    void resetOut(const QByteArray &before = QByteArray());

    /// Expects that nothing in "out", where an export ended early, is half a file, and that each
    /// file which the record tells of is there.
    void expectNothingHalf();

    /// Exports to "out" and expects all to be there.
    void expectWholeAfterRerun();

    Environment m_disk;
    ScratchFolder m_scratch;
    Environment m_cache;
    Environment m_temporary; // where nothing may be left, either
    std::shared_ptr<WatchedFiles> m_files;
    std::unique_ptr<LibrarySession> m_session;
    ExportRequest m_request;
    ExportResult m_result;
    FolderContents m_contentsBefore;
    FolderContents m_expected;
};

#endif // PHOTOLIB_TESTS_APP_PROVEN_EXPORT_H
