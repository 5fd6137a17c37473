#include "sqlite/temp_file_limit.h"

#include <new>

namespace {

// Sorted photos take about their library's size in a temporary file, and when it is merged
// from very many parts a second time.
const qint64 bytesPerFileByte = 3;

// Parts of a sort have a least size, whatever the file's.
const qint64 bytesAlways = 2097152;

const int temporaryKinds = SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_TRANSIENT_DB |
                           SQLITE_OPEN_TEMP_JOURNAL | SQLITE_OPEN_SUBJOURNAL;

// SQLite aligns the memory of files to as much.
const std::size_t fileAlignment = 8;

} // namespace

// Lies in the memory that SQLite has for a file; the default's file follows it.
struct temp_file_limit::temp_file {
    sqlite3_file file; // first, since SQLite knows no more of it
    temp_file_limit *limit;
    qint64 end; // the highest that was written

    static std::size_t size()
    {
        return (sizeof(temp_file) + fileAlignment - 1) / fileAlignment * fileAlignment;
    }

    static temp_file *of(sqlite3_file *file) { return reinterpret_cast<temp_file *>(file); }

    sqlite3_file *real()
    {
        return reinterpret_cast<sqlite3_file *>(reinterpret_cast<char *>(this) + size());
    }

    bool growTo(qint64 newEnd)
    {
        if (newEnd <= end)
            return true;
        if (!limit->spend(newEnd - end))
            return false;
        end = newEnd;
        return true;
    }

    static int close(sqlite3_file *file)
    {
        temp_file *self = of(file);
        const int result = self->real()->pMethods->xClose(self->real());
        self->limit->giveBack(self->end);
        self->end = 0;
        return result;
    }

    static int write(sqlite3_file *file, const void *bytes, int count, sqlite3_int64 offset)
    {
        temp_file *self = of(file);
        if (!self->growTo(offset + count))
            return SQLITE_FULL;
        return self->real()->pMethods->xWrite(self->real(), bytes, count, offset);
    }

    static int control(sqlite3_file *file, int operation, void *argument)
    {
        // These make files longer without a write.
        if (operation == SQLITE_FCNTL_SIZE_HINT || operation == SQLITE_FCNTL_CHUNK_SIZE ||
            operation == SQLITE_FCNTL_MMAP_SIZE)
            return SQLITE_NOTFOUND;
        sqlite3_file *real = of(file)->real();
        return real->pMethods->xFileControl(real, operation, argument);
    }
};

// The functions below hand a call on to the same method of the default VFS, or of its file.
template <class Result, class... Arguments,
          Result (*sqlite3_vfs::*method)(sqlite3_vfs *, Arguments...)>
struct temp_file_limit::forwarded<method> {
    static Result call(sqlite3_vfs *vfs, Arguments... arguments)
    {
        sqlite3_vfs *real = of(vfs)->m_default;
        return (real->*method)(real, arguments...);
    }

    // Some methods are optional.
    static void in(sqlite3_vfs &vfs, const sqlite3_vfs &real)
    {
        vfs.*method = real.*method ? call : nullptr;
    }
};

template <class... Arguments, int (*sqlite3_io_methods::*method)(sqlite3_file *, Arguments...)>
struct temp_file_limit::forwarded_to_file<method> {
    // SQLite takes a sector size of 0, and no characteristics, where a file does not tell.
    static int call(sqlite3_file *file, Arguments... arguments)
    {
        sqlite3_file *real = temp_file::of(file)->real();
        return real->pMethods->*method ? (real->pMethods->*method)(real, arguments...) : 0;
    }
};

temp_file_limit::temp_file_limit()
    : m_default(sqlite3_vfs_find(nullptr)), m_vfs(), m_left(bytesAlways)
{
    // Names are looked up among those of the whole process.
    sqlite3_snprintf(sizeof m_name, m_name, "photolib-%p", static_cast<void *>(this));
    if (m_default)
        forwardMethods();
}

void temp_file_limit::forwardMethods()
{
    m_vfs.iVersion = m_default->iVersion < 2 ? 1 : 2;
    m_vfs.szOsFile = static_cast<int>(temp_file::size()) + m_default->szOsFile;
    m_vfs.mxPathname = m_default->mxPathname;
    m_vfs.zName = m_name;
    m_vfs.pAppData = this;
    m_vfs.xOpen = openFile;
    forwarded<&sqlite3_vfs::xDelete>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xAccess>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xFullPathname>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xDlOpen>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xDlError>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xDlSym>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xDlClose>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xRandomness>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xSleep>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xCurrentTime>::in(m_vfs, *m_default);
    forwarded<&sqlite3_vfs::xGetLastError>::in(m_vfs, *m_default);
    // Older versions end before it.
    if (m_vfs.iVersion == 2)
        forwarded<&sqlite3_vfs::xCurrentTimeInt64>::in(m_vfs, *m_default);
}

temp_file_limit *temp_file_limit::of(sqlite3_vfs *vfs)
{
    return static_cast<temp_file_limit *>(vfs->pAppData);
}

int temp_file_limit::open(const char *path, sqlite3 **db)
{
    if (!m_default || sqlite3_vfs_register(&m_vfs, 0) != SQLITE_OK)
        return sqlite3_open(path, db);
    // Without a mutex, which every look at a column would take.
    const int result = sqlite3_open_v2(
        path, db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, m_name);
    // The connection knows it now, and nobody else shall.
    sqlite3_vfs_unregister(&m_vfs);
    return result;
}

bool temp_file_limit::isBehind(sqlite3 *db)
{
    sqlite3_vfs *vfs = nullptr;
    return sqlite3_file_control(db, "main", SQLITE_FCNTL_VFS_POINTER, &vfs) == SQLITE_OK && vfs &&
           vfs->xOpen == openFile;
}

void temp_file_limit::allowFor(qint64 databaseBytes)
{
    giveBack(databaseBytes * bytesPerFileByte);
}

bool temp_file_limit::spend(qint64 bytes)
{
    if (m_left.fetch_sub(bytes, std::memory_order_relaxed) >= bytes)
        return true;
    giveBack(bytes);
    return false;
}

void temp_file_limit::giveBack(qint64 bytes)
{
    m_left.fetch_add(bytes, std::memory_order_relaxed);
}

int temp_file_limit::openFile(sqlite3_vfs *vfs, const char *name, sqlite3_file *file, int flags,
                              int *outFlags)
{
    temp_file_limit *self = of(vfs);
    if (!name || (flags & temporaryKinds))
        return self->openTemporary(name, file, flags, outFlags);
    return self->m_default->xOpen(self->m_default, name, file, flags, outFlags);
}

int temp_file_limit::openTemporary(const char *name, sqlite3_file *file, int flags, int *outFlags)
{
    static const sqlite3_io_methods methods = fileMethods();
    temp_file *temporary = new (file) temp_file();
    temporary->limit = this;
    sqlite3_file *real = temporary->real();
    real->pMethods = nullptr;
    const int result = m_default->xOpen(m_default, name, real, flags, outFlags);
    if (result == SQLITE_OK)
        file->pMethods = &methods;
    else if (real->pMethods)
        real->pMethods->xClose(real);
    return result;
}

// Of the first version, thus without pages in memory: what SQLite writes through them
// passes no one.
sqlite3_io_methods temp_file_limit::fileMethods()
{
    sqlite3_io_methods methods = {};
    methods.iVersion = 1;
    methods.xClose = temp_file::close;
    methods.xRead = forwarded_to_file<&sqlite3_io_methods::xRead>::call;
    methods.xWrite = temp_file::write;
    methods.xTruncate = forwarded_to_file<&sqlite3_io_methods::xTruncate>::call;
    methods.xSync = forwarded_to_file<&sqlite3_io_methods::xSync>::call;
    methods.xFileSize = forwarded_to_file<&sqlite3_io_methods::xFileSize>::call;
    methods.xLock = forwarded_to_file<&sqlite3_io_methods::xLock>::call;
    methods.xUnlock = forwarded_to_file<&sqlite3_io_methods::xUnlock>::call;
    methods.xCheckReservedLock = forwarded_to_file<&sqlite3_io_methods::xCheckReservedLock>::call;
    methods.xFileControl = temp_file::control;
    methods.xSectorSize = forwarded_to_file<&sqlite3_io_methods::xSectorSize>::call;
    methods.xDeviceCharacteristics =
        forwarded_to_file<&sqlite3_io_methods::xDeviceCharacteristics>::call;
    return methods;
}
