#ifndef PHOTOLIB_ENGINE_EXPORT_VERIFY_H
#define PHOTOLIB_ENGINE_EXPORT_VERIFY_H

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <vector>

class CancelToken;

/// How a file in the folder of an export compares with the record of it.
enum class VerifiedState {
    Good,    ///< as it was exported
    Changed, ///< other content, something else than a file, or not to be read
    Missing, ///< recorded, and not there
    Extra,   ///< there, and not recorded
};

/// "good", "changed", "missing" or "extra".
const char *wordFor(VerifiedState state);

/// A file that is not good.
struct VerifiedFault {
    QByteArray path; ///< below the folder; a folder's where that cannot be listed
    VerifiedState state = VerifiedState::Changed;
    QString cause; ///< in a few words; empty for what is missing or extra and no more
};

struct VerifiedExport {
    int good = 0;
    std::vector<VerifiedFault> faults; ///< by path

    int count(VerifiedState state) const;
};

/// How far a verification is.
struct VerifyProgress {
    qint64 doneBytes = 0;
    qint64 totalBytes = 0;
    int doneFiles = 0;
    int files = 0; ///< in the record
};

/// Hears of it, on the thread that verifies.
class VerifyObserver
{
public:
    virtual ~VerifyObserver() {}

    virtual void verified(const VerifyProgress &progress) = 0;
};

/// Compares what lies in `folder` with the record of the exports to it: each recorded file by its
/// size and SHA-256, a link in an album by what it leads to. What lies there besides is extra, but
/// for the folder of the record. Nothing is changed, and no link followed.
///
/// Throws Error when the folder cannot be read or has no record, and what `readExportRecord`
/// throws; of the kind Cancelled soon after `cancel` is.
VerifiedExport verifyExport(const QByteArray &folder, VerifyObserver &observer,
                            const CancelToken &cancel);

#endif // PHOTOLIB_ENGINE_EXPORT_VERIFY_H
