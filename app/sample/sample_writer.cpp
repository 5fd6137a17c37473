#include "sample/sample_writer.h"

#include "sample/library_plan.h"
#include "sample/output_folder.h"
#include "sample/photos_database.h"
#include "sample/picture_files.h"
#include "sample/property_lists.h"
#include "sample/random.h"
#include "sample/sample_error.h"

#include <memory>

namespace {

using namespace sample;

constexpr quint64 syncUuidPurpose = 200;

void checkOptions(const SampleOptions &options)
{
    if (options.assets < 0 || options.assets > maxSampleAssets)
        throw SampleError(QStringLiteral("cannot write a sample of %1 assets: it takes 0 to %2")
                              .arg(options.assets)
                              .arg(maxSampleAssets));
    for (const int names : {options.keywords, options.people})
        if (names < 0 || names > maxSampleNames)
            throw SampleError(
                QStringLiteral("cannot write a sample of %1 keywords or people: it takes 0 to %2")
                    .arg(names)
                    .arg(maxSampleNames));
}

void writeAssets(OutputFolder &folder, const LibraryPlan &plan, PhotosDatabase &database,
                 const SampleWatch &watch)
{
    std::unique_ptr<PictureFiles> pictures;
    if (plan.options().pictures)
        pictures = std::make_unique<PictureFiles>(folder, plan);
    int listed = 0;
    for (int i = 0; i < plan.rowCount(); ++i) {
        tellWritten(watch, listed);
        const AssetPlan asset = plan.asset(i);
        listed += asset.isLeftOut() ? 0 : 1;
        database.addAsset(asset, pictures ? pictures->write(asset) : asset.claimedSize);
    }
    if (pictures)
        pictures->finish();
}

void writeDatabase(OutputFolder &folder, const LibraryPlan &plan, const SampleWatch &watch)
{
    const QString path = folder.prepare(QStringLiteral("PhotoData/Photos.sqlite"));
    PhotosDatabase database(path, plan);
    writeAssets(folder, plan, database, watch);
    database.finish();
    for (const char *suffix : {"", "-wal", "-shm"})
        setFileDate(path + QLatin1String(suffix), plan.endDate());
}

void writeSyncPlist(OutputFolder &folder, const LibraryPlan &plan)
{
    Random random(plan.options().seed, syncUuidPurpose, 0);
    folder.writeFile(QStringLiteral("Photos/Sync/CurrentLibraryUUID.plist"),
                     currentLibraryPlist(uuidText(random.uuid())), plan.endDate());
}

void writeAll(const QString &dir, const SampleOptions &options, const SampleWatch &watch)
{
    checkOptions(options);
    const LibraryPlan plan(options);
    OutputFolder folder(dir);
    writeSyncPlist(folder, plan);
    writeDatabase(folder, plan, watch);
    folder.keep();
}

} // namespace

bool writeSample(const QString &dir, const SampleOptions &options, QString *error,
                 const SampleWatch &watch)
{
    return written(dir, error, [&] { writeAll(dir, options, watch); });
}
