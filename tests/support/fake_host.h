#ifndef PHOTOLIB_TESTS_SUPPORT_FAKE_HOST_H
#define PHOTOLIB_TESTS_SUPPORT_FAKE_HOST_H

#include "host/device_database.h"
#include "host/device_files.h"
#include "host/iipod.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One line that the plug-in gave to `Log`, formatted.
struct LogLine {
    QByteArray tag;
    int level = 0;
    QByteArray text; ///< raw bytes, as the format left them
};
bool operator==(const LogLine &left, const LogLine &right);
std::ostream &operator<<(std::ostream &out, const LogLine &line);

/// The lines that the plug-in writes: tag "PHOTOLIB" with level 1 or 2.
LogLine notice(const QByteArray &text);
LogLine failure(const QByteArray &text);

/// One call of `g_return_if_fail_warning`, which the test program defines itself, so
/// that GLib prints nothing and the three arguments are seen as they were passed.
struct Precondition {
    std::optional<std::string> domain; ///< empty for a null domain, the only one expected
    std::string function;
    std::string expression;
};
bool operator==(const Precondition &left, const Precondition &right);
std::ostream &operator<<(std::ostream &out, const Precondition &precondition);

/// A warning with a null domain.
Precondition precondition(const std::string &function, const std::string &expression);

class FakePhotoDB;

/// One call of a service, counted from 1 over all services but `Log` and the warnings.
struct CountedCall {
    int number;
    std::string operation; ///< "vFileRead", "isAccessBlocked", "iphotolib::getPhoto" ...
    bool onDevice;         ///< needs the device itself, not only what the host knows of it
};

/// How one call goes wrong.
struct CallFault {
    enum class Way {
        Refused, ///< nothing is done, and the result is `value`; 0 is also a null handle,
                 ///< false, an empty text and an empty list
        Cut,     ///< a read or write moves at most `value` bytes, and says so
        Lied,    ///< all is done, but the result is `value`
        Feigned  ///< a read moves half of its bytes and a seek or write does nothing, but the
                 ///< result is that of the whole
    };
    Way way = Way::Refused;
    qint64 value = 0;
};
std::ostream &operator<<(std::ostream &out, const CallFault &fault);

/// The host of the plug-in: defines every service in `src/host` over files in memory,
/// records what the plug-in calls, and injects faults. Make one at the start of a test;
/// the services reach the only living one. Nothing stays behind when it dies. All
/// operations may be called from any thread. Without a living host log lines are dropped,
/// and any other service ends the test program.
///
/// Every call of a service is recorded in order as one line of text, also those that fail:
///
///     vDevOpen(2, "connected-device") -> dev1          (-> null on failure)
///     vDevCreateDir(dev2, "/work") -> true
///     vDevFileSize(dev1, "/a") -> 17
///     vFileOpen(dev1, "/a", 0) -> file1
///     vFileRead(file1, 4194304) -> 17
///     vFileWrite(file2, 17) -> 17
///     vFileSeek(file1, 0, 2) -> 17
///     vFileTell(file1) -> 17
///     vFileClose(file1)
///     vDevClose(dev1)
///     isAccessBlocked() -> false
///     devicePath() -> "connected-device"               (driveName, localDataPath alike)
///     isIOSDevice() -> true
///     getPhotoDBInt() -> db                            (-> null without a database)
///     iitdb::parse() -> 0
///     iitdb::photoLib() -> library
///     iphotolib::photoIDs(), iphotolib::albumIDs()
///     iphotolib::getPhoto(7) -> 0, iphotolib::getAlbum(7) -> 0
///     unpackiThmb(12) -> 0                             (12 raw bytes)
///     releaseITunesDBInt()
///     Log("PHOTOLIB", 2, "Can not open device")
///     warning("int parseCameraDB(IIPod *, CameraDB *)", "cameradb")
///
/// Handles are numbered per kind from 1 in the order of the opens that succeeded, so dev2
/// is the second file system and file1 the first file. The use of a closed or foreign
/// handle or of a released database fails the running test.
class FakeHost
{
public:
    /// Where `vDevOpen(VDevHost, "")` keeps its files.
    enum class Disk {
        InMemory, ///< a folder must have been made, by the plug-in or by `addHostFolder`
        Real      ///< paths are the real disk's; give them below a QTemporaryDir
    };

    /// The device that is there from the start; `FakeIPod` bears the same name.
    static const char *const DeviceName;

    explicit FakeHost(Disk disk = Disk::InMemory);
    ~FakeHost();
    FakeHost(const FakeHost &) = delete;
    FakeHost &operator=(const FakeHost &) = delete;

    /// The living host, or null.
    static FakeHost *current();

    // --- Files. Paths are UTF-8, compared byte for byte.

    void setDeviceFile(const QByteArray &path, const QByteArray &bytes,
                       const QByteArray &device = DeviceName);
    void removeDeviceFile(const QByteArray &path, const QByteArray &device = DeviceName);
    /// Takes a device away: `vDevOpen` of its name fails. Open handles live on.
    void removeDevice(const QByteArray &device = DeviceName);

    void addHostFolder(const QByteArray &path);
    void setHostFile(const QByteArray &path, const QByteArray &bytes);
    /// The bytes of a file of the host's disk, nothing when there is no such file.
    std::optional<QByteArray> hostFile(const QByteArray &path) const;
    /// Whether the folder was made (InMemory) or is there (Real).
    bool hasHostFolder(const QByteArray &path) const;

    // --- Faults. `path` is the path as the plug-in passes it; `n` counts the reads (or
    // writes) of all files opened under that path, from 1. They last until the host dies.

    void failDevOpen(VDevType type);
    void failFileOpen(const QByteArray &path, int mode);
    /// `vDevCreateDir` makes nothing and returns false.
    void failCreateDir();
    /// The n-th read yields at most `most` bytes and moves the position by them.
    void shortenRead(const QByteArray &path, int n, int most);
    /// Every read of the path yields at most `most` bytes.
    void shortenReads(const QByteArray &path, int most);
    /// The n-th read returns `result` and gives no bytes: -1 for an error.
    void failRead(const QByteArray &path, int n, int result = -1);
    /// The n-th read works, but returns `result`.
    void lieInRead(const QByteArray &path, int n, int result);
    /// The n-th write writes at most `most` bytes, and says so.
    void shortenWrite(const QByteArray &path, int n, int most);
    /// The n-th write writes nothing and returns `result`.
    void failWrite(const QByteArray &path, int n, int result = -1);
    /// The n-th write works, but returns `result`.
    void lieInWrite(const QByteArray &path, int n, int result);
    /// `vFileSeek` returns `result` without moving.
    void failSeek(const QByteArray &path, qint64 result = -1);
    /// `vFileSeek` moves, but returns `result`.
    void lieInSeek(const QByteArray &path, qint64 result);
    /// `vFileTell` returns `result`.
    void lieInTell(const QByteArray &path, qint64 result);
    /// `vDevFileSize` returns `result`, also for a missing file.
    void lieInSize(const QByteArray &path, qint64 result);

    /// Calls `hook` on the calling thread at the start of the n-th call (from 1) of
    /// `operation`, for instance "vFileRead" or "isAccessBlocked", before the fake works
    /// and without holding its lock.
    void onCall(const std::string &operation, int n, std::function<void()> hook);

    /// Asks `plan` at the start of every call, in place of an earlier plan. Calls without a
    /// result, such as `vFileClose`, cannot fail. The plan must not call the host.
    void planFaults(std::function<std::optional<CallFault>(const CountedCall &)> plan);

    // --- What the plug-in did.

    /// Every recorded line, log lines and warnings among them.
    std::vector<std::string> trace() const;
    /// The lines of the file layer only (vDev..., vFile...).
    std::vector<std::string> fileCalls() const;
    /// All lines but those of `Log` and of the warnings.
    std::vector<std::string> calls() const;
    /// How often `operation` was called.
    int callCount(const std::string &operation) const;
    std::vector<LogLine> log() const;
    std::vector<Precondition> warnings() const;
    /// The handles that are still open, in the order of their opens: "dev1", "file1".
    std::vector<std::string> openHandles() const;
    /// Forgets the lines, log lines and warnings so far, and the counts of `callCount`,
    /// `onCall`, `CountedCall` and the faults' `n`. Handles stay, and their numbers go on.
    void clearRecords();

    // --- The classic services.

    /// What `getPhotoDBInt` returns from now on; not owned, may be null, as at the start.
    void setPhotoDatabase(FakePhotoDB *database);
    /// Whether `releaseITunesDBInt` sets the caller's pointer to null; true at the start.
    void setReleaseClears(bool clears);

    struct Unpacking {
        IIPod *iPod;
        QByteArray raw;
        itdb_photo photo;
        QByteArray outBefore;
    };
    std::vector<Unpacking> unpackings() const;
    /// What `unpackiThmb` assigns to its output and returns; at the start an empty
    /// image and 0. With a `result` other than 0 the output is left as it was.
    void setUnpacked(const QByteArray &image, int result = 0);
    /// The device that the last `getPhotoDBInt` was asked for.
    IIPod *databaseDevice() const;

    struct Services; ///< one call of a service, in fake_host.cpp

    /// Records a line that starts with `operation`, for the fakes of this folder.
    void record(const std::string &operation, const std::string &line);
    /// Runs the hook of this call, if any, and tells the fault that is planned for it.
    std::optional<CallFault> enter(const std::string &operation, bool onDevice = true);

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

/// A connected device with settable answers; its calls are recorded by the living
/// `FakeHost`. To change an answer in the middle, use `FakeHost::onCall`.
class FakeIPod : public IIPod
{
public:
    std::atomic<bool> accessBlocked{false};
    std::atomic<bool> iosDevice{true};
    QString path = QString::fromLatin1(FakeHost::DeviceName);
    QString drive = QStringLiteral("X");
    QString localData; ///< "" for the system's temporary folder

    bool isAccessBlocked() override;
    QString devicePath() override;
    QString driveName() override;
    bool isIOSDevice() override;
    QString localDataPath() override;
};

/// The photo library of a classic iPod: fill its lists and maps before the parse.
class FakePhotoLibrary : public iphotolib
{
public:
    QList<quint32> photoOrder; ///< what `photoIDs` yields
    QList<quint32> albumOrder; ///< what `albumIDs` yields
    QMap<quint32, itdb_trk> photos;
    QMap<quint32, itdb_pl> albums;

    /// Adds to the map and to the end of the order.
    void addPhoto(quint32 id, const itdb_trk &photo);
    void addAlbum(quint32 id, const itdb_pl &album);

    QList<quint32> photoIDs() override;
    QList<quint32> albumIDs() override;
    /// 0, or -1 for an id that the map does not hold.
    int getAlbum(const quint32 *id, itdb_pl *album) override;
    int getPhoto(const quint32 *id, itdb_trk *item) override;
};

/// The photo database of a classic iPod. Its use after `releaseITunesDBInt` fails the
/// running test.
class FakePhotoDB : public iitdb
{
public:
    FakePhotoLibrary library;
    int parseResult = 0;
    bool hasLibrary = true; ///< when false, `photoLib` yields null

    int parse() override;
    iphotolib *photoLib() override;

    bool isReleased() const { return m_released; }
    void markReleased() { m_released = true; }

private:
    std::atomic<bool> m_released{false};
};

#endif // PHOTOLIB_TESTS_SUPPORT_FAKE_HOST_H
