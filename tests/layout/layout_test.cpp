// Who includes whom: the rooms of the project against the arrows between them, and the files
// against circles.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;
using Arrows = std::map<std::string, Names>;

// A room is a folder. It may include its own files and those of the rooms behind the arrow.
const Arrows &allowedArrows()
{
    static const Arrows arrows = {
        {"src/host", {}},
        {"src/sqlite", {}},
        {"src/boundary", {"src/host", "src/ios", "src/classic"}}, // makes the library of a device
        {"src/cameradb", {"src/sqlite", "src/host"}},
        {"src/ios", {"src/cameradb", "src/boundary", "src/host"}},
        {"src/classic", {"src/boundary", "src/host"}},
        {"app/base", {}},
        {"app/devices", {"app/base"}},
        {"app/classic", {"app/devices", "app/base"}},
        {"app/host", {"src/host", "src/boundary", "app/classic", "app/devices", "app/base"}},
        {"app/sample", {}},
        {"app/catalog", {"app/base", "src/sqlite"}},
        {"app/engine",
         {"app/catalog", "app/host", "app/classic", "app/devices", "app/sample", "app/base",
          "src/boundary", "src/sqlite"}},
        {"app/cli", {"app/engine", "app/catalog", "app/base", "app/sample"}},
    };
    return arrows;
}

std::string contentOf(const fs::path &path)
{
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The files that are included, as they are written.
// Each begins with the quote or bracket that it stands in.
std::vector<std::string> includesIn(const std::string &text)
{
    static const std::regex pattern("(?:^|\n)[ \t]*#[ \t]*include[ \t]*([\"<][^\">]+)[\">]");
    std::vector<std::string> names;
    for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at)
        names.push_back((*at)[1]);
    return names;
}

// Which of our files an #include in `room` means: app's come before those of src, as in the
// compiler's list. Empty for none of ours.
std::string fileMeant(const std::string &room, const std::string &name)
{
    const fs::path root = PHOTOLIB_ROOT;
    Names tops = {"src"};
    if (room.compare(0, 4, "app/") == 0)
        tops.insert("app");
    for (const std::string &top : tops) {
        if (fs::is_regular_file(root / top / name))
            return top + '/' + name;
    }
    return std::string();
}

std::string roomOf(const std::string &file)
{
    return fs::path(file).parent_path().generic_string();
}

// The #include lines of a file, as files of ours.
struct SourceFile {
    std::string room;
    Names includes;
    std::vector<std::string> unknown;
};

// By the file's name below the root.
const std::map<std::string, SourceFile> &sources()
{
    static const auto read = [] {
        std::map<std::string, SourceFile> files;
        const fs::path root = PHOTOLIB_ROOT;
        for (const char *top : {"src", "app"}) {
            for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root / top)) {
                const std::string extension = entry.path().extension().string();
                if (extension != ".h" && extension != ".cpp")
                    continue;
                const std::string name = entry.path().lexically_relative(root).generic_string();
                SourceFile &file = files[name];
                file.room = roomOf(name);
                for (const std::string &include : includesIn(contentOf(entry.path()))) {
                    const std::string meant = fileMeant(file.room, include.substr(1));
                    if (!meant.empty())
                        file.includes.insert(meant);
                    else if (include[0] == '"')
                        file.unknown.push_back(include);
                }
            }
        }
        return files;
    }();
    return read;
}

// A header and its source are one thing.
std::string unitOf(const std::string &file)
{
    return fs::path(file).replace_extension().generic_string();
}

// The circle that the arrows from `start` come back by; empty where there is none.
std::string circleIn(const Arrows &arrows)
{
    enum class State { New, Entered, Left };
    std::map<std::string, State> states;
    std::string circle;
    const std::function<bool(const std::string &)> enter = [&](const std::string &name) {
        if (states[name] != State::New)
            return states[name] == State::Entered;
        states[name] = State::Entered;
        const auto found = arrows.find(name);
        for (const std::string &next : found == arrows.end() ? Names() : found->second) {
            if (enter(next)) {
                circle = circle.empty() ? name + " -> " + next : name + " -> " + circle;
                return true;
            }
        }
        states[name] = State::Left;
        return false;
    };
    for (const auto &[name, to] : arrows) {
        if (enter(name))
            return circle;
    }
    return circle;
}

// What a line "add_room(NAME TYPE photolib_A photolib_B)" links.
Arrows linkedRooms()
{
    const std::string text = contentOf(fs::path(PHOTOLIB_ROOT) / "app/CMakeLists.txt");
    const std::regex room("\nadd_room\\(([a-z]+) [A-Z]+([^)]*)\\)");
    const std::regex link("photolib_([a-z]+)");
    Arrows arrows;
    for (std::sregex_iterator at(text.begin(), text.end(), room), end; at != end; ++at) {
        Names &linked = arrows["app/" + (*at)[1].str()];
        const std::string links = (*at)[2];
        for (std::sregex_iterator each(links.begin(), links.end(), link); each != end; ++each) {
            const std::string name = (*each)[1];
            linked.insert(name == "sqlite" ? "src/sqlite" : "app/" + name);
        }
    }
    return arrows;
}

TEST(Layout, HasAnArrowForEachIncludeOfAnotherRoom)
{
    for (const auto &[name, file] : sources()) {
        if (file.room == "src" || file.room == "app")
            continue;
        const auto arrows = allowedArrows().find(file.room);
        ASSERT_NE(allowedArrows().end(), arrows) << name << " is in no known room";
        for (const std::string &include : file.includes) {
            const std::string room = roomOf(include);
            const bool isFree = room == file.room || room == "src";
            EXPECT_TRUE(isFree || arrows->second.count(room)) << name << " includes " << include;
        }
    }
}

TEST(Layout, KnowsEachFileThatIsIncludedInQuotes)
{
    for (const auto &[name, file] : sources()) {
        for (const std::string &unknown : file.unknown)
            ADD_FAILURE() << name << " includes \"" << unknown << "\", which is none of ours";
    }
}

TEST(Layout, LinksTheRoomsOfTheProgramByTheSameArrows)
{
    const Arrows linked = linkedRooms();
    int rooms = 0;
    for (const auto &[room, to] : allowedArrows()) {
        if (room.compare(0, 4, "app/") != 0)
            continue;
        ++rooms;
        Names expected = to;
        expected.erase("src/host"); // declarations only
        expected.erase("src/boundary");
        ASSERT_TRUE(linked.count(room)) << room;
        EXPECT_EQ(expected, linked.at(room)) << room;
    }
    EXPECT_EQ(rooms, static_cast<int>(linked.size()));
}

TEST(Layout, HasNoCircleOfFiles)
{
    Arrows units;
    for (const auto &[name, file] : sources()) {
        for (const std::string &include : file.includes) {
            if (unitOf(include) != unitOf(name))
                units[unitOf(name)].insert(unitOf(include));
        }
    }
    EXPECT_EQ("", circleIn(units));
}

TEST(Layout, HasNoCircleOfRoomsOfTheProgram)
{
    Arrows rooms;
    for (const auto &[room, to] : allowedArrows()) {
        if (room.compare(0, 4, "app/") == 0)
            rooms[room] = to;
    }
    EXPECT_EQ("", circleIn(rooms));
}

// The searches of this test itself: one that finds nothing would pass everything.
TEST(Layout, FindsIncludesAndCircles)
{
    EXPECT_EQ((std::vector<std::string>{"\"a/b.h", "<d.h", "\"c.h"}),
              includesIn("#include \"a/b.h\"\n#include <d.h>\n  # include \"c.h\"\n// #include\n"));
    EXPECT_EQ("app/host/device.h", fileMeant("app/cli", "host/device.h"));
    EXPECT_EQ("src/host/iipod.h", fileMeant("app/cli", "host/iipod.h"));
    EXPECT_EQ("", fileMeant("src/ios", "host/device.h"));
    EXPECT_GT(sources().size(), 200u);
    EXPECT_EQ("", circleIn({{"a", {"b", "c"}}, {"b", {"c"}}, {"c", {}}}));
    EXPECT_NE("", circleIn({{"a", {"b"}}, {"b", {"c"}}, {"c", {"b"}}}));
}

} // namespace
