// Writes a classic iPod's folder with libgpod: `ipod_writer MODEL FOLDER <plan.json`.
//
// The plan: {"photos": [{"file": PATH, "created": SECONDS, "digitized": SECONDS}],
// "albums": [{"name": NAME, "photos": [INDEX]}]}, with seconds since 1970 and indices into the
// photos. Prints what libgpod gave them: {"photos": [ID], "albums": [{"id", "name", "type",
// "photos": [ID]}]}. Dates are stored in the time zone of the environment.
//
// A program of its own because libgpod leaks, which the tests' sanitizers would report.

#include <gpod/itdb.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct PhotoDatabaseFree {
    void operator()(Itdb_PhotoDB *database) const { itdb_photodb_free(database); }
};
using PhotoDatabase = std::unique_ptr<Itdb_PhotoDB, PhotoDatabaseFree>;

/// The error that a call of libgpod fills in.
class CallError
{
public:
    CallError() = default;
    ~CallError() { g_clear_error(&m_error); }

    CallError(const CallError &) = delete;
    CallError &operator=(const CallError &) = delete;

    GError **out() { return &m_error; }

    /// Throws it when `succeeded` is false; `task` is what failed.
    void check(bool succeeded, const std::string &task) const
    {
        if (!succeeded)
            throw std::runtime_error(task + ": " + (m_error ? m_error->message : "failed"));
    }

private:
    GError *m_error = nullptr;
};

void makeFolder(const std::string &path)
{
    CallError().check(g_mkdir_with_parents(path.c_str(), 0700) == 0, path);
}

/// libgpod takes the formats of the pictures from the model that this file names.
void writeModel(const std::string &device, const std::string &model)
{
    const std::string folder = device + "/iPod_Control/Device";
    makeFolder(folder);
    std::ofstream file(folder + "/SysInfo");
    // A letter stands before the model's number.
    file << "ModelNumStr: x" << model << '\n';
    file.close();
    CallError().check(!file.fail(), folder + "/SysInfo");
}

Itdb_Artwork *addPhoto(Itdb_PhotoDB *database, const nlohmann::json &plan)
{
    constexpr gint atEnd = -1;
    constexpr gint unrotated = 0;
    const auto file = plan.at("file").get<std::string>();
    CallError error;
    Itdb_Artwork *photo =
        itdb_photodb_add_photo(database, file.c_str(), atEnd, unrotated, error.out());
    error.check(photo, file);
    photo->creation_date = plan.value("created", time_t(0));
    photo->digitized_date = plan.value("digitized", time_t(0));
    return photo;
}

void addAlbum(Itdb_PhotoDB *database, const nlohmann::json &plan,
              const std::vector<Itdb_Artwork *> &photos)
{
    constexpr gint atEnd = -1;
    const auto name = plan.at("name").get<std::string>();
    Itdb_PhotoAlbum *album = itdb_photodb_photoalbum_create(database, name.c_str(), atEnd);
    for (const auto &index : plan.at("photos"))
        itdb_photodb_photoalbum_add_photo(database, album, photos.at(index.get<size_t>()), atEnd);
}

nlohmann::json idsOf(const GList *photos)
{
    auto ids = nlohmann::json::array();
    for (; photos; photos = photos->next)
        ids.push_back(static_cast<const Itdb_Artwork *>(photos->data)->id);
    return ids;
}

nlohmann::json described(const Itdb_PhotoDB *database)
{
    auto albums = nlohmann::json::array();
    for (const GList *each = database->photoalbums; each; each = each->next) {
        const auto *album = static_cast<const Itdb_PhotoAlbum *>(each->data);
        albums.push_back({{"id", album->album_id},
                          {"name", album->name ? album->name : ""},
                          {"type", album->album_type},
                          {"photos", idsOf(album->members)}});
    }
    return {{"photos", idsOf(database->photos)}, {"albums", albums}};
}

nlohmann::json writeIpod(const std::string &model, const std::string &device,
                         const nlohmann::json &plan)
{
    writeModel(device, model);
    makeFolder(device + "/Photos/Thumbs");
    const PhotoDatabase database(itdb_photodb_create(device.c_str()));
    std::vector<Itdb_Artwork *> photos;
    for (const auto &photo : plan.at("photos"))
        photos.push_back(addPhoto(database.get(), photo));
    for (const auto &album : plan.at("albums"))
        addAlbum(database.get(), album, photos);
    CallError error;
    error.check(itdb_photodb_write(database.get(), error.out()), device);
    return described(database.get());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::cerr << "usage: ipod_writer MODEL FOLDER <PLAN\n";
        return 2;
    }
    try {
        std::cout << writeIpod(argv[1], argv[2], nlohmann::json::parse(std::cin)) << '\n';
        return 0;
    } catch (const std::exception &error) {
        std::cerr << "ipod_writer: " << error.what() << '\n';
        return 1;
    }
}
