#include "support/album_expectation.h"

#include <algorithm>
#include <functional>
#include <map>

namespace {

using Keys = std::vector<quint64>;

bool contains(const Keys &keys, quint64 key)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// A condition on names like "Z_26ASSETS"; similar ones have letters behind the number.
std::string numbered(const std::string &end)
{
    return "name glob 'Z_[0-9]*" + end + "' and name not glob 'Z_*[^0-9]*" + end + "'";
}

// The albums of a device that count, shown or not, and what is in them.
class DeviceAlbums
{
public:
    explicit DeviceAlbums(const DeviceSql &database) : m_database(database)
    {
        const bool hasTrash = database.hasColumn("ZGENERICALBUM", "ZTRASHEDSTATE");
        m_counted = std::string("(ZKIND = 2 or ZKIND between 1000 and 1599)") +
                    (hasTrash ? " and ifnull(ZTRASHEDSTATE, 0) <> 1" : "");
        m_table = database.rows("select name from sqlite_master where type = 'table' and " +
                                numbered("ASSETS"))[0][0];
        m_album = column("ALBUMS");
        m_asset = column("ASSETS");
    }

    std::vector<SqlTexts> rows() const
    {
        return m_database.rows("select Z_PK, ZKIND, ifnull(ZTITLE, ''),"
                               " lower(hex(cast(ZUUID as blob))) from ZGENERICALBUM where " +
                               m_counted + " order by Z_PK");
    }

    bool hasCameraRoll() const
    {
        return !m_database.rows("select 1 from ZGENERICALBUM where ZKIND = 1000").empty();
    }

    // In their order; among them may be keys of no asset.
    Keys membersOf(const std::string &album) const
    {
        return keys("where " + m_album + " = " + album + " order by rowid");
    }

    Keys membersOfAny() const { return keys("where " + m_album + " in " + albumsWhere("1")); }

    // What albums hold that are no Camera Roll, and no Camera Roll holds.
    Keys membersOutsideCameraRoll() const
    {
        const std::string rolls = "(select Z_PK from ZGENERICALBUM where ZKIND = 1000"
                                  " order by Z_PK limit 1)";
        return keys("where " + m_album + " in " + albumsWhere("ZKIND <> 1000") + " and " + m_asset +
                    " not in (select " + m_asset + " from " + m_table + " where " + m_album +
                    " in " + rolls + ") order by " + m_album + ", rowid");
    }

private:
    std::string column(const std::string &end) const
    {
        return m_database.rows("select name from pragma_table_info('" + m_table + "') where " +
                               numbered(end))[0][0];
    }

    std::string albumsWhere(const std::string &condition) const
    {
        return "(select Z_PK from ZGENERICALBUM where " + m_counted + " and " + condition + ")";
    }

    Keys keys(const std::string &rest) const
    {
        Keys keys;
        for (const auto &row :
             m_database.rows("select " + m_asset + " from " + m_table + " " + rest))
            keys.push_back(std::stoull(row[0]));
        return keys;
    }

    const DeviceSql &m_database;
    std::string m_counted;
    std::string m_table;
    std::string m_album;
    std::string m_asset;
};

Keys keysWhere(const std::vector<ExpectedMember> &assets,
               const std::function<bool(const ExpectedMember &)> &isWanted)
{
    Keys keys;
    for (const ExpectedMember &asset : assets) {
        if (isWanted(asset))
            keys.push_back(asset.id);
    }
    return keys;
}

Keys firstOccurrences(const Keys &keys)
{
    Keys result;
    for (const quint64 key : keys) {
        if (!contains(result, key))
            result.push_back(key);
    }
    return result;
}

// A device without a Camera Roll gets one, of the camera's pictures that are in no album.
// The photo library has the rest of what is in no album.
std::vector<ExpectedAlbum> ownAlbums(const DeviceAlbums &device,
                                     const std::vector<ExpectedMember> &assets)
{
    const Keys inAlbums = device.membersOfAny();
    const bool makesRoll = !device.hasCameraRoll();
    Keys roll;
    Keys library = firstOccurrences(device.membersOutsideCameraRoll());
    for (const ExpectedMember &asset : assets) {
        if (!contains(inAlbums, asset.id))
            (makesRoll && asset.isInCameraFolder ? roll : library).push_back(asset.id);
    }
    std::vector<ExpectedAlbum> albums;
    if (makesRoll)
        albums.push_back({1000, "", "Camera Roll", 1, roll});
    albums.push_back({0xffffff, std::string(30, '0') + "64", "Photo Library", 5, library});
    albums.push_back({0xfffffe, "", "Panorama", 2,
                      keysWhere(assets, [](const auto &asset) { return asset.isPanorama; })});
    albums.push_back({0xfffffd, "", "Video", 3,
                      keysWhere(assets, [](const auto &asset) { return asset.isVideo; })});
    return albums;
}

} // namespace

std::vector<ExpectedAlbum> expectedAlbums(const DeviceSql &database,
                                          const std::vector<ExpectedMember> &assets)
{
    struct Kind {
        int type;
        const char *name; // of an album without a title
    };
    const std::map<std::string, Kind> shown = {
        {"2", {4, "Album in Device"}}, {"1000", {1, "Camera Roll"}}, {"1550", {6, "Cus Album"}}};
    const DeviceAlbums device(database);
    const Keys known = keysWhere(assets, [](const auto &) { return true; });
    std::vector<ExpectedAlbum> albums = ownAlbums(device, assets);
    for (const auto &row : device.rows()) {
        const auto kind = shown.find(row[1]);
        if (kind == shown.end())
            continue;
        Keys photos = device.membersOf(row[0]);
        photos.erase(std::remove_if(photos.begin(), photos.end(),
                                    [&](quint64 key) { return !contains(known, key); }),
                     photos.end());
        const std::string name = row[2].empty() ? kind->second.name : row[2];
        albums.push_back({std::stoull(row[0]), row[3], name, kind->second.type, photos});
    }
    return albums;
}
