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
};

/// Tells where the files of a photo go, by a text with fields in braces:
/// "{taken:%Y}/{taken:%m}/{originalStem}{ext}".
class NameTemplate
{
public:
    static const char usual[]; ///< "{taken:%Y}/{taken:%m}/{originalStem}{ext}"

    /// Throws Error of the kind WrongUsage for an unknown field, a brace without its other half,
    /// and a text whose path would leave the folder or lie in its ".photolib".
    explicit NameTemplate(const QByteArray &text = usual);
    ~NameTemplate();

    NameTemplate(const NameTemplate &) = delete;
    NameTemplate &operator=(const NameTemplate &) = delete;

    /// The path for `values`.
    NamePath pathFor(const NameValues &values) const;

private:
    class Part;
    std::unique_ptr<Part> m_parts;
};

#endif // PHOTOLIB_ENGINE_NAME_TEMPLATE_H
