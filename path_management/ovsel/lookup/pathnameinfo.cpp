#include "ovsel/lookup/pathnameinfo.hpp"

#include <new>

#include "ovsel/lookup/namekey.hpp"
#include "ovsel/model/blockpool.hpp"

namespace {

std::size_t BlockSize(std::size_t nameLength) {
    return sizeof(PathNameInfo) + (nameLength + 1) * sizeof(char16_t);
}

} // namespace

PathNameInfo::Owner PathNameInfo::Create(BlockPool& pool, std::u16string_view name) {
    return Owner(new (pool.Allocate(BlockSize(name.size()))) PathNameInfo(name));
}

PathNameInfo::PathNameInfo(std::u16string_view name) : m_length(static_cast<std::uint32_t>(name.size())) {
    auto* const text = reinterpret_cast<char16_t*>(this + 1);
    *std::copy(name.begin(), name.end(), text) = u'\0';
}

void PathNameInfo::Deleter::operator()(PathNameInfo* info) const {
    const std::size_t size = BlockSize(info->m_length);
    info->~PathNameInfo();
    BlockPool::Free(info, size);
}

PathNameInfo::More& PathNameInfo::GetMore() {
    if (!m_more)
        m_more = std::make_unique<More>();
    return *m_more;
}

ustring PathNameInfo::GetKey() const {
    ustring key(FirstSpelling());
    for (char16_t& unit : key)
        unit = static_cast<char16_t>(NameKey::Lowered(unit));
    return key;
}

std::int32_t PathNameInfo::AddSpelling(std::u16string_view name) {
    if (name == FirstSpelling())
        return 0;
    auto& spellings = GetMore().spellings;
    const auto found = std::find_if(spellings.begin(), spellings.end(),
                                    [name](const auto& spelling) { return *spelling == name; });
    const auto index = found - spellings.begin();
    if (found == spellings.end())
        spellings.push_back(std::make_unique<const ustring>(name));
    return static_cast<std::int32_t>(index) + 1;
}

void PathNameInfo::SetEnds(NameCategory category, Chain chain) {
    if (!m_chain.first && !m_more)
        m_category = category;
    if (category == m_category)
        m_chain = chain;
    else
        GetMore().chains[static_cast<std::size_t>(category)] = chain;
}

bool PathNameInfo::HasNoItems() const {
    const auto isEmpty = [](const Chain& chain) { return !chain.first; };
    return isEmpty(m_chain) &&
           (!m_more || std::all_of(m_more->chains.begin(), m_more->chains.end(), isEmpty));
}
