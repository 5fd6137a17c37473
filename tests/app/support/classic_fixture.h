#ifndef PHOTOLIB_TESTS_APP_CLASSIC_FIXTURE_H
#define PHOTOLIB_TESTS_APP_CLASSIC_FIXTURE_H

#include "support/photo_database_bytes.h"
#include "support/program_fixture.h"

#include <QColor>
#include <QMap>
#include <QSize>
#include <QtEndian>

/// Runs of the program on a classic iPod that is made by hand, in a time zone that does not
/// move its dates.
class ClassicProgramTest : public ProgramTest
{
protected:
    // Formats of little-endian 5-6-5 pixels, with no padding.
    static constexpr int iconFormat = 1036;   // 50 x 41, 4100 bytes
    static constexpr int screenFormat = 1024; // 320 x 240, 153600 bytes

    ClassicProgramTest() { m_setup.environment.append(qMakePair(QString("TZ"), QString("UTC"))); }

    /// Adds a photo that is taken at `taken`, in seconds since 1970, without any picture.
    ClassicPhoto &addPhoto(quint32 id, quint32 taken = 0)
    {
        constexpr quint32 from1904To1970 = 2082844800;
        ClassicPhoto photo;
        photo.id = id;
        photo.taken = taken == 0 ? 0 : taken + from1904To1970;
        m_library.photos.append(photo);
        return m_library.photos.last();
    }

    /// Stores a picture of one colour, whose parts are 0 or 255, for the photo.
    void store(ClassicPhoto &photo, int format, const QColor &color)
    {
        const QSize size = format == iconFormat ? QSize(50, 41) : QSize(320, 240);
        const int pixel =
            (color.red() ? 0xf800 : 0) | (color.green() ? 0x07e0 : 0) | (color.blue() ? 0x001f : 0);
        const QByteArray bytes = QByteArray()
                                     .append(char(pixel & 0xff))
                                     .append(char(pixel >> 8))
                                     .repeated(size.width() * size.height());
        storeBytes(photo, format, size, bytes);
    }

    /// Stores any bytes as a picture in the format, behind the others in the format's file.
    void storeBytes(ClassicPhoto &photo, int format, const QSize &size, const QByteArray &bytes)
    {
        const QString name = QStringLiteral("F%1_1.ithmb").arg(format);
        QByteArray &file = m_pictureFiles[name.toUtf8()];
        StoredPicture variant;
        variant.formatId = format;
        variant.offset = file.size();
        variant.size = bytes.size();
        variant.fileName = QStringLiteral(":Thumbs:") + name;
        variant.width = size.width();
        variant.height = size.height();
        photo.variants.append(variant);
        file += bytes;
    }

    /// Names the photo's full-resolution file and, unless `content` is null, writes it.
    void addOriginal(ClassicPhoto &photo, const QString &name, const QByteArray &content)
    {
        photo.originalName = QStringLiteral(":Full Resolution:2005:08:06:") + name;
        if (!content.isNull())
            m_scratch.write(originalsFolder + name.toUtf8(), content);
    }

    void addAlbum(quint32 id, const QString &name, const QList<quint32> &photos)
    {
        ClassicAlbum album;
        album.id = id;
        album.name = name;
        album.type = m_library.albums.isEmpty() ? 1 : 2;
        album.photoIDs = photos;
        m_library.albums.append(album);
    }

    void writeDevice()
    {
        m_scratch.write("device/Photos/Photo Database", photoDatabaseBytes(m_library));
        for (auto file = m_pictureFiles.begin(); file != m_pictureFiles.end(); ++file)
            m_scratch.write("device/Photos/Thumbs/" + file.key(), file.value());
    }

    /// Three photos: one with everything, one without an original and a date, one whose
    /// original is missing and that has one picture only. Both formats, two albums.
    void writeThreePhotos()
    {
        ClassicPhoto &first = addPhoto(100, 1123323630); // 2005-08-06 10:20:30
        store(first, iconFormat, Qt::red);
        store(first, screenFormat, Qt::red);
        addOriginal(first, "IMG_0041.JPG", "original");
        ClassicPhoto &second = addPhoto(101);
        store(second, screenFormat, Qt::green);
        store(second, iconFormat, Qt::green);
        ClassicPhoto &third = addPhoto(104, 1136073600); // 2006-01-01 00:00:00
        store(third, screenFormat, Qt::blue);
        addOriginal(third, "IMG_0042.JPG", QByteArray());
        addAlbum(1, "Library", {100, 101, 104});
        addAlbum(2, QString::fromUtf8("Grün \x1b[2J"), {104, 100});
        writeDevice();
    }

    static constexpr char originalsFolder[] = "device/Photos/Full Resolution/2005/08/06/";

    ClassicLibrary m_library;
    QMap<QByteArray, QByteArray> m_pictureFiles; ///< contents by name, in the folder Thumbs
};

#endif // PHOTOLIB_TESTS_APP_CLASSIC_FIXTURE_H
