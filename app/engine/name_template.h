#ifndef PHOTOLIB_ENGINE_NAME_TEMPLATE_H
#define PHOTOLIB_ENGINE_NAME_TEMPLATE_H

#include "catalog/asset.h"

#include <QByteArray>

#include <memory>

/// What the fields of a template stand for, for one photo or video.
struct NameValues {
    const Asset *asset = nullptr;
    QByteArray fileName; ///< of the file to export, whose extension counts: "IMG_0001.JPG"
    QByteArray album;    ///< the title; empty without an album
    QByteArray folder;   ///< titles of the folders that the album lies in, "/" between them
    QByteArray device;   ///< the device's name
};

/// Where a file goes, below the folder that is exported to: base + extension. What belongs to it
/// gets the same base.
struct NamePath {
    QByteArray base;      ///< "2020/01/IMG_0001": safe names with "/" between them, none empty
    QByteArray extension; ///< ".JPG", or empty

    /// Whether the name of a folder was too long for a disk, and is only its start. The last name
    /// is never cut.
    bool wasCut = false;
};

/// Tells where the files of a photo go, by a text with fields in braces:
/// "{taken:%Y}/{taken:%m}/{originalStem}{ext}".
///
/// taken, modified and added are dates, "2019-07-27" or in the form that follows a colon, which is
/// one for strftime in C: taken by the clock where that was, as far as the library tells, the
/// others in UTC. name, stem and ext (".JPG") are of the file; originalName and originalStem of the
/// one that came to the library, or else of the file. id, uuid, kind ("photo" or "video"), album,
/// folder and device are plain.
///
/// "{album|folder|other {id}}" stands for the first that is not empty: a field, or a text that may
/// have fields. "{{" and "}}" stand for braces; inside of a field only in pairs.
///
/// A "/" in the text makes folders, and so does that between the titles of `folder`; one in any
/// other value does not. A folder whose name is empty is left out, and a file whose name is empty
/// has its own.
class NameTemplate
{
public:
    static const char usual[]; ///< "{taken:%Y}/{taken:%m}/{originalStem}{ext}"

    /// Throws Error of the kind WrongUsage for an unknown field, a form of dates that strftime does
    /// not know, a brace without its other half, an empty text, and one whose path would leave the
    /// folder or lie in its ".photolib".
    explicit NameTemplate(const QByteArray &text = usual);
    ~NameTemplate();

    NameTemplate(const NameTemplate &) = delete;
    NameTemplate &operator=(const NameTemplate &) = delete;

    /// The path for `values`, which have an asset.
    NamePath pathFor(const NameValues &values) const;

private:
    struct Text;
    class Parser;
    std::unique_ptr<const Text> m_text;
};

#endif // PHOTOLIB_ENGINE_NAME_TEMPLATE_H
