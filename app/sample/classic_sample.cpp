#include "sample/classic_sample.h"

#include "sample/classic_database.h"
#include "sample/classic_pictures.h"
#include "sample/classic_plan.h"
#include "sample/output_folder.h"
#include "sample/sample_error.h"

#include <memory>

namespace {

using namespace sample;

void checkOptions(const ClassicSampleOptions &options)
{
    if (options.photos < 0 || options.photos > maxClassicSamplePhotos)
        throw SampleError(
            QStringLiteral("cannot write a sample classic iPod of %1 photos: it takes 0 to %2")
                .arg(options.photos)
                .arg(maxClassicSamplePhotos));
}

void writeDatabase(OutputFolder &folder, const ClassicPlan &plan, const SampleWatch &watch)
{
    std::unique_ptr<ClassicPictures> pictures;
    if (plan.hasPictures())
        pictures = std::make_unique<ClassicPictures>(folder, plan.endDate());
    ClassicDatabase database(plan);
    for (int i = 0; i < plan.photoCount(); ++i) {
        tellWritten(watch, i);
        const ClassicPhotoPlan photo = plan.photo(i);
        database.addPhoto(photo, pictures ? pictures->write(photo) : photo.asset.claimedSize);
    }
    if (pictures)
        pictures->finish();
    folder.writeFile(QStringLiteral("Photos/Photo Database"), database.finish(), plan.endDate());
}

/// Other programs learn from it which formats the device has.
void writeDescription(OutputFolder &folder, const ClassicPlan &plan)
{
    folder.writeFile(QStringLiteral("iPod_Control/Device/SysInfo"),
                     QByteArrayLiteral("ModelNumStr: MA446\n"), plan.endDate());
}

void writeAll(const QString &dir, const ClassicSampleOptions &options, const SampleWatch &watch)
{
    checkOptions(options);
    const ClassicPlan plan(options);
    OutputFolder folder(dir);
    writeDescription(folder, plan);
    writeDatabase(folder, plan, watch);
    folder.keep();
}

} // namespace

bool writeClassicSample(const QString &dir, const ClassicSampleOptions &options, QString *error,
                        const SampleWatch &watch)
{
    return written(dir, error, [&] { writeAll(dir, options, watch); });
}
