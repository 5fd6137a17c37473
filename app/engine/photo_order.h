#ifndef PHOTOLIB_ENGINE_PHOTO_ORDER_H
#define PHOTOLIB_ENGINE_PHOTO_ORDER_H

#include "catalog/asset.h"

enum class PhotoOrder {
    Id,
    Taken,
    Modified,
    Size,
    Name, ///< of the file on the device, without regard to case at first
};

/// Sorts `photos`. What the library does not tell comes last, and ids decide among equals.
void sortPhotos(std::vector<const Asset *> *photos, PhotoOrder order);

/// Turns the order of `photos` round, which `sortPhotos` has put into `order`, if there is one.
/// What the library does not tell still comes last: who asks for the newest does not mean the
/// undated.
void reversePhotos(std::vector<const Asset *> *photos, std::optional<PhotoOrder> order);

#endif // PHOTOLIB_ENGINE_PHOTO_ORDER_H
