#ifndef PHOTOLIB_ENGINE_ALBUM_CHOICE_H
#define PHOTOLIB_ENGINE_ALBUM_CHOICE_H

#include "catalog/catalog.h"

#include <string>

/// The album or folder that `text` names: by its id, else by its title, else by its title behind
/// those of the folders that it lies in, "FOLDER/TITLE", of which outer ones may be left out. What
/// is written in just this way goes before what differs in upper and lower case. Throws Error when
/// there is none, or several, which it lists; `device` names the device in it.
const Album &chosenAlbum(const Catalog &catalog, const std::string &text,
                         const std::string &device);

#endif // PHOTOLIB_ENGINE_ALBUM_CHOICE_H
