#include <ovsel/handles.hpp>

#include "ovsel/model/pathalldiriteminfo.hpp"

ovDir::ovDir(const ovDir& other) { copy(other); }

ovDir::ovDir(PathAllDirItemInfo* record) { *this = record; }

ovDir::~ovDir() {
    if (m_record)
        m_record->Release();
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a handle copied onto itself becomes null.
ovDir& ovDir::operator=(const ovDir& other) {
    copy(other);
    return *this;
}

ovDir& ovDir::operator=(PathAllDirItemInfo* record) {
    if (m_record)
        m_record->Release();
    m_record = record;
    if (m_record)
        m_record->AddRef();
    return *this;
}

void ovDir::copy(const ovDir& other) {
    *this = static_cast<PathAllDirItemInfo*>(nullptr);
    *this = other.m_record;
}
