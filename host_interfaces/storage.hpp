#pragma once

#include <any>
#include <memory>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The storage layer: locations, and the storage system that files and folders are opened on.

namespace foundation::msg_svc::eventmgr {
class EventManager;
}

namespace foundation::storage::vfs {

/// A location: a scheme such as "file" and a path with `/` between its elements and none at its end, except
/// that a root is written with one. A value; equal locations have equal texts.
class OVSEL_HOST_API AbsoluteIRI {
  public:
    AbsoluteIRI() = default;
    /// @p path in the form that getPath returns.
    AbsoluteIRI(ustring scheme, ustring path) : m_scheme(std::move(scheme)), m_path(std::move(path)) {}

    const ustring& getScheme() const { return m_scheme; }
    const ustring& getPath() const { return m_path; }
    /// The last element of the path; empty for a root.
    ustring getName() const;
    bool hasParent() const;
    /// @pre hasParent()
    AbsoluteIRI getParent() const;
    /// scheme, "://", path.
    ustring toString() const;

    friend bool operator==(const AbsoluteIRI&, const AbsoluteIRI&) = default;

  private:
    ustring m_scheme;
    ustring m_path;
};

/// The location of a native path name; a separator at its end is dropped unless it is the root's.
OVSEL_HOST_API AbsoluteIRI toAbsoluteIRI(const ustring& scheme, const ustring& nativePath);

/// The native path name of a location.
OVSEL_HOST_API ustring fromAbsoluteIRI(const AbsoluteIRI& location);

/// What files and folders are opened on. One per path.
class OVSEL_HOST_API StorageSystem {
  public:
    virtual ~StorageSystem();
};

/// A plain reference on a storage system that somebody else keeps alive.
class StorageSystemReference {
  public:
    explicit StorageSystemReference(std::shared_ptr<StorageSystem> system) : m_system(std::move(system)) {}
    const std::shared_ptr<StorageSystem>& get() const { return m_system; }

  private:
    std::shared_ptr<StorageSystem> m_system;
};

/// A new storage system. @p options and @p events may be empty; the Linux host uses neither.
OVSEL_HOST_API std::shared_ptr<StorageSystem>
createStorageSystem(const std::any& options, foundation::msg_svc::eventmgr::EventManager* events);

} // namespace foundation::storage::vfs
