#include "tools/ovsel/dirs.hpp"

#include <fmt/format.h>

#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"

namespace tool {
namespace {

/// The figures of one line. Special folders count at any depth, files and sub-folders only directly inside.
struct Counts {
    std::size_t files = 0;
    std::size_t classes = 0;
    std::size_t packages = 0;
    std::size_t privateFiles = 0;
    std::size_t subFolders = 0;

    Counts& operator+=(const Counts& other) {
        files += other.files;
        classes += other.classes;
        packages += other.packages;
        privateFiles += other.privateFiles;
        subFolders += other.subFolders;
        return *this;
    }
};

/// Counts what lies below a folder of the path, special folders at any depth included.
void CountBelow(const Session& session, const Contents& contents, Counts& counts) {
    counts.packages += contents.packages.size();
    counts.classes += contents.classes.size();
    if (contents.privateFolder != ovDir())
        counts.privateFiles += ReadContents(session, contents.privateFolder).files.size();
    for (const auto* children : {&contents.packages, &contents.classes})
        for (const ovDir& child : *children)
            CountBelow(session, ReadContents(session, child), counts);
}

Counts CountIn(const Session& session, const ovDir& dir) {
    const Contents contents = ReadContents(session, dir);
    Counts counts;
    counts.files = contents.files.size();
    counts.subFolders = contents.subFolders.size();
    CountBelow(session, contents, counts);
    return counts;
}

/// The names of the fields are promised in the help; the words of the table are not.
Json ToJson(const Counts& counts) {
    return {{"files", counts.files},
            {"classes", counts.classes},
            {"packages", counts.packages},
            {"private_files", counts.privateFiles},
            {"subfolders", counts.subFolders}};
}

/// The folder stands last, so that its length and odd characters cannot move a column.
std::string Line(const std::string& position, const char* kind, const Counts& counts,
                 const std::string& folder) {
    return fmt::format("{:>4}  {:<17} {:>7} {:>7} {:>8} {:>13} {:>11}  {}\n", position, kind, counts.files,
                       counts.classes, counts.packages, counts.privateFiles, counts.subFolders, folder);
}

} // namespace

int RunDirs(Session& session, Output& output) {
    const std::string head =
        fmt::format("{:>4}  {:<17} {:>7} {:>7} {:>8} {:>13} {:>11}  {}", "pos", "kind", "files", "classes",
                    "packages", "private files", "sub-folders", "folder");
    const bool isTable = !output.IsJson() && !output.IsNul();
    if (isTable)
        output.Write(output.Paint(Style::Heading, head) + "\n");
    Json folders = Json::array();
    Counts totals;
    for (std::size_t position = 0; position < session.Folders().size(); ++position) {
        const ovDir& dir = session.Folders()[position];
        const bool isHidden = position == 0 && ovIsCWDHidden(session.Path());
        const std::string name = output.InForm(ovGetDirName(dir));
        if (output.IsNul()) {
            // A script that takes these names for a path must not get a folder that plays no part in it.
            if (!isHidden)
                output.WriteRecord(name);
            continue;
        }
        const Counts counts = CountIn(session, dir);
        totals += counts;
        if (isTable) {
            // A hidden current directory keeps its line: that it is hidden may be what one is looking for.
            const char* kind = isHidden ? "hidden directory" : position == 0 ? "current directory" : "path";
            output.Write(Line(std::to_string(position), kind, counts, Shown(name)));
            continue;
        }
        Json json{{"path", JsonName(name)},
                  {"kind", position == 0 ? "current_directory" : "path"},
                  {"position", position},
                  {"hidden", isHidden}};
        json.update(ToJson(counts));
        folders.push_back(std::move(json));
    }
    if (isTable)
        output.Write(Line("", "total", totals, fmt::format("{} on the path", session.Folders().size() - 1)));
    if (output.IsJson())
        output.WriteJson(
            {{"schema", 1}, {"command", "dirs"}, {"folders", folders}, {"totals", ToJson(totals)}});
    return ExitFound;
}

} // namespace tool
