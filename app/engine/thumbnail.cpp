#include "engine/thumbnail.h"

#include "base/cancel_token.h"
#include "base/log_output.h"
#include "base/printable.h"
#include "boundary/photo_records.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "host/transfer_monitor.h"

namespace {

// What a choice means to the plug-in and to people.
struct ChosenPicture {
    int (photo_manager_int::*operation)(const quint64 &id, QByteArray &data);
    const StoredPicture *(*variant)(const ClassicPhoto &photo);
    const char *noun;
};

const ChosenPicture &chosenPicture(PictureChoice choice)
{
    static const ChosenPicture thumbnail = {&photo_manager_int::getPhotoThumbnail, smallestVariant,
                                            "thumbnail"};
    static const ChosenPicture largest = {&photo_manager_int::getSourcePhoto, largestVariant,
                                          "picture"};
    return choice == PictureChoice::Thumbnail ? thumbnail : largest;
}

// Hears why a file that is there could not be read or unpacked.
class ReadFailure : public TransferObserver
{
public:
    const FileError &error() const { return m_error; }

    void bytesWritten(qint64) override {}

    void failed(const QByteArray &, const FileError &error) override
    {
        if (m_error.kind == FileError::None && !error.isMissing())
            m_error = error;
    }

private:
    FileError m_error;
};

// What the plug-in gives.
struct GivenPicture {
    QByteArray bytes; // an image file; empty when there is none
    FileError cause;  // why; of no kind when the device just has none
    bool isUnreadable = false;
};

// Why there is no picture although the host has heard of no failure.
FileError unheardCause(LibrarySession &session, quint64 id, const ChosenPicture &chosen)
{
    const ClassicPhoto *const photo = classicPhoto(session, id);
    const StoredPicture *const variant = photo ? chosen.variant(*photo) : nullptr;
    return variant ? variantFailure(session, *variant) : FileError();
}

GivenPicture givenPicture(LibrarySession &session, quint64 id, const ChosenPicture &chosen)
{
    GivenPicture given;
    ReadFailure failure;
    {
        const LogCapture log; // the failure is told once, by whoever asks
        const TransferWatch watch(&failure);
        if ((session.library().*chosen.operation)(id, given.bytes) == 0 && !given.bytes.isEmpty())
            return given;
    }
    given.bytes.clear();
    session.requireDevice();
    given.cause = failure.error();
    given.isUnreadable =
        given.cause.kind != FileError::None && given.cause.kind != FileError::Damaged;
    if (given.cause.kind == FileError::None) {
        given.cause = unheardCause(session, id, chosen);
        given.isUnreadable = given.cause.kind == FileError::Denied;
    }
    return given;
}

// In words that a message can end with.
FileError absence(const ChosenPicture &chosen, const FileError &cause)
{
    const QString text = QStringLiteral("no %1").arg(QLatin1String(chosen.noun));
    if (cause.kind == FileError::None)
        return {FileError::Failed, text};
    const bool isGone = cause.kind == FileError::Disconnected;
    return {isGone ? FileError::Disconnected : FileError::Failed,
            QStringLiteral("%1 (%2)").arg(text, cause.text)};
}

// Puts the given picture into `*file`, as it is.
void fillAsGiven(PictureFile *file, const GivenPicture &given, const ChosenPicture &chosen)
{
    file->format = formatOfContent(given.bytes);
    if (file->format)
        file->bytes = given.bytes;
    else if (given.bytes.isEmpty())
        file->failure = absence(chosen, given.cause);
    else
        file->failure = {
            FileError::Failed,
            QStringLiteral("a %1 that is neither JPEG nor BMP").arg(QLatin1String(chosen.noun))};
}

void convertToPng(PictureFile *file)
{
    QString cause;
    const QImage image = decodedThumbnail(file->bytes, &cause);
    const bool isDecoded = !image.isNull();
    file->bytes = isDecoded ? pngFile(image) : QByteArray();
    file->format = isDecoded ? &pngFormat() : nullptr;
    if (!isDecoded)
        file->failure = {FileError::Failed, cause};
}

// Empty when there is none; then one that cannot be read is noted.
QByteArray givenBytes(LibrarySession &session, quint64 id, const QString &label,
                      PictureChoice choice)
{
    const ChosenPicture &chosen = chosenPicture(choice);
    const GivenPicture given = givenPicture(session, id, chosen);
    if (given.isUnreadable)
        session.noteUnreadable(label, absence(chosen, given.cause));
    return given.bytes;
}

// Null when there are no bytes, and when they are damaged; then `*faults` tells it.
QImage decodedPicture(const QByteArray &bytes, const QString &label, QStringList *faults,
                      const CancelToken *cancel = nullptr)
{
    QString cause;
    if (bytes.isEmpty())
        return QImage();
    QImage image = decodedThumbnail(bytes, &cause, cancel);
    if (image.isNull())
        faults->append(QStringLiteral("%1: %2").arg(label, cause));
    return image;
}

bool isIcon(const QImage &picture)
{
    constexpr int enough = 100; // pixels
    return qMax(picture.width(), picture.height()) < enough;
}

// Whether a classic iPod stores more of the photo than the thumbnail.
bool hasLargerPicture(const LibrarySession &session, quint64 id)
{
    const ClassicPhoto *const photo = classicPhoto(session, id);
    return photo && smallestVariant(*photo) != largestVariant(*photo);
}

// The iPod's photos have no files of their own.
QString pictureLabel(const LibrarySession &session, const Asset &asset)
{
    const QByteArray path = session.classicIpod() ? QByteArray() : printable(asset.path());
    return path.isEmpty() ? QString::number(asset.id) : QString::fromUtf8(path);
}

void takeOriginals(StoredThumbnail *stored, LibrarySession &session, const Asset &asset)
{
    stored->files = &session.files();
    stored->originals = originalFiles(session, asset);
}

// Makes the picture of an original, or tells why there is none.
void showOriginal(ShownPicture *shown, const StoredThumbnail &stored, const CancelToken *cancel,
                  int madeEdge)
{
    const CancelToken never;
    const OriginalPicture made =
        originalPicture(*stored.files, stored.originals, madeEdge, cancel ? *cancel : never);
    shown->image = made.image;
    shown->isVideoWithout = stored.originals.isVideo;
    if (made.cause.kind != FileError::Damaged)
        shown->unreadable = made.cause;
    else if (!shown->isVideoWithout)
        shown->faults.append(
            QStringLiteral("%1: no thumbnail (%2)").arg(stored.label, made.cause.text));
}

StoredShape shapeOf(const Asset &asset)
{
    return {asset.width.value_or(0), asset.height.value_or(0), asset.orientation.value_or(0)};
}

} // namespace

PictureFile requestedPicture(LibrarySession &session, const PictureRequest &request)
{
    photoItem item;
    session.library().getPhoto(request.id, &item); // false also when its file is missing
    item.id = request.id; // for the label of one that the plug-in does not have
    PictureFile file;
    file.label = labelText(session, item);
    file.name = fileName(session, item);
    const ChosenPicture &chosen = chosenPicture(request.choice);
    fillAsGiven(&file, givenPicture(session, request.id, chosen), chosen);
    if (request.isPng && file.format)
        convertToPng(&file);
    return file;
}

StoredThumbnail storedThumbnail(LibrarySession &session, const Asset &asset)
{
    const auto id = quint64(asset.id);
    StoredThumbnail stored;
    stored.label = pictureLabel(session, asset);
    if (!session.parseFailure().empty())
        return stored;
    stored.bytes = givenBytes(session, id, stored.label, PictureChoice::Thumbnail);
    if (!session.classicIpod())
        stored.shape = shapeOf(asset);
    if (stored.bytes.isEmpty())
        takeOriginals(&stored, session, asset);
    if (!hasLargerPicture(session, id))
        return stored;
    stored.decoded = decodedPicture(stored.bytes, stored.label, &stored.faults);
    stored.bytes = isIcon(stored.decoded)
                       ? givenBytes(session, id, stored.label, PictureChoice::Largest)
                       : QByteArray();
    return stored;
}

ShownPicture shownPicture(const StoredThumbnail &stored, const CancelToken *cancel, int madeEdge)
{
    ShownPicture shown;
    shown.faults = stored.faults;
    const QImage picture = decodedPicture(stored.bytes, stored.label, &shown.faults, cancel);
    const bool isDamaged = picture.isNull() && !stored.bytes.isEmpty();
    shown.absence =
        isDamaged ? QStringLiteral("damaged thumbnail") : QStringLiteral("no thumbnail");
    shown.image = picture.isNull() ? stored.decoded : uprightThumbnail(picture, stored.shape);
    if (shown.image.isNull() && stored.files)
        showOriginal(&shown, stored, cancel, madeEdge);
    return shown;
}
