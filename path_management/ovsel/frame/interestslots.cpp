#include "ovsel/frame/interestslots.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>

#include <ovsel/interest.hpp>

#include "ovsel/frame/handlecheck.hpp"

int InterestSlots::Register(Callback callback) {
    const auto slot =
        std::find_if(m_interests.begin(), m_interests.end(), [](const Callback& c) { return c.empty(); });
    const auto index = slot - m_interests.begin();
    if (slot == m_interests.end())
        m_interests.push_back(std::move(callback));
    else
        slot->swap(callback);
    return static_cast<int>(index);
}

void InterestSlots::Cancel(int index) {
    if (index >= 0 && static_cast<std::size_t>(index) < m_interests.size())
        m_interests[static_cast<std::size_t>(index)].clear();
}

namespace {

/// The texts say what went wrong to whoever stands in a debugger here; no hook gets them. They take no
/// memory, of which there may be none.
void CallGuarded(const InterestSlots::Callback& callback, ovEventType event, PathAllDirItemInfo* dir) {
    std::array<char, 512> text;
    try {
        callback(event, ovDir(dir));
    } catch (const std::exception& e) {
        std::snprintf(text.data(), text.size(),
                      "Registered Path Manager notification callback threw an exception. "
                      "Exception.what says '%s'",
                      e.what());
    } catch (...) {
        std::snprintf(text.data(), text.size(),
                      "Registered Path Manager notification callback threw an unknown exception.");
    }
}

} // namespace

void InterestSlots::Notify(ovEventType event, PathAllDirItemInfo* dir) {
    const std::size_t end = m_interests.size();
    for (std::size_t i = 0; i < end; ++i)
        if (!m_interests[i].empty())
            CallGuarded(m_interests[i], event, dir);
}

ovRegisteredInterest ovRegisterPathInterest(ovPath path, boost::function<void(ovEventType, ovDir)> callback) {
    ovRegisteredInterest token;
    if (IsPathInService(path)) {
        token.m_index = path->RegisterInterest(std::move(callback));
        token.m_path = path;
    }
    return token;
}

void ovCancelPathInterest(ovRegisteredInterest interest) {
    if (IsPathInService(interest.m_path))
        interest.m_path->CancelInterest(interest.m_index);
}
