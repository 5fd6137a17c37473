#ifndef PHOTOLIB_ENGINE_CLASSIC_CATALOG_H
#define PHOTOLIB_ENGINE_CLASSIC_CATALOG_H

#include "catalog/catalog.h"

class ClassicIpod;
class photo_manager_int;

/// What a classic iPod's parsed library tells, in the form in which other libraries are listed. The
/// name and path are those of the full-resolution file, the size is that of the stored pictures,
/// and the dimensions are those of the largest one. The iPod's clock has no time zone: `taken` is
/// what it showed, as if in UTC.
Catalog classicCatalog(photo_manager_int &library, const ClassicIpod &iPod);

#endif // PHOTOLIB_ENGINE_CLASSIC_CATALOG_H
