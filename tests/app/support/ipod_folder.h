#ifndef PHOTOLIB_TESTS_APP_IPOD_FOLDER_H
#define PHOTOLIB_TESTS_APP_IPOD_FOLDER_H

#include "support/device_folder.h"

#include <QImage>
#include <QList>
#include <QString>
#include <QVector>

/// What a classic iPod is to hold.
struct IpodPlan {
    struct Photo {
        QImage picture;
        qint64 created = 0; ///< seconds since 1970-01-01 UTC; 0 for none
    };
    struct Album {
        QString name;
        QVector<int> photos; ///< indices, in album order
    };

    QVector<Photo> photos;
    QVector<Album> albums;
};

/// What libgpod made of it.
struct WrittenIpod {
    struct Album {
        quint64 id = 0;
        QString name;
        int type = 0;
        QList<quint64> photoIDs;
    };

    QList<quint64> photoIDs; ///< in the order of the plan
    QVector<Album> albums;   ///< the library itself, which libgpod adds, and those of the plan
};

/// Writes a classic iPod of the model with the number `model`, such as "A446", into the new
/// folder `folder` of `scratch`. The device's clock is set to UTC. What does not work fails
/// the test.
WrittenIpod writeIpod(const ScratchFolder &scratch, const QByteArray &folder,
                      const QByteArray &model, const IpodPlan &plan);

#endif // PHOTOLIB_TESTS_APP_IPOD_FOLDER_H
