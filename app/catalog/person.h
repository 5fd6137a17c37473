#ifndef PHOTOLIB_CATALOG_PERSON_H
#define PHOTOLIB_CATALOG_PERSON_H

#include <QByteArray>

#include <vector>

/// Somebody whose face the library has found and a person has named.
struct Person {
    qint64 id = 0;              ///< the library's own number
    QByteArray uuid;            ///< as stored; null where there is none
    QByteArray name;            ///< the full name, in UTF-8; not empty
    std::vector<qint64> assets; ///< ids of the photos and videos that show the face, ascending
};

#endif // PHOTOLIB_CATALOG_PERSON_H
