#ifndef PHOTOLIB_ENGINE_ASSET_JSON_H
#define PHOTOLIB_ENGINE_ASSET_JSON_H

class JsonWriter;
struct Asset;

/// Writes the object that docs/json.md describes for one photo or video.
void writeAsset(const Asset &asset, JsonWriter &json);

#endif // PHOTOLIB_ENGINE_ASSET_JSON_H
