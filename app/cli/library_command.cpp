#include "cli/library_command.h"

#include "base/byte_count.h"
#include "base/error.h"
#include "base/log_output.h"
#include "cli/exit_codes.h"
#include "cli/interruptible_run.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "engine/default_device.h"
#include "engine/library_session.h"
#include "engine/photo_filter.h"

#include <QThreadPool>

#include <atomic>
#include <optional>

namespace {

// The device that a command works on.
struct ChosenDevice {
    QByteArray folder;
    bool isUnasked = false; ///< the sample, since none was named
    bool isNew = false;     ///< the sample has just been made
};

ChosenDevice chosenDevice(const CommonOptions &options, const CancelToken &cancel)
{
    ChosenDevice device;
    if (options.device && *options.device != "sample") {
        device.folder = QByteArray::fromStdString(*options.device);
        return device;
    }
    const DefaultDevice sample = defaultDevice(cancel);
    device.folder = sample.folder;
    device.isUnasked = !options.device;
    device.isNew = sample.isNew;
    return device;
}

void announce(const ChosenDevice &device, const CommonOptions &options)
{
    if (!device.isUnasked || options.quiet)
        return;
    const QByteArray note = device.isNew ? "no device named with -d; made a sample device in "
                                         : "no device named with -d; showing the sample device in ";
    writeErrorLine("photolib: " + note + device.folder);
}

// Opens a library on a thread of its own, with a progress bar, until a signal ends it.
class Opening : public OpenObserver
{
public:
    explicit Opening(const CommonOptions &options)
        : m_options(options), m_bar(showsProgress(), QStringLiteral("Copying the database"))
    {
    }

    std::unique_ptr<LibrarySession> run()
    {
        // Painting uses Qt's pool of threads, which must not belong to one that ends before it.
        QThreadPool::globalInstance();
        runInterruptible([this] { open(); }, [this] { m_cancel.cancel(); }, [this] { update(); });
        return std::move(m_session);
    }

    const ChosenDevice &device() const { return m_device; }

    void waiting(const QByteArray &workFolder) override
    {
        if (!m_options.quiet)
            writeErrorLine("photolib: waiting for another program that uses " + workFolder);
    }

    void copied(qint64 done, qint64 total) override
    {
        m_done = done;
        m_total = total;
    }

private:
    void open()
    {
        m_device = chosenDevice(m_options, m_cancel);
        LibraryOptions options;
        options.device = m_device.folder;
        options.kind = m_options.kind;
        options.workFolder = QByteArray::fromStdString(m_options.workFolder);
        options.plugin = m_options.plugin;
        m_session = std::make_unique<LibrarySession>(options, *this, m_cancel);
    }

    void update()
    {
        if (m_total > 0)
            m_bar.show(m_done, m_total, byteCountsText(m_done, m_total));
    }

    const CommonOptions &m_options;
    CancelToken m_cancel;
    std::atomic<qint64> m_done{0};
    std::atomic<qint64> m_total{0};
    ProgressBar m_bar;
    ChosenDevice m_device;
    std::unique_ptr<LibrarySession> m_session;
};

// Whether there is anything to tell.
bool tell(const QByteArray &text)
{
    if (!text.isEmpty())
        writeErrorLine("photolib: " + text);
    return !text.isEmpty();
}

// What the lists cannot tell, since the library is of a system that did not have it.
void tellWhatItLacks(const Catalog &catalog)
{
    QByteArray names;
    for (const QByteArray &name : catalog.missing)
        names.append(names.isEmpty() ? "" : ", ").append(name);
    if (!names.isEmpty())
        tell("the library has no " + names);
}

// Whether what was shown is not all: what could not be read is told last, where it is seen.
bool tellWhatIsMissing(const LibrarySession &session)
{
    bool isMissing = false;
    for (const QByteArray &text : {session.damageText(), session.unreadableText().toUtf8()})
        isMissing = tell(text) || isMissing;
    return isMissing;
}

// Runs `work` on a thread of its own until a signal ends it, which `isCancelled` tells: then a
// device that is asked for files answers no more.
void runUntilSignal(LibrarySession &session, std::atomic<bool> *isCancelled,
                    const std::function<void()> &work)
{
    const auto cancel = [&] {
        *isCancelled = true;
        session.files().close();
    };
    try {
        runInterruptible(work, cancel, [] {});
    } catch (const Error &) {
        if (!*isCancelled)
            throw;
    }
    if (*isCancelled)
        throw Error(Error::Cancelled, "interrupted");
}

// A reader that keeps the output waiting is left when a signal comes.
void writeInterruptible(const std::function<void(LibrarySession &, Output &)> &write,
                        LibrarySession &session, Output &output)
{
    std::atomic<bool> isCancelled{false};
    runUntilSignal(session, &isCancelled, [&] {
        output.whileWaiting([&] {
            if (isCancelled)
                throw Error(Error::Cancelled, "interrupted");
        });
        write(session, output);
        output.flush();
        output.whileWaiting(nullptr);
    });
}

} // namespace

int runOnLibrary(const CommandContext &context,
                 const std::function<void(LibrarySession &, Output &)> &write)
{
    return workOnLibrary(context, [&write](LibrarySession &session, Output &output) {
        writeInterruptible(write, session, output);
        return exitDone;
    });
}

int workOnLibrary(const CommandContext &context,
                  const std::function<int(LibrarySession &, Output &)> &work)
{
    ChosenDevice device;
    std::unique_ptr<LibrarySession> session;
    {
        Opening opening(context.options);
        session = opening.run();
        device = opening.device();
    }
    if (context.options.verbose)
        tellWhatItLacks(session->catalog());
    Output output([&] { announce(device, context.options); });
    int exitCode = exitDone;
    try {
        exitCode = work(*session, output);
        output.flush();
    } catch (const Error &) {
        tell(session->damageText()); // which may be why an id is not found
        throw;
    } catch (const ReaderGone &) {
        // What went wrong by then is told all the same.
    }
    return tellWhatIsMissing(*session) ? exitFailed : exitCode;
}

std::vector<const Asset *> interruptiblyChosenPhotos(LibrarySession &session,
                                                     const PhotoFilter &filter)
{
    std::vector<const Asset *> photos;
    std::atomic<bool> isCancelled{false};
    runUntilSignal(session, &isCancelled, [&] { photos = chosenPhotos(session, filter); });
    return photos;
}

void requireNamedDevice(const CommandContext &context)
{
    if (!context.options.device)
        throw Error(Error::WrongUsage, "no device: name one with -d");
}
