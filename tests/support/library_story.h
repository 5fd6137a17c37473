#ifndef PHOTOLIB_TESTS_SUPPORT_LIBRARY_STORY_H
#define PHOTOLIB_TESTS_SUPPORT_LIBRARY_STORY_H

#include "boundary/photo_manager_int.h"
#include "boundary/photo_records.h"
#include "support/fake_host.h"
#include "support/live_heap.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

/// All that a host does with a library, from the factory to the delete, and what it is
/// served on the way.
namespace story {

using Lines = std::vector<std::string>;

/// What a story asks for, whether the library has it or not.
struct Questions {
    std::vector<quint64> photos;
    std::vector<quint64> albums;
    quint64 edited = 0;    ///< the album that edits change
    quint64 removed = 0;   ///< the album that is taken away
    QList<quint64> listed; ///< the photos of a library that was read whole
};

/// What came of one story.
struct Outcome {
    Lines answers; ///< a line for each step, with all that it served
    Lines calls;   ///< those that may go wrong, in order
    Lines trace;   ///< every call and log line
    Lines log;     ///< the log lines alone
    Lines handles; ///< those that are open after the delete
    bool parsed = false;
    bool keptAnswers = true; ///< what was served stayed as it was
    std::string secondList;  ///< by the same library from a healthy device, after a failed parse
    std::string newList;     ///< by a new library from a healthy device
    std::size_t recordBytes = 0; ///< of records that a failed parse leaves behind
    qint64 heapLeft = 0;         ///< bytes that the story allocated and did not free
};

inline std::string text(const QString &value)
{
    return value.isNull() ? "null" : '"' + value.toStdString() + '"';
}

inline std::string bytes(const QByteArray &value)
{
    const QByteArray sum = QCryptographicHash::hash(value, QCryptographicHash::Md5).toHex();
    return std::to_string(value.size()) + " bytes " + sum.toStdString();
}

inline std::string date(const QDateTime &value)
{
    return value.isNull() ? "null" : std::to_string(value.toMSecsSinceEpoch());
}

inline std::string keys(const QList<quint64> &list)
{
    std::string line = "{";
    for (const quint64 key : list)
        line += ' ' + std::to_string(key);
    return line + " }";
}

/// Uuids that the library makes are random, so their size alone is told.
inline std::string uuid(const QByteArray &value)
{
    return value.left(8) == QByteArray(8, '\0') ? "made:" + std::to_string(value.size())
                                                : value.toHex().toStdString();
}

inline std::string describe(const photoItem &item)
{
    std::string line = "id " + std::to_string(item.id) + " uuid " + uuid(item.uuid);
    for (const QString &value : {item.name, item.path, item.thumbPath, item.avalancheUUID})
        line += ' ' + text(value);
    for (const int value : {item.type, item.orientation, item.height, item.width, item.duration})
        line += ' ' + std::to_string(value);
    line += " size " + std::to_string(item.fileSize) + " created " + date(item.createDate) +
            " modified " + date(item.modifyDate);
    return line + " trashed " + std::to_string(item.trashedDate) + ' ' +
           std::to_string(item.sortToken);
}

inline std::string describe(const albumItem &item)
{
    return "id " + std::to_string(item.id) + " uuid " + uuid(item.uuid) + ' ' + text(item.name) +
           " type " + std::to_string(item.type) + ' ' + keys(item.photoIDs);
}

/// Asks a library and notes its answers; keeps all that it is served.
class Host
{
public:
    Host(photo_manager_int *library, const Questions &questions)
        : m_library(*library), m_questions(questions)
    {
    }

    bool parse()
    {
        const bool parsed = m_library.parseLib();
        note("parse", parsed, "");
        return parsed;
    }

    void list()
    {
        note("photos", m_library.photoCnt(), keys(m_library.photoIDs()));
        note("albums", m_library.albumCnt(), keys(m_library.albumIDs()));
        note("uuid", 0, text(m_library.getUUID()));
    }

    void look()
    {
        for (const quint64 key : m_questions.photos) {
            photo(key);
            images(key);
        }
        photo(m_questions.photos[1]); // once more, for what the library keeps of it
        for (const quint64 key : m_questions.albums)
            album(key);
    }

    void edit()
    {
        albumItem &trip = serve(albumItem());
        trip.name = QStringLiteral("Trip");
        trip.photoIDs = m_questions.listed;
        note("addAlbum", m_library.addAlbum(&trip), describe(trip));
        photoItem &added = serve(photoItem());
        added.path = QStringLiteral("/dev/null"); // a file of the host's, which is there
        added.fileSize = 5;
        note("addPhoto2Album", m_library.addPhoto2Album(&added, trip.id), describe(added));
        note("addPhoto2Album", m_library.addPhoto2Album(&added, &trip), describe(trip));
        albumItem changed = trip;
        changed.id = m_questions.edited;
        changed.photoIDs = m_questions.listed.mid(0, 2);
        note("updateAlbum", m_library.updateAlbum(&changed), describe(changed));
        changed.id = 0xffffff;
        note("updateAlbum", m_library.updateAlbum(&changed), describe(changed));
        note("rmAlbum", m_library.rmAlbum(m_questions.removed), "");
        note("rmAlbum", m_library.rmAlbum(0xffffff), "");
        photo(added.id);
        images(added.id);
        album(trip.id);
    }

    const Lines &answers() const { return m_answers; }

    /// Whether all that was served is still what it was.
    bool keptAnswers() const
    {
        for (const Kept &kept : m_kept) {
            if (kept.now() != kept.served)
                return false;
        }
        return true;
    }

private:
    // A record that stays with the host, and how it looked when it was served.
    struct Kept {
        std::function<std::string()> now;
        std::string served;
    };

    void note(const std::string &operation, int status, const std::string &content)
    {
        m_answers.push_back(operation + " -> " + std::to_string(status) + ' ' + content);
    }

    photoItem &serve(const photoItem &item) { return *m_photos.insert(m_photos.end(), item); }
    albumItem &serve(const albumItem &item) { return *m_albums.insert(m_albums.end(), item); }

    template <class Print>
    void keep(const Print &print)
    {
        m_kept.push_back({print, print()});
    }

    void photo(quint64 key)
    {
        photoItem &item = serve(photoItem());
        const int status = m_library.getPhoto(key, &item);
        note("getPhoto " + std::to_string(key), status, describe(item));
        keep([&item] { return describe(item); });
    }

    void images(quint64 key)
    {
        QByteArray &small = *m_images.insert(m_images.end(), QByteArray("before"));
        QByteArray &large = *m_images.insert(m_images.end(), QByteArray("before"));
        const int status = m_library.getPhotoThumbnail(key, small);
        note("getPhotoThumbnail " + std::to_string(key), status, bytes(small));
        note("getSourcePhoto", m_library.getSourcePhoto(key, large), bytes(large));
        keep([&small] { return bytes(small); });
        keep([&large] { return bytes(large); });
    }

    void album(quint64 key)
    {
        albumItem &item = serve(albumItem());
        const int status = m_library.getAlbum(key, &item);
        note("getAlbum " + std::to_string(key), status, describe(item));
        keep([&item] { return describe(item); });
    }

    photo_manager_int &m_library;
    const Questions &m_questions;
    std::list<photoItem> m_photos;
    std::list<albumItem> m_albums;
    std::list<QByteArray> m_images;
    std::vector<Kept> m_kept;
    Lines m_answers;
};

/// The ways in which `line`, a call as the host records it, can go wrong. None for a call
/// without a result.
std::vector<CallFault> waysToFail(const std::string &line);

/// How a call of `operation` fails when the device, or the disk, is no longer there.
CallFault refusal(const std::string &operation);

/// The name in front of the bracket of a recorded call.
inline std::string operationOf(const std::string &line)
{
    return line.substr(0, line.find('('));
}

} // namespace story

#endif // PHOTOLIB_TESTS_SUPPORT_LIBRARY_STORY_H
