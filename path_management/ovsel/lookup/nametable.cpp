#include "ovsel/lookup/nametable.hpp"

#include <algorithm>

#include <boost/container/small_vector.hpp>

namespace {

constexpr std::size_t usualNameLength = 64;
using Key = boost::container::small_vector<char16_t, usualNameLength>;

/// The name with ASCII capitals lowered.
class NameKey {
  public:
    explicit NameKey(std::u16string_view name) : m_text(name.size(), boost::container::default_init) {
        std::transform(name.begin(), name.end(), m_text.begin(),
                       [](char16_t c) { return static_cast<char16_t>(c >= u'A' && c <= u'Z' ? c + 32 : c); });
    }
    std::u16string_view View() const { return {m_text.data(), m_text.size()}; }

  private:
    Key m_text;
};

} // namespace

std::int32_t PathNameInfo::AddSpelling(std::u16string_view name) {
    const auto found = std::find(m_spellings.begin(), m_spellings.end(), name);
    const auto index = found - m_spellings.begin();
    if (found == m_spellings.end())
        m_spellings.emplace_back(name);
    return static_cast<std::int32_t>(index);
}

PathNameInfo* NameTable::Find(std::u16string_view name) const {
    const auto found = m_entries.find(NameKey(name).View());
    return found == m_entries.end() ? nullptr : found->second.get();
}

PathNameInfo* NameTable::Add(std::u16string_view name, std::int32_t& spelling) {
    const NameKey key(name);
    const auto found = m_entries.find(key.View());
    if (found != m_entries.end()) {
        spelling = found->second->AddSpelling(name);
        return found->second.get();
    }
    auto info = std::make_unique<PathNameInfo>(name, key.View());
    PathNameInfo* const entered = info.get();
    m_entries.emplace(entered->GetKey(), std::move(info));
    spelling = 0;
    return entered;
}

void NameTable::Remove(const PathNameInfo* info) {
    // The key goes with the entry, so the place is found first.
    const auto found = m_entries.find(info->GetKey());
    if (found != m_entries.end())
        m_entries.erase(found);
}
