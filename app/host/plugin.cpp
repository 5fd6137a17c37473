#include "host/plugin.h"

#include "base/error.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <mutex>

namespace {

const char fileName[] = "libphotolib.so";

QString findPlugin()
{
    const QString program = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    const QString folder = QFileInfo(program).path();
    const QStringList places = {folder, folder + QLatin1String("/" PHOTOLIB_PLUGIN_FOLDER)};
    for (const QString &place : places) {
        QString file = place + QLatin1Char('/') + QLatin1String(fileName);
        if (QFile::exists(file))
            return file;
    }
    throw Error(fileName, "not found beside the program nor in " + places[1].toStdString());
}

[[noreturn]] void failToLoad(const std::string &name, const QString &cause)
{
    throw Error(name, "not loadable as the plug-in (" + cause.toStdString() + ")");
}

QFunctionPointer find(QLibrary &library, const char *symbol)
{
    const QFunctionPointer function = library.resolve(symbol);
    if (!function)
        failToLoad(library.fileName().toStdString(),
                   QStringLiteral("it lacks %1").arg(QLatin1String(symbol)));
    return function;
}

// Held while the plug-in is loaded and while it makes a library: neither its own set-up nor Qt's
// count of a library's users is meant for two threads at a time.
std::mutex &loaderMutex()
{
    static std::mutex mutex;
    return mutex;
}

} // namespace

Plugin::Plugin(const std::string &file)
{
    const QString path = file.empty() ? findPlugin() : QFile::decodeName(file.c_str());
    if (!QFile::exists(path))
        throw Error(path.toStdString(), "no such file");
    const std::lock_guard<std::mutex> lock(loaderMutex());
    // The loader looks a name without a folder up elsewhere; here it is a file's name.
    QLibrary library(QFileInfo(path).absoluteFilePath());
    // A host service that the program lacked would otherwise show in the midst of a parse.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!library.load())
        failToLoad(path.toStdString(), library.errorString());
    m_makeLibrary = reinterpret_cast<MakeLibrary>(find(library, "getPhotolib"));
}

std::unique_ptr<photo_manager_int> Plugin::makeLibrary(IIPod *device) const
{
    const std::lock_guard<std::mutex> lock(loaderMutex());
    std::unique_ptr<photo_manager_int> library(m_makeLibrary(device));
    if (!library)
        throw std::bad_alloc();
    return library;
}
