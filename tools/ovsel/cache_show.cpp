#include "tools/ovsel/cache_show.hpp"

#include <algorithm>

#include <fmt/format.h>

#include "tools/ovsel/branches.hpp"
#include "tools/ovsel/cache_file.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/path_entries.hpp"

namespace tool {
namespace {

Style StyleOf(const CacheFolder& folder) {
    const std::string_view leaf = LeafOf(folder);
    return leaf.starts_with('@') ? Style::Class : leaf.starts_with('+') ? Style::Package : Style::Private;
}

/// Names in a cache are relative, so their form is a matter of separators alone.
std::string InForm(std::string name, Form form) {
    if (form == Form::System)
        std::replace(name.begin(), name.end(), '/', '\\');
    return name;
}

class Drawing {
  public:
    Drawing(const Options& options, Output& output)
        : m_form(options.form), m_branches(Branches::Of(output.HasBoxes())), m_output(output) {}

    void Draw(const CacheFolder& folder) {
        m_output.Write(m_output.Paint(Style::Heading, InForm(folder.name, m_form)) + "\n");
        DrawBelow(folder, "");
    }

    /// All names, each with those of the folders around it.
    void List(const CacheFolder& folder) {
        m_output.WriteRecord(InForm(folder.name, m_form));
        for (const CacheFolder& child : folder.folders)
            List(child);
        for (const CacheEntry& entry : folder.entries)
            m_output.WriteRecord(InForm(folder.name + '/' + entry.name, m_form));
    }

  private:
    void DrawBelow(const CacheFolder& folder, const std::string& indent) {
        std::size_t left = folder.folders.size() + folder.entries.size();
        const auto write = [&](char letter, const std::string& name) {
            const char* branch = --left == 0 ? m_branches.last : m_branches.middle;
            m_output.Write(fmt::format("{}{}{} {}\n", indent, branch, letter, name));
        };
        for (const CacheFolder& child : folder.folders) {
            write('D', m_output.Paint(StyleOf(child), std::string(LeafOf(child))) + "/");
            DrawBelow(child, indent + (left == 0 ? m_branches.blank : m_branches.through));
        }
        for (const CacheEntry& entry : folder.entries)
            if (entry.letter == 'd')
                write('d', m_output.Paint(Style::Faint, entry.name) + "/");
            else
                write(entry.letter, m_output.Paint(Style::File, entry.name));
    }

    Form m_form;
    const Branches& m_branches;
    Output& m_output;
};

Json ToJson(const std::vector<CacheFolder>& folders, Form form) {
    Json list = Json::array();
    for (const CacheFolder& folder : folders) {
        Json entries = Json::array();
        for (const CacheEntry& entry : folder.entries)
            entries.push_back({{"letter", std::string(1, entry.letter)}, {"name", entry.name}});
        list.push_back({{"name", InForm(folder.name, form)},
                        {"folders", ToJson(folder.folders, form)},
                        {"entries", std::move(entries)}});
    }
    return list;
}

} // namespace

int RunCacheShow(const Options& options, Output& output) {
    const CacheFile cache = ReadCache(AbsolutePath(options.file), options.file);
    const CacheCounts counts = CountAll(cache.folders);
    if (output.IsJson()) {
        output.WriteJson({{"schema", 1},
                          {"command", "cache show"},
                          {"date", cache.date},
                          {"version", cache.version},
                          {"folders", ToJson(cache.folders, options.form)}});
        return ExitFound;
    }
    if (!output.IsNul())
        output.Write(fmt::format("path cache, version {}, written {}: {} folders, {} entries\n",
                                 cache.version, cache.date, counts.folders, counts.entries));
    Drawing drawing(options, output);
    for (const CacheFolder& folder : cache.folders)
        if (output.IsNul())
            drawing.List(folder);
        else
            drawing.Draw(folder);
    return ExitFound;
}

} // namespace tool
