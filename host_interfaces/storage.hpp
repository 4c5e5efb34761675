#pragma once

#include <any>
#include <istream>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The storage layer: locations, the storage system, and the files and folders that are opened on it.
///
/// A host implements StorageSystem, AbsoluteIRI and the three free functions; files, folders, listings and
/// streams only carry a location to its system.

namespace foundation::msg_svc::eventmgr {
class EventManager;
}

/// Folders and files as a storage system shows them.
namespace foundation::storage::vfs {

/// A location: a scheme such as "file" and a path with `/` between its elements and none at its end, except
/// that a root is written with one. A value; equal locations have equal texts.
class OVSEL_HOST_API AbsoluteIRI {
  public:
    AbsoluteIRI() = default;
    /// @p path in the form that getPath returns.
    AbsoluteIRI(ustring scheme, ustring path) : m_scheme(std::move(scheme)), m_path(std::move(path)) {}

    /// Such as "file".
    const ustring& getScheme() const { return m_scheme; }
    /// With `/` between its elements.
    const ustring& getPath() const { return m_path; }
    /// The last element of the path; empty for a root.
    ustring getName() const;
    /// Is there an element behind the root?
    bool hasParent() const;
    /// The location without its last element.
    /// @pre hasParent()
    AbsoluteIRI getParent() const;
    /// scheme, "://", path.
    ustring toString() const;

    /// Equal texts.
    friend bool operator==(const AbsoluteIRI&, const AbsoluteIRI&) = default;

  private:
    ustring m_scheme;
    ustring m_path;
};

/// The location of a native path name; one separator at its end is dropped unless it is the root's.
OVSEL_HOST_API AbsoluteIRI toAbsoluteIRI(const ustring& scheme, const ustring& nativePath);

/// The native path name of a location.
OVSEL_HOST_API ustring fromAbsoluteIRI(const AbsoluteIRI& location);

/// What the storage layer says of a folder or file that it cannot open, list, read or write; what() is
/// narrow text and names the location.
class OVSEL_HOST_API Exception : public std::runtime_error {
  public:
    /// @p what is narrow and names the location.
    explicit Exception(const std::string& what) : std::runtime_error(what) {}
    ~Exception() override;
};

/// What files and folders are opened on. One per path.
class OVSEL_HOST_API StorageSystem {
  public:
    /// One entry of a folder; anything that leads to a folder counts as one.
    struct Entry {
        ustring name;  ///< bare
        bool isFolder; ///< a folder, or a link to one
    };

    virtual ~StorageSystem();
    /// What a folder holds, in the order in which it is to be walked. @throws Exception when there is no such
    /// folder or it cannot be read.
    virtual std::vector<Entry> ListAll(const AbsoluteIRI& folder) const = 0;
    /// False also where nobody can tell. @throws Exception where the question itself fails.
    virtual bool FolderExists(const AbsoluteIRI& folder) const = 0;
    /// The location with links and dots resolved. @throws Exception when there is nothing there.
    virtual AbsoluteIRI CanonicalLocation(const AbsoluteIRI& location) const = 0;
    /// The bytes of a regular file; anything else is refused, so that no reader waits for a pipe.
    /// @throws Exception
    virtual std::unique_ptr<std::streambuf> OpenForReading(const AbsoluteIRI& file) const = 0;
    /// An existing file is emptied, a new one created. @throws Exception
    virtual std::unique_ptr<std::streambuf> OpenForWriting(const AbsoluteIRI& file) const = 0;
};

/// A plain reference on a storage system that somebody else keeps alive as well.
class StorageSystemReference {
  public:
    /// An empty reference.
    StorageSystemReference() = default;
    /// Null makes an empty reference.
    explicit StorageSystemReference(std::shared_ptr<StorageSystem> system) : m_system(std::move(system)) {}
    /// The system, or null.
    const std::shared_ptr<StorageSystem>& get() const { return m_system; }
    /// @throws Exception when the reference is empty.
    const StorageSystem& system() const {
        if (!m_system)
            throw Exception("there is no storage system");
        return *m_system;
    }

  private:
    std::shared_ptr<StorageSystem> m_system;
};

class FolderListing;

/// A folder that need not exist. A value; nothing is opened until it is asked something.
class Folder {
  public:
    Folder() = default;
    /// Opens nothing.
    Folder(AbsoluteIRI location, StorageSystemReference reference)
        : m_location(std::move(location)), m_reference(std::move(reference)) {}

    /// Where it lies, or would.
    const AbsoluteIRI& getLocation() const { return m_location; }
    /// The system that it lies on.
    const StorageSystemReference& getReference() const { return m_reference; }
    /// Without any parent.
    ustring getName() const { return m_location.getName(); }
    /// @throws Exception
    bool folderExists() const { return m_reference.system().FolderExists(m_location); }
    /// @throws Exception
    AbsoluteIRI getCanonicalLocation() const { return m_reference.system().CanonicalLocation(m_location); }
    /// @throws Exception
    FolderListing listAll() const;

  private:
    AbsoluteIRI m_location;
    StorageSystemReference m_reference;
};

/// The location of an entry of a folder.
inline AbsoluteIRI ChildLocation(const AbsoluteIRI& folder, const ustring& name) {
    const ustring& path = folder.getPath();
    return {folder.getScheme(), path.empty() || path.back() == u'/' ? path + name : path + u'/' + name};
}

/// A file that need not exist. A value; it is opened by a stream.
class File {
  public:
    File() = default;
    /// Opens nothing.
    File(AbsoluteIRI location, StorageSystemReference reference)
        : m_location(std::move(location)), m_reference(std::move(reference)) {}

    /// Where it lies, or would.
    const AbsoluteIRI& getLocation() const { return m_location; }
    /// The system that it lies on.
    const StorageSystemReference& getReference() const { return m_reference; }
    /// Without any parent.
    ustring getName() const { return m_location.getName(); }

  private:
    AbsoluteIRI m_location;
    StorageSystemReference m_reference;
};

/// What a folder held when it was listed: its files and its sub-folders, walked as one sequence.
class FolderListing {
  public:
    using value_type = std::variant<File, Folder>;                  ///< one entry
    using const_iterator = std::vector<value_type>::const_iterator; ///< valid as long as the listing

    FolderListing() = default;
    /// In the order given.
    explicit FolderListing(std::vector<value_type> entries) : m_entries(std::move(entries)) {}
    /// The first entry.
    const_iterator begin() const { return m_entries.begin(); }
    /// Behind the last.
    const_iterator end() const { return m_entries.end(); }

  private:
    std::vector<value_type> m_entries;
};

inline FolderListing Folder::listAll() const {
    std::vector<FolderListing::value_type> entries;
    for (const StorageSystem::Entry& entry : m_reference.system().ListAll(m_location)) {
        AbsoluteIRI location = ChildLocation(m_location, entry.name);
        if (entry.isFolder)
            entries.emplace_back(Folder(std::move(location), m_reference));
        else
            entries.emplace_back(File(std::move(location), m_reference));
    }
    return FolderListing(std::move(entries));
}

/// The bytes of a file. Errors while reading set badbit, so that exceptions() applies to them.
class ifstream : public std::istream {
  public:
    /// @throws Exception
    explicit ifstream(const File& file)
        : std::istream(nullptr), m_bytes(file.getReference().system().OpenForReading(file.getLocation())) {
        rdbuf(m_bytes.get());
    }

  private:
    std::unique_ptr<std::streambuf> m_bytes;
};

/// Writes a file anew. What is still in the buffer when the stream goes is written without a word of how that
/// went: flush before.
class ofstream : public std::ostream {
  public:
    /// @throws Exception
    explicit ofstream(const File& file)
        : std::ostream(nullptr), m_bytes(file.getReference().system().OpenForWriting(file.getLocation())) {
        rdbuf(m_bytes.get());
    }

  private:
    std::unique_ptr<std::streambuf> m_bytes;
};

/// A new storage system. @p options and @p events may be empty; the Linux host uses neither.
OVSEL_HOST_API std::shared_ptr<StorageSystem>
createStorageSystem(const std::any& options, foundation::msg_svc::eventmgr::EventManager* events);

} // namespace foundation::storage::vfs
