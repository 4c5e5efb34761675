#include "host_interfaces/storage.hpp"

#include <algorithm>

#include "host_interfaces/filesystem.hpp"
#include "linux_host/linux_host.hpp"
#include "linux_host/linux_storage.hpp"

namespace foundation::storage::vfs {

namespace {

std::size_t RootLength(const ustring& path) {
    return fl::filesystem::get_root_path_length(fl::filesystem::make_native_form(path, true));
}

/// Where the last element begins; the path's length when it is a root.
std::size_t NameBegin(const ustring& path) {
    const std::size_t separator = path.rfind(u'/');
    return std::max(RootLength(path), separator == ustring::npos ? 0 : separator + 1);
}

std::shared_ptr<StorageSystem>& Substitute() {
    static std::shared_ptr<StorageSystem> substitute;
    return substitute;
}

} // namespace

Exception::~Exception() = default;

StorageSystem::~StorageSystem() = default;

ustring AbsoluteIRI::getName() const { return m_path.substr(NameBegin(m_path)); }

bool AbsoluteIRI::hasParent() const {
    const std::size_t begin = NameBegin(m_path);
    return begin > 0 && begin < m_path.size();
}

AbsoluteIRI AbsoluteIRI::getParent() const {
    const ustring before = m_path.substr(0, NameBegin(m_path));
    const std::size_t end = before.find_last_not_of(u'/') + 1;
    return {m_scheme, before.substr(0, std::max(end, RootLength(before)))};
}

ustring AbsoluteIRI::toString() const { return m_scheme + u"://" + m_path; }

AbsoluteIRI toAbsoluteIRI(const ustring& scheme, const ustring& nativePath) {
    ustring path = fl::filesystem::make_generic_form(nativePath);
    if (path.ends_with(u'/') && path.size() > RootLength(path))
        path.pop_back();
    return {scheme, std::move(path)};
}

ustring fromAbsoluteIRI(const AbsoluteIRI& location) {
    return fl::filesystem::make_native_form(location.getPath(), true);
}

std::shared_ptr<StorageSystem> createStorageSystem(const std::any& /*options*/,
                                                   foundation::msg_svc::eventmgr::EventManager* /*events*/) {
    return Substitute() != nullptr ? Substitute() : std::make_shared<linux_host::LinuxStorage>();
}

} // namespace foundation::storage::vfs

namespace linux_host::testing {

void SetStorageSystem(std::shared_ptr<foundation::storage::vfs::StorageSystem> system) {
    foundation::storage::vfs::Substitute() = std::move(system);
}

} // namespace linux_host::testing
