#include "support/fake_host.h"

#include "host/host_log.h"
#include "support/allocation_faults.h"

#include <gtest/gtest.h>

#include <glib.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <ostream>
#include <set>
#include <utility>

// The handles outlive their close, so that a late use is noticed.
struct VDev {
    int number;
    bool isHost;
    std::shared_ptr<std::map<QByteArray, QByteArray>> files; // null for the real disk
    bool open = true;
};

struct VFile {
    int number;
    QByteArray path;
    int mode;
    std::shared_ptr<std::map<QByteArray, QByteArray>> files; // null for the real disk
    std::FILE *disk = nullptr;
    qint64 position = 0;
    bool open = true;

    VFile(int fileNumber, QByteArray filePath, int openMode,
          std::shared_ptr<std::map<QByteArray, QByteArray>> holder)
        : number(fileNumber), path(std::move(filePath)), mode(openMode), files(std::move(holder))
    {
    }
    ~VFile()
    {
        if (disk != nullptr)
            std::fclose(disk);
    }
    VFile(const VFile &) = delete;
    VFile &operator=(const VFile &) = delete;
};

namespace {

std::atomic<FakeHost *> theHost{nullptr};

const int readMode = 0;
const int writeMode = 1;

std::string quoted(const QByteArray &bytes)
{
    return '"' + bytes.toStdString() + '"';
}

std::string truth(bool value)
{
    return value ? "true" : "false";
}

std::string nameOf(const VDev *dev)
{
    return dev == nullptr ? "null" : "dev" + std::to_string(dev->number);
}

std::string nameOf(const VFile *file)
{
    return file == nullptr ? "null" : "file" + std::to_string(file->number);
}

// "operation(arguments)"
std::string call(const std::string &operation, std::initializer_list<std::string> arguments)
{
    std::string text = operation + '(';
    for (const std::string &argument : arguments) {
        if (text.back() != '(')
            text += ", ";
        text += argument;
    }
    return text + ')';
}

QByteArray folderOf(const QByteArray &path)
{
    return path.left(std::max(path.lastIndexOf('/'), path.lastIndexOf('\\')));
}

std::filesystem::path diskPath(const QByteArray &path)
{
    return std::filesystem::path(path.toStdString());
}

bool isLog(const std::string &operation)
{
    return operation == "Log" || operation == "warning";
}

bool isFileCall(const std::string &operation)
{
    return operation.rfind("vDev", 0) == 0 || operation.rfind("vFile", 0) == 0;
}

} // namespace

bool operator==(const LogLine &left, const LogLine &right)
{
    return left.tag == right.tag && left.level == right.level && left.text == right.text;
}

std::ostream &operator<<(std::ostream &out, const LogLine &line)
{
    return out << line.tag.toStdString() << '/' << line.level << ": " << quoted(line.text);
}

LogLine notice(const QByteArray &text)
{
    return {"PHOTOLIB", 1, text};
}

LogLine failure(const QByteArray &text)
{
    return {"PHOTOLIB", 2, text};
}

bool operator==(const Precondition &left, const Precondition &right)
{
    return left.domain == right.domain && left.function == right.function &&
           left.expression == right.expression;
}

std::ostream &operator<<(std::ostream &out, const Precondition &warning)
{
    return out << warning.domain.value_or("null") << ", \"" << warning.function << "\", \""
               << warning.expression << '"';
}

Precondition precondition(const std::string &function, const std::string &expression)
{
    return {std::nullopt, function, expression};
}

std::ostream &operator<<(std::ostream &out, const CallFault &fault)
{
    static const char *const ways[] = {"refused", "cut", "lied", "feigned"};
    return out << ways[static_cast<int>(fault.way)] << '(' << fault.value << ')';
}

const char *const FakeHost::DeviceName = "connected-device";

// Everything that the services share.
struct FakeHost::State {
    using Files = std::map<QByteArray, QByteArray>;

    enum class FaultKind { Shorten, Fail, Lie };
    struct Fault {
        FaultKind kind;
        qint64 value;
    };
    using Faults = std::map<std::pair<QByteArray, int>, Fault>;

    struct Line {
        std::string operation;
        std::string text;
    };

    explicit State(Disk kind) : disk(kind) { devices[DeviceName] = std::make_shared<Files>(); }

    void makeFolder(const QByteArray &path);

    std::mutex mutex;
    const Disk disk;
    std::map<QByteArray, std::shared_ptr<Files>> devices;
    std::shared_ptr<Files> hostFiles = std::make_shared<Files>();
    std::set<QByteArray> hostFolders;
    std::vector<std::unique_ptr<VDev>> devs;
    std::vector<std::unique_ptr<VFile>> files;

    std::set<int> failingDevs;
    std::set<std::pair<QByteArray, int>> failingOpens;
    bool createDirFails = false;
    Faults readFaults;
    Faults writeFaults;
    std::map<QByteArray, int> readLimits;
    std::map<QByteArray, Fault> seekFaults;
    std::map<QByteArray, qint64> tells;
    std::map<QByteArray, qint64> sizes;
    std::map<QByteArray, int> readCounts;
    std::map<QByteArray, int> writeCounts;
    std::map<std::pair<std::string, int>, std::function<void()>> hooks;
    std::map<std::string, int> counts;
    std::function<std::optional<CallFault>(const CountedCall &)> plan;
    int callNumber = 0;

    std::vector<Line> lines;
    std::vector<LogLine> log;
    std::vector<Precondition> warnings;

    FakePhotoDB *photoDatabase = nullptr;
    IIPod *databaseDevice = nullptr;
    bool releaseClears = true;
    std::vector<Unpacking> unpackings;
    QByteArray unpacked;
    int unpackResult = 0;
};

void FakeHost::State::makeFolder(const QByteArray &path)
{
    for (QByteArray folder = path; hostFolders.insert(folder).second;)
        folder = folderOf(folder);
}

FakeHost::FakeHost(Disk disk) : m_state(new State(disk))
{
    EXPECT_EQ(theHost.exchange(this), nullptr) << "one fake host at a time";
}

FakeHost::~FakeHost()
{
    theHost = nullptr;
}

FakeHost *FakeHost::current()
{
    return theHost;
}

void FakeHost::setDeviceFile(const QByteArray &path, const QByteArray &bytes,
                             const QByteArray &device)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    std::shared_ptr<State::Files> &files = m_state->devices[device];
    if (!files)
        files = std::make_shared<State::Files>();
    (*files)[path] = bytes;
}

void FakeHost::removeDeviceFile(const QByteArray &path, const QByteArray &device)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    const auto found = m_state->devices.find(device);
    if (found != m_state->devices.end())
        found->second->erase(path);
}

void FakeHost::removeDevice(const QByteArray &device)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->devices.erase(device);
}

void FakeHost::addHostFolder(const QByteArray &path)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (m_state->disk == Disk::Real)
        std::filesystem::create_directories(diskPath(path));
    m_state->makeFolder(path);
}

void FakeHost::setHostFile(const QByteArray &path, const QByteArray &bytes)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (m_state->disk == Disk::InMemory)
        (*m_state->hostFiles)[path] = bytes;
    else
        std::ofstream(diskPath(path), std::ios::binary).write(bytes.constData(), bytes.size());
}

std::optional<QByteArray> FakeHost::hostFile(const QByteArray &path) const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (m_state->disk == Disk::InMemory) {
        const auto found = m_state->hostFiles->find(path);
        return found == m_state->hostFiles->end() ? std::nullopt
                                                  : std::make_optional(found->second);
    }
    std::ifstream file(diskPath(path), std::ios::binary);
    if (!file)
        return std::nullopt;
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return QByteArray::fromStdString(bytes);
}

bool FakeHost::hasHostFolder(const QByteArray &path) const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (m_state->disk == Disk::Real)
        return std::filesystem::is_directory(diskPath(path));
    return m_state->hostFolders.count(path) != 0;
}

void FakeHost::failDevOpen(VDevType type)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->failingDevs.insert(type);
}

void FakeHost::failFileOpen(const QByteArray &path, int mode)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->failingOpens.insert({path, mode});
}

void FakeHost::failCreateDir()
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->createDirFails = true;
}

void FakeHost::shortenRead(const QByteArray &path, int n, int most)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->readFaults[{path, n}] = {State::FaultKind::Shorten, most};
}

void FakeHost::shortenReads(const QByteArray &path, int most)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->readLimits[path] = most;
}

void FakeHost::failRead(const QByteArray &path, int n, int result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->readFaults[{path, n}] = {State::FaultKind::Fail, result};
}

void FakeHost::lieInRead(const QByteArray &path, int n, int result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->readFaults[{path, n}] = {State::FaultKind::Lie, result};
}

void FakeHost::shortenWrite(const QByteArray &path, int n, int most)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->writeFaults[{path, n}] = {State::FaultKind::Shorten, most};
}

void FakeHost::failWrite(const QByteArray &path, int n, int result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->writeFaults[{path, n}] = {State::FaultKind::Fail, result};
}

void FakeHost::lieInWrite(const QByteArray &path, int n, int result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->writeFaults[{path, n}] = {State::FaultKind::Lie, result};
}

void FakeHost::failSeek(const QByteArray &path, qint64 result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->seekFaults[path] = {State::FaultKind::Fail, result};
}

void FakeHost::lieInSeek(const QByteArray &path, qint64 result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->seekFaults[path] = {State::FaultKind::Lie, result};
}

void FakeHost::lieInTell(const QByteArray &path, qint64 result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->tells[path] = result;
}

void FakeHost::lieInSize(const QByteArray &path, qint64 result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->sizes[path] = result;
}

void FakeHost::onCall(const std::string &operation, int n, std::function<void()> hook)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->hooks[{operation, n}] = std::move(hook);
}

void FakeHost::planFaults(std::function<std::optional<CallFault>(const CountedCall &)> plan)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->plan = std::move(plan);
}

std::vector<std::string> FakeHost::trace() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    std::vector<std::string> lines;
    for (const State::Line &line : m_state->lines)
        lines.push_back(line.text);
    return lines;
}

std::vector<std::string> FakeHost::fileCalls() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    std::vector<std::string> lines;
    for (const State::Line &line : m_state->lines) {
        if (isFileCall(line.operation))
            lines.push_back(line.text);
    }
    return lines;
}

std::vector<std::string> FakeHost::calls() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    std::vector<std::string> lines;
    for (const State::Line &line : m_state->lines) {
        if (!isLog(line.operation))
            lines.push_back(line.text);
    }
    return lines;
}

int FakeHost::callCount(const std::string &operation) const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    const auto found = m_state->counts.find(operation);
    return found == m_state->counts.end() ? 0 : found->second;
}

std::vector<LogLine> FakeHost::log() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->log;
}

std::vector<Precondition> FakeHost::warnings() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->warnings;
}

std::vector<std::string> FakeHost::openHandles() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    std::vector<std::string> names;
    for (const auto &dev : m_state->devs) {
        if (dev->open)
            names.push_back(nameOf(dev.get()));
    }
    for (const auto &file : m_state->files) {
        if (file->open)
            names.push_back(nameOf(file.get()));
    }
    return names;
}

void FakeHost::clearRecords()
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->lines.clear();
    m_state->log.clear();
    m_state->warnings.clear();
    m_state->unpackings.clear();
    m_state->counts.clear();
    m_state->callNumber = 0;
    m_state->readCounts.clear();
    m_state->writeCounts.clear();
}

void FakeHost::setPhotoDatabase(FakePhotoDB *database)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->photoDatabase = database;
}

void FakeHost::setReleaseClears(bool clears)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->releaseClears = clears;
}

std::vector<FakeHost::Unpacking> FakeHost::unpackings() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->unpackings;
}

void FakeHost::setUnpacked(const QByteArray &image, int result)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->unpacked = image;
    m_state->unpackResult = result;
}

IIPod *FakeHost::databaseDevice() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->databaseDevice;
}

void FakeHost::record(const std::string &operation, const std::string &line)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->lines.push_back({operation, line});
}

std::optional<CallFault> FakeHost::enter(const std::string &operation, bool onDevice)
{
    std::function<void()> hook;
    std::optional<CallFault> fault;
    {
        const std::lock_guard<std::mutex> lock(m_state->mutex);
        const auto found = m_state->hooks.find({operation, ++m_state->counts[operation]});
        if (found != m_state->hooks.end())
            hook = found->second;
        if (!isLog(operation)) {
            const CountedCall call = {++m_state->callNumber, operation, onDevice};
            fault = m_state->plan ? m_state->plan(call) : std::nullopt;
        }
    }
    if (hook)
        hook();
    return fault;
}

// The services. Each runs its hook first, then works and records under the lock.
struct FakeHost::Services {
    FaultPause pause;
    State &host;
    std::string operation;
    std::optional<CallFault> fault;
    std::unique_lock<std::mutex> lock;

    // A service without a host is a mistake in the test.
    static State &living(const char *operation)
    {
        FakeHost *host = theHost;
        if (host == nullptr) {
            std::fprintf(stderr, "%s was called without a FakeHost\n", operation);
            std::abort();
        }
        return *host->m_state;
    }

    explicit Services(const char *name, bool onDevice = true) : host(living(name)), operation(name)
    {
        fault = FakeHost::current()->enter(operation, onDevice);
        lock = std::unique_lock<std::mutex>(host.mutex);
    }

    void note(std::initializer_list<std::string> arguments)
    {
        host.lines.push_back({operation, call(operation, arguments)});
    }

    void note(std::initializer_list<std::string> arguments, const std::string &result)
    {
        host.lines.push_back({operation, call(operation, arguments) + " -> " + result});
    }

    bool is(CallFault::Way way) const { return fault && fault->way == way; }

    // What `work` yields, unless a planned fault has it otherwise.
    template <class Work>
    auto answer(const Work &work) -> decltype(work())
    {
        using Result = decltype(work());
        if (is(CallFault::Way::Refused))
            return static_cast<Result>(fault->value);
        const Result result = work();
        return is(CallFault::Way::Lied) ? static_cast<Result>(fault->value) : result;
    }

    // As many of `len` bytes as a planned fault lets through.
    int allowed(int len) const
    {
        return is(CallFault::Way::Cut) ? std::min(len, static_cast<int>(fault->value)) : len;
    }

    template <class Handle>
    bool isOpen(const std::vector<std::unique_ptr<Handle>> &handles, const Handle *handle)
    {
        const bool open = std::any_of(handles.begin(), handles.end(), [&](const auto &known) {
            return known.get() == handle && known->open;
        });
        EXPECT_TRUE(open) << operation << " of a handle that is not open";
        return open;
    }
    bool check(const VDev *dev) { return isOpen(host.devs, dev); }
    bool check(const VFile *file) { return isOpen(host.files, file); }

    VDev *openDev(VDevType type, const QByteArray &path);
    VFile *openFile(VDev *dev, const QByteArray &path, int mode);
    bool openOnDisk(VFile &file) const;
    bool openInMemory(VDev *dev, VFile &file) const;
    bool createDir(VDev *dev, const QByteArray &path);
    qint64 fileSize(VDev *dev, const QByteArray &path) const;
    int read(VFile *file, char *buf, int len);
    int readHalf(VFile *file, char *buf, int len) const;
    int readBytes(VFile *file, char *buf, int len) const;
    int write(VFile *file, const char *buf, int len);
    int writeBytes(VFile *file, const char *buf, int len) const;
    qint64 seek(VFile *file, qint64 offset, int whence);
    qint64 move(VFile *file, qint64 offset, int whence) const;
    qint64 tell(VFile *file);

    static const State::Fault *faultOf(const State::Faults &faults,
                                       std::map<QByteArray, int> &counts, const QByteArray &path);
};

VDev *FakeHost::Services::openDev(VDevType type, const QByteArray &path)
{
    if (fault || host.failingDevs.count(type) != 0)
        return nullptr;
    const int number = static_cast<int>(host.devs.size()) + 1;
    if (type == VDevHost && path.isEmpty()) {
        const bool inMemory = host.disk == Disk::InMemory;
        host.devs.emplace_back(new VDev{number, true, inMemory ? host.hostFiles : nullptr, true});
        return host.devs.back().get();
    }
    const auto device = host.devices.find(path);
    if (type != VDevDevice || device == host.devices.end())
        return nullptr;
    host.devs.emplace_back(new VDev{number, false, device->second, true});
    return host.devs.back().get();
}

VFile *FakeHost::Services::openFile(VDev *dev, const QByteArray &path, int mode)
{
    if (!check(dev) || fault || host.failingOpens.count({path, mode}) != 0)
        return nullptr;
    if (mode != readMode && mode != writeMode)
        return nullptr;
    const int number = static_cast<int>(host.files.size()) + 1;
    std::unique_ptr<VFile> file(new VFile(number, path, mode, dev->files));
    const bool opened = dev->files ? openInMemory(dev, *file) : openOnDisk(*file);
    if (!opened)
        return nullptr;
    host.files.push_back(std::move(file));
    return host.files.back().get();
}

bool FakeHost::Services::openOnDisk(VFile &file) const
{
    // fopen opens a folder for reading.
    if (std::filesystem::is_directory(diskPath(file.path)))
        return false;
    file.disk = std::fopen(file.path.constData(), file.mode == writeMode ? "wb" : "rb");
    return file.disk != nullptr;
}

bool FakeHost::Services::openInMemory(VDev *dev, VFile &file) const
{
    if (file.mode == readMode)
        return dev->files->count(file.path) != 0;
    const std::set<QByteArray> &folders = host.hostFolders;
    if (dev->isHost && (folders.count(file.path) != 0 || folders.count(folderOf(file.path)) == 0))
        return false;
    (*dev->files)[file.path].clear();
    return true;
}

bool FakeHost::Services::createDir(VDev *dev, const QByteArray &path)
{
    if (!check(dev) || host.createDirFails)
        return false;
    if (dev->isHost && !dev->files) {
        std::error_code error;
        std::filesystem::create_directories(diskPath(path), error);
        return !error;
    }
    host.makeFolder(path);
    return true;
}

qint64 FakeHost::Services::fileSize(VDev *dev, const QByteArray &path) const
{
    const auto lie = host.sizes.find(path);
    if (lie != host.sizes.end())
        return lie->second;
    if (!dev->files) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(diskPath(path), error);
        return error ? 0 : static_cast<qint64>(size);
    }
    const auto found = dev->files->find(path);
    return found == dev->files->end() ? 0 : found->second.size();
}

const FakeHost::State::Fault *FakeHost::Services::faultOf(const State::Faults &faults,
                                                          std::map<QByteArray, int> &counts,
                                                          const QByteArray &path)
{
    const auto found = faults.find({path, ++counts[path]});
    return found == faults.end() ? nullptr : &found->second;
}

int FakeHost::Services::read(VFile *file, char *buf, int len)
{
    if (!check(file))
        return -1;
    const State::Fault *pathFault = faultOf(host.readFaults, host.readCounts, file->path);
    if (pathFault != nullptr && pathFault->kind == State::FaultKind::Fail)
        return static_cast<int>(pathFault->value);
    const auto limit = host.readLimits.find(file->path);
    if (limit != host.readLimits.end())
        len = std::min(len, limit->second);
    if (pathFault != nullptr && pathFault->kind == State::FaultKind::Shorten)
        len = std::min(len, static_cast<int>(pathFault->value));
    const int count =
        is(CallFault::Way::Feigned) ? readHalf(file, buf, len) : readBytes(file, buf, allowed(len));
    return pathFault != nullptr && pathFault->kind == State::FaultKind::Lie
               ? static_cast<int>(pathFault->value)
               : count;
}

// A feigned read gives the first half of what the file has, and moves behind it.
int FakeHost::Services::readHalf(VFile *file, char *buf, int len) const
{
    std::vector<char> whole(static_cast<std::size_t>(std::max(len, 0)));
    const int count = readBytes(file, whole.data(), len);
    if (count > 0)
        std::memcpy(buf, whole.data(), static_cast<std::size_t>(count / 2));
    return count;
}

int FakeHost::Services::readBytes(VFile *file, char *buf, int len) const
{
    if (len < 0 || file->mode != readMode)
        return -1;
    if (file->disk != nullptr)
        return static_cast<int>(std::fread(buf, 1, static_cast<std::size_t>(len), file->disk));
    const QByteArray &bytes = (*file->files)[file->path];
    const qint64 left = std::max<qint64>(0, bytes.size() - file->position);
    const int count = static_cast<int>(std::min<qint64>(left, len));
    if (count > 0)
        std::memcpy(buf, bytes.constData() + file->position, static_cast<std::size_t>(count));
    file->position += count;
    return count;
}

int FakeHost::Services::write(VFile *file, const char *buf, int len)
{
    if (!check(file))
        return -1;
    const State::Fault *pathFault = faultOf(host.writeFaults, host.writeCounts, file->path);
    if (pathFault != nullptr && pathFault->kind == State::FaultKind::Fail)
        return static_cast<int>(pathFault->value);
    if (pathFault != nullptr && pathFault->kind == State::FaultKind::Shorten)
        len = std::min(len, static_cast<int>(pathFault->value));
    const int count = is(CallFault::Way::Feigned) ? len : writeBytes(file, buf, allowed(len));
    return pathFault != nullptr && pathFault->kind == State::FaultKind::Lie
               ? static_cast<int>(pathFault->value)
               : count;
}

int FakeHost::Services::writeBytes(VFile *file, const char *buf, int len) const
{
    if (len < 0 || file->mode != writeMode)
        return -1;
    if (file->disk != nullptr)
        return static_cast<int>(std::fwrite(buf, 1, static_cast<std::size_t>(len), file->disk));
    QByteArray &bytes = (*file->files)[file->path];
    bytes.replace(static_cast<int>(file->position), len, buf, len);
    file->position += len;
    return len;
}

qint64 FakeHost::Services::seek(VFile *file, qint64 offset, int whence)
{
    if (!check(file))
        return -1;
    if (is(CallFault::Way::Feigned)) {
        const qint64 before = tell(file);
        const qint64 after = move(file, offset, whence);
        move(file, before, SEEK_SET);
        return after;
    }
    const auto pathFault = host.seekFaults.find(file->path);
    if (pathFault == host.seekFaults.end())
        return move(file, offset, whence);
    if (pathFault->second.kind == State::FaultKind::Lie)
        move(file, offset, whence);
    return pathFault->second.value;
}

qint64 FakeHost::Services::move(VFile *file, qint64 offset, int whence) const
{
    if (whence != SEEK_SET && whence != SEEK_END)
        return -1;
    if (file->disk != nullptr)
        return std::fseek(file->disk, offset, whence) == 0 ? std::ftell(file->disk) : -1;
    const qint64 start = whence == SEEK_END ? (*file->files)[file->path].size() : 0;
    if (start + offset < 0)
        return -1;
    file->position = start + offset;
    return file->position;
}

qint64 FakeHost::Services::tell(VFile *file)
{
    if (!check(file))
        return -1;
    const auto lie = host.tells.find(file->path);
    if (lie != host.tells.end())
        return lie->second;
    return file->disk != nullptr ? std::ftell(file->disk) : file->position;
}

// --- src/host, with C++ linkage as its headers declare.

VDev *vDevOpen(VDevType type, const char *path)
{
    FakeHost::Services service("vDevOpen", type == VDevDevice);
    VDev *dev = service.openDev(type, path);
    service.note({std::to_string(type), quoted(path)}, nameOf(dev));
    return dev;
}

void vDevClose(VDev *dev)
{
    FakeHost::Services service("vDevClose");
    service.note({nameOf(dev)});
    if (service.check(dev))
        dev->open = false;
}

bool vDevCreateDir(VDev *dev, const char *path)
{
    FakeHost::Services service("vDevCreateDir", false);
    const bool created = service.answer([&] { return service.createDir(dev, path); });
    service.note({nameOf(dev), quoted(path)}, truth(created));
    return created;
}

qint64 vDevFileSize(VDev *dev, const char *path)
{
    FakeHost::Services service("vDevFileSize");
    const qint64 size =
        service.answer([&] { return service.check(dev) ? service.fileSize(dev, path) : 0; });
    service.note({nameOf(dev), quoted(path)}, std::to_string(size));
    return size;
}

VFile *vFileOpen(VDev *dev, const char *path, int mode)
{
    FakeHost::Services service("vFileOpen", mode == readMode);
    VFile *file = service.openFile(dev, path, mode);
    service.note({nameOf(dev), quoted(path), std::to_string(mode)}, nameOf(file));
    return file;
}

int vFileRead(VFile *file, char *buf, int len)
{
    FakeHost::Services service("vFileRead");
    const int count = service.answer([&] { return service.read(file, buf, len); });
    service.note({nameOf(file), std::to_string(len)}, std::to_string(count));
    return count;
}

int vFileWrite(VFile *file, const char *buf, int len)
{
    FakeHost::Services service("vFileWrite", false);
    const int count = service.answer([&] { return service.write(file, buf, len); });
    service.note({nameOf(file), std::to_string(len)}, std::to_string(count));
    return count;
}

qint64 vFileSeek(VFile *file, qint64 offset, int whence)
{
    FakeHost::Services service("vFileSeek");
    const qint64 position = service.answer([&] { return service.seek(file, offset, whence); });
    service.note({nameOf(file), std::to_string(offset), std::to_string(whence)},
                 std::to_string(position));
    return position;
}

qint64 vFileTell(VFile *file)
{
    FakeHost::Services service("vFileTell");
    const qint64 position = service.answer([&] { return service.tell(file); });
    service.note({nameOf(file)}, std::to_string(position));
    return position;
}

void vFileClose(VFile *file)
{
    FakeHost::Services service("vFileClose");
    service.note({nameOf(file)});
    if (!service.check(file))
        return;
    file->open = false;
    if (file->disk != nullptr)
        std::fclose(file->disk);
    file->disk = nullptr;
}

void Log(const char *tag, int level, const char *format, ...)
{
    const FaultPause pause;
    if (FakeHost::current() == nullptr)
        return;
    va_list arguments;
    va_start(arguments, format);
    char *formatted = nullptr;
    const int length = vasprintf(&formatted, format, arguments);
    va_end(arguments);
    ASSERT_GE(length, 0) << format;
    const QByteArray text(formatted, length);
    std::free(formatted);

    FakeHost::Services service("Log");
    service.host.log.push_back({tag, level, text});
    service.note({quoted(tag), std::to_string(level), quoted(text)});
}

extern "C" void g_return_if_fail_warning(const char *domain, const char *function,
                                         const char *expression)
{
    FakeHost::Services service("warning");
    service.host.warnings.push_back(
        {domain == nullptr ? std::nullopt : std::make_optional<std::string>(domain), function,
         expression});
    service.note({quoted(function), quoted(expression)});
}

iitdb *getPhotoDBInt(IIPod *iPod)
{
    FakeHost::Services service("getPhotoDBInt");
    service.host.databaseDevice = iPod;
    FakePhotoDB *database = service.fault ? nullptr : service.host.photoDatabase;
    service.note({}, database == nullptr ? "null" : "db");
    return database;
}

void releaseITunesDBInt(iitdb **db)
{
    FakeHost::Services service("releaseITunesDBInt");
    service.note({});
    EXPECT_NE(db, nullptr);
    if (db == nullptr || *db == nullptr)
        return;
    FakePhotoDB *database = service.host.photoDatabase;
    EXPECT_EQ(*db, database);
    EXPECT_FALSE(database->isReleased()) << "released twice";
    database->markReleased();
    if (service.host.releaseClears)
        *db = nullptr;
}

int unpackiThmb(IIPod *iPod, QByteArray &raw, const itdb_photo &photo, QByteArray &out)
{
    FakeHost::Services service("unpackiThmb");
    auto &host = service.host;
    host.unpackings.push_back({iPod, raw, photo, out});
    const int result = service.answer([&] {
        if (host.unpackResult == 0)
            out = host.unpacked;
        return host.unpackResult;
    });
    service.note({std::to_string(raw.size())}, std::to_string(result));
    return result;
}

namespace {

// The result of a call that goes wrong.
template <class Number>
Number faulty(const Number &, qint64 value)
{
    return static_cast<Number>(value);
}
QString faulty(const QString &, qint64)
{
    return {};
}
QList<quint32> faulty(const QList<quint32> &, qint64)
{
    return {};
}
iphotolib *faulty(iphotolib *, qint64)
{
    return nullptr;
}

// Records a call of one of the fake objects and gives its answer; the hook may still
// change what `answer` reads.
template <class Answer, class Print>
auto answered(const std::string &operation, const std::string &arguments, Answer answer,
              Print print)
{
    FakeHost *host = FakeHost::current();
    const bool onDevice = operation.find("::") != std::string::npos; // not those of FakeIPod
    const auto fault = host != nullptr ? host->enter(operation, onDevice) : std::nullopt;
    const bool isRefused = fault && fault->way == CallFault::Way::Refused;
    auto result = isRefused ? decltype(answer())() : answer();
    if (fault)
        result = faulty(result, fault->value);
    if (host != nullptr)
        host->record(operation, operation + '(' + arguments + ')' + print(result));
    return result;
}

std::string arrowTruth(bool value)
{
    return " -> " + truth(value);
}

std::string arrowText(const QString &text)
{
    return " -> " + quoted(text.toUtf8());
}

std::string arrowNumber(int value)
{
    return " -> " + std::to_string(value);
}

std::string noResult(const QList<quint32> &)
{
    return {};
}

} // namespace

bool FakeIPod::isAccessBlocked()
{
    return answered(
        "isAccessBlocked", "", [this] { return accessBlocked.load(); }, arrowTruth);
}

QString FakeIPod::devicePath()
{
    return answered(
        "devicePath", "", [this] { return path; }, arrowText);
}

QString FakeIPod::driveName()
{
    return answered(
        "driveName", "", [this] { return drive; }, arrowText);
}

bool FakeIPod::isIOSDevice()
{
    return answered(
        "isIOSDevice", "", [this] { return iosDevice.load(); }, arrowTruth);
}

QString FakeIPod::localDataPath()
{
    return answered(
        "localDataPath", "", [this] { return localData; }, arrowText);
}

void FakePhotoLibrary::addPhoto(quint32 id, const itdb_trk &photo)
{
    photoOrder.append(id);
    photos.insert(id, photo);
}

void FakePhotoLibrary::addAlbum(quint32 id, const itdb_pl &album)
{
    albumOrder.append(id);
    albums.insert(id, album);
}

QList<quint32> FakePhotoLibrary::photoIDs()
{
    return answered(
        "iphotolib::photoIDs", "", [this] { return photoOrder; }, noResult);
}

QList<quint32> FakePhotoLibrary::albumIDs()
{
    return answered(
        "iphotolib::albumIDs", "", [this] { return albumOrder; }, noResult);
}

int FakePhotoLibrary::getAlbum(const quint32 *id, itdb_pl *album)
{
    const auto look = [&] {
        if (!albums.contains(*id))
            return -1;
        *album = albums.value(*id);
        return 0;
    };
    return answered("iphotolib::getAlbum", std::to_string(*id), look, arrowNumber);
}

int FakePhotoLibrary::getPhoto(const quint32 *id, itdb_trk *item)
{
    const auto look = [&] {
        if (!photos.contains(*id))
            return -1;
        *item = photos.value(*id);
        return 0;
    };
    return answered("iphotolib::getPhoto", std::to_string(*id), look, arrowNumber);
}

int FakePhotoDB::parse()
{
    EXPECT_FALSE(isReleased()) << "parse of a released database";
    return answered(
        "iitdb::parse", "", [this] { return parseResult; }, arrowNumber);
}

iphotolib *FakePhotoDB::photoLib()
{
    EXPECT_FALSE(isReleased()) << "library of a released database";
    return answered(
        "iitdb::photoLib", "",
        [this] { return hasLibrary ? static_cast<iphotolib *>(&library) : nullptr; },
        [](const iphotolib *found) {
            return std::string(found == nullptr ? " -> null" : " -> library");
        });
}
