#include <boundary/photo_manager_int.h>
#include <boundary/photolib.h>
#include <host/device_database.h>
#include <host/device_files.h>
#include <host/host_log.h>
#include <host/iipod.h>

#include <cstdio>

// The least host there is that links the library: its device never opens, so a parse fails and
// says so.
// clang-format off
VDev *vDevOpen(VDevType, const char *) { return nullptr; }
void vDevClose(VDev *) {}
bool vDevCreateDir(VDev *, const char *) { return false; }
qint64 vDevFileSize(VDev *, const char *) { return 0; }
VFile *vFileOpen(VDev *, const char *, int) { return nullptr; }
int vFileRead(VFile *, char *, int) { return -1; }
int vFileWrite(VFile *, const char *, int) { return -1; }
qint64 vFileSeek(VFile *, qint64, int) { return -1; }
qint64 vFileTell(VFile *) { return -1; }
void vFileClose(VFile *) {}
void Log(const char *, int, const char *text, ...) { std::puts(text); }
iitdb *getPhotoDBInt(IIPod *) { return nullptr; }
void releaseITunesDBInt(iitdb **) {}
int unpackiThmb(IIPod *, QByteArray &, const itdb_photo &, QByteArray &) { return -1; }
// clang-format on

class Device : public IIPod
{
    bool isAccessBlocked() override { return false; }
    QString devicePath() override { return "phone"; }
    QString driveName() override { return QString(); }
    bool isIOSDevice() override { return true; }
    QString localDataPath() override { return "/tmp/"; }
};

int main()
{
    Device device;
    photo_manager_int *library = getPhotolib(&device);
    cancleParse(); // the parse forgets it
    const bool isParsed = library->parseLib();
    delete library;
    return isParsed ? 1 : 0;
}
