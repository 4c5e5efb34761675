#pragma once

#include <stdexcept>
#include <vector>

#include "host_interfaces/ustring.hpp"

namespace ovsel {

/// A network root that names a server and no share.
class incorrect_root_exception : public std::logic_error {
  public:
    incorrect_root_exception() : std::logic_error("Incorrect root path") {}
};

} // namespace ovsel

/// Resolves `.` and `..` in an absolute native name by text alone. Lives for one normalisation and refers to
/// the name, which must outlive it.
class PathNormalizer {
  public:
    explicit PathNormalizer(const ustring& name) : m_name(name) {}

    /// The name with its root closed by a separator and the rest free of `.` and `..`; `..` above the root
    /// vanishes, and so does a separator at the end.
    /// @throws ovsel::incorrect_root_exception for a server without a share
    ustring Normalize();

  private:
    struct Cursor;

    void TakeRoot(Cursor& cursor);
    void TakeNames(Cursor& cursor);
    ustring Join() const;

    const ustring& m_name;
    std::vector<ustring> m_rootElements;
    std::vector<ustring> m_nameElements; ///< no `.` and no `..` among them
};
