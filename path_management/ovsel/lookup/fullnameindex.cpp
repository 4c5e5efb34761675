#include "ovsel/lookup/fullnameindex.hpp"

#include <algorithm>

#include "ovsel/lookup/namekey.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/nameequality.hpp"

void FullNameIndex::Enter(PathDirItemInfo* record) {
    const NameKey key(record->GetStoredFullName());
    m_records.emplace(key.GetHash(), record);
    m_beyondAscii += key.IsAscii() ? 0 : 1;
}

void FullNameIndex::Leave(PathDirItemInfo* record) {
    const NameKey::Digest key(record->GetStoredFullName());
    const auto [begin, end] = m_records.equal_range(key.hash);
    const auto found = std::find_if(begin, end, [&](const auto& entry) { return entry.second == record; });
    if (found == end)
        return;
    m_records.erase(found);
    m_beyondAscii -= key.IsAscii() ? 0 : 1;
}

std::optional<PathDirItemInfo*> FullNameIndex::Find(std::u16string_view fullName, bool caseSensitive) const {
    const NameKey key(fullName);
    if (m_beyondAscii > 0 || !key.IsAscii())
        return std::nullopt;
    PathDirItemInfo* found = nullptr;
    const auto [begin, end] = m_records.equal_range(key.GetHash());
    for (auto entry = begin; entry != end; ++entry) {
        PathDirItemInfo* const record = entry->second;
        if (!record->IsOnPath() || !NamesEqual(record->GetStoredFullName(), fullName, caseSensitive))
            continue;
        if (found)
            return std::nullopt;
        found = record;
    }
    return found;
}
