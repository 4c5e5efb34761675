#include "tools/ovsel/meanings.hpp"

#include <set>
#include <utility>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/contents.hpp"

namespace tool {
namespace {

bool IsQualified(const std::string& name) { return name.find_first_of("/\\") != std::string::npos; }

/// An empty name stands for every file that is visible.
Search FindVisible(const Session& session, const ustring& name) {
    return Search(ovCreateDirnameVisibleSearchIterator(session.Path(), session.AskerFolderName(), name,
                                                       session.Extensions(), ovCaseOfPath));
}

} // namespace

Meanings::Meanings(const Session& session, const std::vector<std::string>& names)
    : m_session(session), m_names(names), m_files(LookUpAll()) {}

std::vector<Meanings::Change> Meanings::Update() {
    const Files before = std::exchange(m_files, LookUpAll());
    std::vector<Change> changes;
    auto was = before.begin();
    auto now = m_files.begin();
    // Both are sorted by name: whichever is behind has no partner.
    while (was != before.end() || now != m_files.end()) {
        if (now == m_files.end() || (was != before.end() && was->first < now->first)) {
            changes.push_back(MakeChange(was->first, &was->second, nullptr));
            ++was;
        } else if (was == before.end() || now->first < was->first) {
            changes.push_back(MakeChange(now->first, nullptr, &now->second));
            ++now;
        } else {
            if (was->second.name != now->second.name)
                changes.push_back(MakeChange(now->first, &was->second, &now->second));
            ++was;
            ++now;
        }
    }
    return changes;
}

Meanings::Files Meanings::LookUpAll() const {
    Files files;
    for (const std::string& name : m_names.empty() ? AllNames() : m_names)
        if (auto file = FindVisible(m_session, fl::i18n::to_ustring(name.c_str())).NextFile())
            files.emplace(name, std::move(*file));
    return files;
}

std::vector<std::string> Meanings::AllNames() const {
    std::set<std::string> names;
    for (Search search = FindVisible(m_session, ustring()); auto file = search.NextFile();)
        names.insert(LeafOf(file->name, false));
    names.erase(std::string()); // a file with an extension only
    return {names.begin(), names.end()};
}

Meanings::Change Meanings::MakeChange(const std::string& name, const Search::File* was,
                                      const Search::File* now) const {
    Change change{name, std::nullopt, std::nullopt, std::nullopt};
    if (was != nullptr)
        change.was = was->name;
    if (now != nullptr) {
        change.now = now->name;
        change.reason = Explain(m_session, now->folder, !IsQualified(name));
    }
    return change;
}

} // namespace tool
