#include "tools/ovsel/tree.hpp"

#include <fmt/format.h>

#include "tools/ovsel/branches.hpp"
#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"

namespace tool {
namespace {

/// One line of the drawing: a file, a special folder with contents of its own, or a plain sub-folder.
struct Entry {
    ustring name;
    Style style;
    ovDir folder;
    bool isFolder;
};

/// In the order of the drawing: what has a name of its own first, what only leads on last.
std::vector<Entry> EntriesOf(const Contents& contents) {
    std::vector<Entry> entries;
    const auto add = [&](const ovDir& dir, Style style) {
        entries.push_back({ovGetDirName(dir), style, dir, true});
    };
    for (const ustring& file : contents.files)
        entries.push_back({file, Style::File, ovDir(), false});
    for (const ovDir& package : contents.packages)
        add(package, Style::Package);
    for (const ovDir& classFolder : contents.classes)
        add(classFolder, Style::Class);
    if (contents.privateFolder != ovDir())
        add(contents.privateFolder, Style::Private);
    for (const ustring& subFolder : contents.subFolders)
        entries.push_back({subFolder, Style::Faint, ovDir(), true});
    return entries;
}

/// Walks one folder of the path and writes while it walks, so that the first lines of a long path come at
/// once. JSON is one document and has to be put together first.
class TreeWriter {
  public:
    TreeWriter(const Options& options, const Session& session, Output& output)
        : m_session(session),
          m_output(output),
          m_branches(Branches::Of(output.HasBoxes())),
          m_depth(options.depth.value_or(~0U)) {}

    void Draw(const ovDir& dir, const std::string& heading) {
        if (m_output.IsNul())
            m_output.WriteRecord(m_output.InForm(ovGetDirName(dir)));
        else
            m_output.Write(m_output.Paint(Style::Heading, Shown(m_output.InForm(ovGetDirName(dir)))) +
                           heading + "\n");
        DrawBelow(dir, "", 0);
    }

    /// Where --depth cuts, the fields are missing rather than empty: nothing is known of them.
    Json Describe(const ovDir& dir, unsigned level) const {
        Json json{{"path", JsonName(m_output.InForm(ovGetDirName(dir)))}};
        if (level == m_depth)
            return json;
        const Contents contents = ReadContents(m_session, dir);
        json["files"] = Names(contents.files);
        json["packages"] = Children(contents.packages, level + 1);
        json["classes"] = Children(contents.classes, level + 1);
        json["private"] =
            contents.privateFolder == ovDir() ? Json() : Describe(contents.privateFolder, level + 1);
        json["subfolders"] = Names(contents.subFolders);
        return json;
    }

  private:
    /// As deep as the folders are nested, which the length of a path name limits.
    void DrawBelow(const ovDir& dir, const std::string& indent, unsigned level) {
        if (level == m_depth)
            return;
        const std::vector<Entry> entries = EntriesOf(ReadContents(m_session, dir));
        for (const Entry& entry : entries) {
            const bool isLast = &entry == &entries.back();
            WriteEntry(entry, indent + (isLast ? m_branches.last : m_branches.middle));
            if (entry.folder != ovDir())
                DrawBelow(entry.folder, indent + (isLast ? m_branches.blank : m_branches.through), level + 1);
        }
    }

    void WriteEntry(const Entry& entry, const std::string& branch) {
        const std::string name = m_output.InForm(entry.name);
        if (m_output.IsNul())
            return m_output.WriteRecord(name);
        // In the system's form `\\` separates, in POSIX paths no name on the path holds one.
        const std::string leaf = name.substr(name.find_last_of("/\\") + 1);
        m_output.Write(branch + m_output.Paint(entry.style, Shown(leaf)) + (entry.isFolder ? "/" : "") +
                       "\n");
    }

    Json Names(const std::vector<ustring>& names) const {
        Json json = Json::array();
        for (const ustring& name : names)
            json.push_back(JsonName(m_output.InForm(name)));
        return json;
    }

    Json Children(const std::vector<ovDir>& dirs, unsigned level) const {
        Json json = Json::array();
        for (const ovDir& dir : dirs)
            json.push_back(Describe(dir, level));
        return json;
    }

    const Session& m_session;
    Output& m_output;
    Branches m_branches;
    unsigned m_depth;
};

} // namespace

int RunTree(const Options& options, Session& session, Output& output) {
    TreeWriter writer(options, session, output);
    Json folders = Json::array();
    for (std::size_t position = 0; position < session.Folders().size(); ++position) {
        const ovDir& dir = session.Folders()[position];
        const bool isHidden = position == 0 && ovIsCWDHidden(session.Path());
        // Hidden it holds nothing, and drawing it would say that the folder is empty.
        if (isHidden)
            continue;
        if (!output.IsJson()) {
            writer.Draw(dir, position == 0 ? "  (current directory)"
                                           : fmt::format("  (path position {})", position));
            continue;
        }
        Json json = writer.Describe(dir, 0);
        json["kind"] = position == 0 ? "current_directory" : "path";
        json["position"] = position;
        folders.push_back(std::move(json));
    }
    if (output.IsJson())
        output.WriteJson({{"schema", 1}, {"command", "tree"}, {"folders", std::move(folders)}});
    return ExitFound;
}

} // namespace tool
