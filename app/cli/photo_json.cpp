#include "cli/photo_json.h"

#include "cli/output.h"
#include "engine/asset_json.h"
#include "engine/json_writer.h"

void writePhotosAsJson(const std::vector<const Asset *> &photos, Output &output)
{
    JsonWriter json;
    output.write("{\"photos\": [");
    for (const Asset *photo : photos) {
        output.write(photo == photos.front() ? "\n" : ",\n");
        writeAsset(*photo, json);
        output.write(json.taken());
    }
    output.write(photos.empty() ? "]}\n" : "\n]}\n");
}
