#include "engine/wanted_thumbnail.h"

#include "base/cancel_token.h"
#include "engine/classic_photos.h"
#include "engine/library_session.h"

#include <algorithm>

namespace {

// A picture on its way to a file.
struct Candidate {
    PictureFile file;        // as the device stores it, or without bytes
    QImage image;            // upright; null for none
    bool isAsStored = false; // so that the bytes need not change

    int edge() const { return std::max(image.width(), image.height()); }
};

class ThumbnailMaking
{
public:
    ThumbnailMaking(LibrarySession &session, const ThumbnailRequest &request,
                    const CancelToken &cancel)
        : m_session(session), m_request(request), m_cancel(cancel),
          m_asset(session.catalog().asset(qint64(request.id)))
    {
    }

    PictureFile make() { return m_request.longestEdge > 0 ? ofWantedSize() : ofStoredSize(); }

private:
    // What the device stores is given as it is, also when it is damaged, unless it has to be
    // converted.
    PictureFile ofStoredSize()
    {
        PictureFile file = stored(PictureChoice::Thumbnail);
        if (file.format && (!m_request.format || m_request.format == file.format))
            return file;
        Candidate best = decoded(file);
        if (best.image.isNull())
            takeOriginal(&best, usualThumbnailEdge);
        return encoded(best);
    }

    PictureFile ofWantedSize()
    {
        Candidate best = decoded(stored(PictureChoice::Thumbnail));
        if (best.edge() < m_request.longestEdge)
            takeLargestStored(&best);
        if (best.edge() < m_request.longestEdge)
            takeOriginal(&best, m_request.longestEdge);
        return encoded(best);
    }

    PictureFile stored(PictureChoice choice)
    {
        return requestedPicture(m_session, {m_request.id, choice});
    }

    Candidate decoded(const PictureFile &file) const
    {
        Candidate candidate;
        candidate.file = file;
        if (!file.format)
            return candidate;
        QString cause;
        const QImage image = decodedThumbnail(file.bytes, &cause, &m_cancel);
        candidate.image = image.isNull() ? image : upright(image);
        candidate.isAsStored = candidate.image.size() == image.size();
        if (image.isNull())
            candidate.file.failure = {FileError::Failed, cause};
        return candidate;
    }

    QImage upright(const QImage &image) const
    {
        if (!m_asset || m_session.classicIpod())
            return image;
        return uprightThumbnail(image, {m_asset->width.value_or(0), m_asset->height.value_or(0),
                                        m_asset->orientation.value_or(0)});
    }

    void takeLargestStored(Candidate *best)
    {
        if (!classicPhoto(m_session, m_request.id))
            return;
        const Candidate largest = decoded(stored(PictureChoice::Largest));
        if (largest.edge() > best->edge())
            *best = largest;
    }

    // Where that is larger.
    void takeOriginal(Candidate *best, int edge)
    {
        if (!m_asset)
            return;
        const OriginalPicture original =
            originalPicture(m_session.files(), originalFiles(m_session, *m_asset), edge, m_cancel);
        if (original.cause.kind == FileError::Disconnected)
            m_session.requireDevice();
        if (std::max(original.image.width(), original.image.height()) > best->edge()) {
            best->image = original.image;
            best->isAsStored = false;
        } else if (best->image.isNull()) {
            addCause(&best->file.failure, original.cause);
        }
    }

    // To "no thumbnail", which says nothing yet.
    static void addCause(FileError *failure, const FileError &cause)
    {
        const bool isExplained = failure->text != QLatin1String("no thumbnail");
        if (cause.kind != FileError::None && !isExplained)
            failure->text += QStringLiteral(" (%1)").arg(cause.text);
    }

    PictureFile encoded(const Candidate &best)
    {
        PictureFile file = best.file;
        const PictureFormat *const format = m_request.format ? m_request.format : &jpegFormat();
        const int most = m_request.longestEdge > 0 ? m_request.longestEdge : best.edge();
        if (best.isAsStored && file.format == format && best.edge() <= most)
            return file;
        file.bytes.clear();
        file.format = nullptr;
        if (best.image.isNull())
            return file;
        const QImage image = scaledDown(best.image, most);
        file.bytes = format == &pngFormat() ? pngFile(image) : jpegFile(image);
        file.format = format;
        file.failure = FileError();
        if (file.name.isEmpty() && m_asset && !m_session.classicIpod())
            file.name = QString::fromUtf8(m_asset->fileName);
        return file;
    }

    LibrarySession &m_session;
    const ThumbnailRequest &m_request;
    const CancelToken &m_cancel;
    const Asset *const m_asset; // null for one that the catalog does not know
};

} // namespace

PictureFile wantedThumbnail(LibrarySession &session, const ThumbnailRequest &request,
                            const CancelToken &cancel)
{
    return ThumbnailMaking(session, request, cancel).make();
}
