#ifndef PHOTOLIB_ENGINE_EXPORT_STATE_H
#define PHOTOLIB_ENGINE_EXPORT_STATE_H

#include "base/unique_fd.h"

#include <QByteArray>

#include <functional>

class CancelToken;

/// The name of the folder that an ExportState is.
constexpr char exportStateName[] = ".photolib";

/// Its path in the folder `exportFolder` that photos are exported to.
QByteArray exportStatePath(const QByteArray &exportFolder);

/// The folder ".photolib" in a folder that photos are exported to: it holds the record of the
/// export and the files that are being written, and is locked, so that one exporter at a time works
/// there.
class ExportState
{
public:
    /// Opens the folder in `exportFolder`, which must exist, makes it if necessary, and removes
    /// what an exporter that was killed left: files named ".photolib-*.part". Where another
    /// exporter has it, `beforeWait` is called once, and it waits until that one has ended. A disk
    /// without locks is used without one. Throws Error, also when ".photolib" is a link or no
    /// folder, and of the kind Cancelled soon after `cancel` is.
    ExportState(const QByteArray &exportFolder, const CancelToken &cancel,
                const std::function<void()> &beforeWait);

    /// Removes the folder if the object has made it and it is empty.
    ~ExportState();

    ExportState(const ExportState &) = delete;
    ExportState &operator=(const ExportState &) = delete;

    /// A descriptor of ".photolib", as long as the object lives.
    int fd() const { return m_fd.get(); }

    /// The path of ".photolib".
    QByteArray path() const { return m_path; }

private:
    const QByteArray m_path;
    UniqueFd m_fd;
    bool m_isNew = false;
};

#endif // PHOTOLIB_ENGINE_EXPORT_STATE_H
