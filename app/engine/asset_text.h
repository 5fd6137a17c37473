#ifndef PHOTOLIB_ENGINE_ASSET_TEXT_H
#define PHOTOLIB_ENGINE_ASSET_TEXT_H

#include "catalog/asset.h"

#include <QString>
#include <QStringList>

/// A text of the library for people: safe to show.
QString shownText(const QByteArray &text);

/// "Live Photo", say.
QString typeText(AssetType type);

/// The types of `asset` in alphabetical order.
QStringList typeTexts(AssetTypes types);

/// Where it comes from: "iCloud", say.
QString sourceText(AssetSource source);

#endif // PHOTOLIB_ENGINE_ASSET_TEXT_H
