#include <ovsel/handles.hpp>

#include "ovsel/frame/ipathmanager.hpp"

ovPath::ovPath(const ovPath& other) { copy(other); }

ovPath::ovPath(IPathManager* manager) {
    if (manager && manager->IsValid())
        *this = manager;
}

ovPath::~ovPath() {
    if (m_manager)
        m_manager->Release();
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a handle copied onto itself becomes null.
ovPath& ovPath::operator=(const ovPath& other) {
    copy(other);
    return *this;
}

ovPath& ovPath::operator=(IPathManager* manager) {
    if (m_manager)
        m_manager->Release();
    m_manager = manager;
    if (m_manager)
        m_manager->AddRef();
    return *this;
}

void ovPath::copy(const ovPath& other) {
    *this = static_cast<IPathManager*>(nullptr);
    *this = other.m_manager;
}
