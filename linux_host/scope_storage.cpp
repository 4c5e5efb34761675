#include "host_interfaces/scope_storage.hpp"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "linux_host/linux_host.hpp"

namespace {

using Values = std::vector<std::shared_ptr<void>>;

/// All scopes by number. Scopes may live on different threads, so this is one of the few places with a lock.
struct Scopes {
    std::mutex mutex;
    std::map<std::size_t, Values> values;
    host::ScopeSlotId slots = 0;

    static Scopes& Get() {
        static Scopes scopes;
        return scopes;
    }
};

thread_local std::size_t t_currentScope = 0;

} // namespace

namespace host {

ScopeSlotId AllocateScopeSlot() {
    Scopes& scopes = Scopes::Get();
    const std::lock_guard lock(scopes.mutex);
    return scopes.slots++;
}

void* FindScopeValue(ScopeSlotId slot) {
    Scopes& scopes = Scopes::Get();
    const std::lock_guard lock(scopes.mutex);
    const auto found = scopes.values.find(t_currentScope);
    const bool filled = found != scopes.values.end() && slot < found->second.size();
    return filled ? found->second[slot].get() : nullptr;
}

bool InsertScopeValue(ScopeSlotId slot, std::shared_ptr<void> value) {
    Scopes& scopes = Scopes::Get();
    const std::lock_guard lock(scopes.mutex);
    Values& values = scopes.values[t_currentScope];
    if (values.size() <= slot) {
        values.resize(slot + 1);
    }
    if (values[slot] != nullptr) {
        return false;
    }
    values[slot] = std::move(value);
    return true;
}

} // namespace host

namespace linux_host {

std::size_t EnterScope(std::size_t scope) { return std::exchange(t_currentScope, scope); }

void DestroyScope(std::size_t scope) {
    Scopes& scopes = Scopes::Get();
    Values dying; // destroyed behind the lock: a value's destructor may come back here
    const std::lock_guard lock(scopes.mutex);
    const auto found = scopes.values.find(scope);
    if (found != scopes.values.end()) {
        dying.swap(found->second);
        scopes.values.erase(found);
    }
}

} // namespace linux_host
