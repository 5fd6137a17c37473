#include "classic/drive_links.h"

#include "base/blocked_signals.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr std::initializer_list<int> signalsThatEnd = {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM};

} // namespace

/// What one object has made. Places are never freed and serve the next object: the handler
/// of a signal walks them without a lock.
struct DriveLinks::Place {
    std::string folder;                   ///< the private one
    std::string drive;                    ///< "DRIVE:" in it
    std::string photos;                   ///< "Photos" in that
    std::array<std::string, most> links;  ///< those that there may be in that
    std::atomic<bool> isFilled{false};    ///< the names above stand
    std::array<bool, most> isLinked = {}; // the owner's
    bool isTaken = false;                 // guarded by the mutex
    Place *next = nullptr;

    static std::atomic<Place *> first;
    static std::mutex mutex;

    class Making;
    static std::atomic<int> making;    ///< links that are being made, on any threads
    static std::atomic<bool> isEnding; ///< the handler of a signal removes them all

    void make();

    // Nothing here but what the handler of a signal may call.
    void clear()
    {
        if (!isFilled)
            return;
        for (const std::string &link : links)
            ::unlink(link.c_str());
        ::rmdir(photos.c_str());
        ::rmdir(drive.c_str());
        ::rmdir(folder.c_str());
        isFilled = false; // last, for a signal in between has the rest to remove
    }
};

std::atomic<DriveLinks::Place *> DriveLinks::Place::first{nullptr};
std::mutex DriveLinks::Place::mutex;
std::atomic<int> DriveLinks::Place::making{0};
std::atomic<bool> DriveLinks::Place::isEnding{false};

/// While it lives, no signal ends the program: neither this thread gets one, nor does a
/// handler on another thread go on. What is made meanwhile is in its place afterwards.
class DriveLinks::Place::Making
{
public:
    Making()
    {
        // Whoever comes late leaves the handler alone, and waits for the end.
        for (++making; isEnding; ++making) {
            --making;
            waitAMoment();
        }
    }
    ~Making() { --making; }

    Making(const Making &) = delete;
    Making &operator=(const Making &) = delete;

    // As handlers may.
    static void waitAMoment() { ::poll(nullptr, 0, 1); }

private:
    const BlockedSignals m_blocked{signalSet(signalsThatEnd)};
};

namespace {

// The plug-in's Qt names files in the locale's encoding, which may lack letters of the path.
bool survivesLocale(const char *path)
{
    return QFile::encodeName(QFile::decodeName(path)) == path;
}

// The plug-in puts the drive's name into a text first and the file's name afterwards, which
// would go to the places that the former marks.
bool marksNoPlace(const char *path)
{
    return !std::strchr(path, '%');
}

std::string temporaryFolder()
{
    const char *const chosen = std::getenv("TMPDIR");
    const bool isUsable =
        chosen && chosen[0] == '/' && survivesLocale(chosen) && marksNoPlace(chosen);
    return isUsable ? chosen : "/tmp";
}

void require(bool isDone, const std::string &path)
{
    if (!isDone)
        throw std::system_error(errno, std::generic_category(), path);
}

} // namespace

void DriveLinks::Place::make()
{
    const std::string parent = temporaryFolder();
    const Making making;
    folder = parent + "/photolib-XXXXXX";
    require(::mkdtemp(folder.data()), parent); // which lets nobody else in
    drive = folder + "/iPod:";
    photos = drive + "/Photos";
    for (size_t i = 0; i < links.size(); ++i)
        links[i] = photos + '/' + std::to_string(i);
    isLinked.fill(false);
    isFilled = true;
    require(::mkdir(drive.c_str(), 0700) == 0, drive);
    require(::mkdir(photos.c_str(), 0700) == 0, photos);
}

DriveLinks::Place *DriveLinks::newPlace()
{
    const std::lock_guard<std::mutex> lock(Place::mutex);
    handleSignals();
    Place *place = Place::first;
    while (place && place->isTaken)
        place = place->next;
    if (!place) {
        place = new Place;
        place->next = Place::first;
        Place::first = place;
    }
    place->isTaken = true;
    return place;
}

// Each time, for a program may have stopped to ignore one.
void DriveLinks::handleSignals()
{
    for (const int signal : signalsThatEnd) {
        struct sigaction action = {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = removeAllAndDie;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigaction(signal, &action, nullptr);
    }
}

// The default action is taken at the end, before any other thread makes a link. It does not
// end the first process of a container, though.
void DriveLinks::removeAllAndDie(int signal)
{
    Place::isEnding = true;
    constexpr int mostMoments = 1000; // a disk may hang
    for (int i = 0; i < mostMoments && Place::making > 0; ++i)
        Place::Making::waitAMoment();
    for (Place *place = Place::first; place; place = place->next)
        place->clear();
    ::raise(signal);
    const sigset_t set = signalSet({signal});
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    Place::isEnding = false;
}

DriveLinks::DriveLinks() : m_place(newPlace())
{
    try {
        m_place->make();
    } catch (...) {
        m_place->clear();
        const std::lock_guard<std::mutex> lock(Place::mutex);
        m_place->isTaken = false;
        throw;
    }
}

DriveLinks::~DriveLinks()
{
    m_place->clear();
    const std::lock_guard<std::mutex> lock(Place::mutex);
    m_place->isTaken = false;
}

int DriveLinks::add(int fd)
{
    auto &isLinked = m_place->isLinked;
    const auto free = std::find(isLinked.begin(), isLinked.end(), false);
    if (free == isLinked.end())
        return -1;
    const auto number = static_cast<size_t>(free - isLinked.begin());
    const std::string target = "/proc/self/fd/" + std::to_string(fd);
    const std::string &link = m_place->links[number];
    const Place::Making making;
    require(::symlink(target.c_str(), link.c_str()) == 0, link);
    *free = true;
    return static_cast<int>(number);
}

void DriveLinks::remove(int number)
{
    const auto index = static_cast<size_t>(number);
    ::unlink(m_place->links[index].c_str());
    m_place->isLinked[index] = false;
}

QString DriveLinks::driveName() const
{
    const std::string name = m_place->drive.substr(0, m_place->drive.size() - 1);
    return QFile::decodeName(name.c_str());
}
