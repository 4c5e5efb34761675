#include "ovsel/names/pathnamestorage.hpp"

#include <memory>

#include <ovsel/names.hpp>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/scope_storage.hpp"
#include "host_interfaces/text.hpp"

namespace {

host::ScopeSlotId Slot() {
    static const host::ScopeSlotId slot = host::AllocateScopeSlot();
    return slot;
}

} // namespace

PathNameStorage* PathNameStorage::Find() {
    return static_cast<PathNameStorage*>(host::FindScopeValue(Slot()));
}

PathNameStorage& PathNameStorage::Create() {
    // Refused, and rightly, when the scope has one: its name is then replaced.
    host::InsertScopeValue(Slot(), std::make_shared<PathNameStorage>());
    return Get();
}

PathNameStorage& PathNameStorage::Get() {
    PathNameStorage* storage = Find();
    if (storage == nullptr)
        HOST_FATAL("no default path name in this scope");
    // cppcheck-suppress nullPointerRedundantCheck ; it does not know that the fatal end never comes back
    return *storage;
}

void ovSetDefaultPathname(const char* name) { PathNameStorage::Create().m_name = name; }

void ovSetCurrentPathname(const char* name) { PathNameStorage::Get().m_name = name; }

const char* ovGetCurrentPathname() { return PathNameStorage::Get().m_name; }

ustring ovGetCurrentPathname_u() { return fl::i18n::to_ustring(PathNameStorage::Get().m_name); }

int ovCurrentPathExists() {
    const PathNameStorage* storage = PathNameStorage::Find();
    return storage != nullptr && storage->m_name != nullptr ? 1 : 0;
}
