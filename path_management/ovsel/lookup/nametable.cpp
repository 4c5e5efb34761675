#include "ovsel/lookup/nametable.hpp"

#include <algorithm>
#include <new>

NameTable::~NameTable() {
    for (const Slot& slot : m_slots)
        PathNameInfo::Deleter()(slot.info);
}

PathNameInfo* NameTable::Add(std::u16string_view name, std::int32_t& spelling) {
    const NameKey key(name);
    const auto found = m_slots.find(key);
    if (found != m_slots.end()) {
        spelling = found->info->AddSpelling(name);
        return found->info;
    }
    auto info = PathNameInfo::Create(m_pool, name);
    m_slots.emplace(key.GetHash(), info.get());
    m_isAscii = m_isAscii && key.IsAscii();
    spelling = 0;
    return info.release();
}

void NameTable::Expect(std::size_t count) {
    constexpr std::size_t most = 1 << 20;
    const std::size_t wanted = std::min(count, most);
    if (wanted <= m_slots.max_load())
        return;
    try {
        m_slots.reserve(wanted);
    } catch (const std::bad_alloc&) {
        // It grows when the names come.
    }
}

void NameTable::Remove(PathNameInfo* info) {
    const auto found = m_slots.find(Slot{NameKey::Digest(info->FirstSpelling()).hash, info});
    if (found == m_slots.end())
        return;
    m_slots.erase(found);
    PathNameInfo::Deleter()(info);
}
