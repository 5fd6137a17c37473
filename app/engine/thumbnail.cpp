#include "engine/thumbnail.h"

#include "base/log_output.h"
#include "boundary/photo_records.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"
#include "engine/photo_text.h"
#include "engine/thumbnail_image.h"
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

// Fills `*shown` with what is wrong when there is no picture to look at.
QImage decodedPicture(LibrarySession &session, const photoItem &item, PictureChoice choice,
                      ShownPicture *shown)
{
    const ChosenPicture &chosen = chosenPicture(choice);
    const GivenPicture given = givenPicture(session, item.id, chosen);
    shown->absence = QStringLiteral("no thumbnail");
    if (given.isUnreadable)
        session.noteUnreadable(labelText(session, item), absence(chosen, given.cause));
    if (given.bytes.isEmpty())
        return QImage();
    QString cause;
    QImage image = decodedThumbnail(given.bytes, &cause);
    if (!image.isNull())
        return image;
    shown->absence = QStringLiteral("damaged thumbnail");
    shown->faults.append(QStringLiteral("%1: %2").arg(labelText(session, item), cause));
    return QImage();
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

ShownPicture shownPicture(LibrarySession &session, const photoItem &item)
{
    ShownPicture shown;
    const QImage thumbnail = decodedPicture(session, item, PictureChoice::Thumbnail, &shown);
    if (!isIcon(thumbnail) || !hasLargerPicture(session, item.id)) {
        shown.image = uprightThumbnail(thumbnail, item);
        return shown;
    }
    const QImage largest = decodedPicture(session, item, PictureChoice::Largest, &shown);
    shown.image = largest.isNull() ? thumbnail : largest;
    return shown;
}
