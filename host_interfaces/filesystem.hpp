#pragma once

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "host_interfaces/export.hpp"
#include "host_interfaces/ustring.hpp"

/// @file
/// The filesystem layer: names in the system's grammar (`\` between elements, `X:` a drive, `\\server\share`
/// a network root) and the few questions about the disk that the library asks outside the I/O hooks.
/// Functions that look at no disk throw nothing but std::bad_alloc, unless they say otherwise. Those that
/// take a name apart expect the native form: to them `/` is a character like any other.

/// Names of files and folders, and the few questions about them that are no listing.
namespace fl::filesystem {

/// Base of the six failures, so that a caller may catch them all; what() is English and for logs only.
class OVSEL_HOST_API Failure : public std::runtime_error {
  public:
    /// @p what is English and for logs; it names what failed.
    explicit Failure(const std::string& what) : std::runtime_error(what) {}
    ~Failure() override;
};

/// The name cannot be a name: empty where one is needed, a lone server, a NUL inside.
class OVSEL_HOST_API InvalidArgument : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~InvalidArgument() override;
};
/// The process may not look there, or may not enter.
class OVSEL_HOST_API AccessDenied : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~AccessDenied() override;
};
/// Nothing of that name, or a file where a directory is needed.
class OVSEL_HOST_API PathNotFound : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~PathNotFound() override;
};
/// Longer than the system takes.
class OVSEL_HOST_API FileNameTooLarge : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~FileNameTooLarge() override;
};
/// Any other answer of the operating system.
class OVSEL_HOST_API SystemError : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~SystemError() override;
};
/// The name has no form in the encoding of the file system.
class OVSEL_HOST_API FileNameConversionFailure : public Failure {
  public:
    using Failure::Failure; ///< as the base
    ~FileNameConversionFailure() override;
};

inline constexpr char16_t PATHNAME_SEPARATOR[] = u"\\"; ///< between elements
inline constexpr char16_t PARENT_DIRECTORY[] = u"..";   ///< the element that leads up
inline constexpr char16_t CURRENT_DIRECTORY[] = u".";   ///< the element that stays

/// The name with every `/` turned into `\`. Nothing else changes; @p keepAll is true in every call of the
/// library and says that no element may be dropped.
OVSEL_HOST_API ustring make_native_form(const ustring& name, bool keepAll);

/// The name with every `\` turned into `/`.
OVSEL_HOST_API ustring make_generic_form(const ustring& name);

/// True for a complete root: `X:\` and anything behind it, or `\\server\share` with neither part empty.
/// `X:`, `X:a`, `\a` and `\\server` are not absolute. Expects the native form.
OVSEL_HOST_API bool is_absolute(const ustring& name);

/// @p name against @p base; an empty base is the process's current directory. A root-relative name (`\a`)
/// takes the base's root, a drive-relative one (`C:a`) the base if that lies on the drive, and else the
/// drive's root. Nothing is normalised: `..` and `.` stay. An absolute name and a lone `\\server` come back
/// as they are.
/// @throws SystemError or PathNotFound when the current directory cannot be had.
OVSEL_HOST_API ustring absolute(const ustring& name, const ustring& base);

/// The name made absolute, then dots resolved by text: links are not followed, and the name need not exist.
/// `..` above the root vanishes.
/// @throws InvalidArgument for an empty name, a NUL inside and a server without a share, and as absolute.
OVSEL_HOST_API ustring canonical(const ustring& name, const ustring& base);

/// Does the name exist on disk, as anything? Links are followed: one that leads nowhere does not exist. Empty
/// and unmapped names do not exist either.
/// @throws InvalidArgument for a NUL inside, AccessDenied, FileNameTooLarge, SystemError,
/// FileNameConversionFailure.
OVSEL_HOST_API bool exists(const ustring& name);

/// Length of the root in units: 3 for `C:\a`, 2 for `C:a`, 1 for `\a`, `\\server\` of `\\server\share`,
/// 0 for a relative name. Runs of separators behind the root's name count as part of it.
OVSEL_HOST_API std::size_t get_root_path_length(const ustring& name);

/// The first element: the root's name without its separator (`C:`, `\\server`), a lone `\` for a
/// root-relative name, else the text up to the first separator; empty for an empty name.
OVSEL_HOST_API ustring extract_first_element(const ustring& name, std::size_t rootLength);

/// Steps an element cursor: @p position is where @p element begins; both move to the next element. The
/// separators of the root come as elements of one separator each; behind the root, runs of separators are
/// passed over, and one at the end of the name opens no element. At the end @p position is the name's
/// length and @p element is empty.
OVSEL_HOST_API void move_down(const ustring& name, std::size_t rootLength, std::size_t& position,
                              ustring& element);

/// The last element, separators behind it not counted, up to its last dot. Also a dot that stands first or
/// last counts, so that stem and extension together always are the element: `.x` is "" and ".x".
OVSEL_HOST_API ustring extract_stem(const ustring& name);

/// The last element from its last dot on, dot included; empty if it has none.
OVSEL_HOST_API ustring extract_extension(const ustring& name);

/// What stands before the last element, without the separator between them unless that belongs to the root;
/// empty for a root.
OVSEL_HOST_API ustring extract_parent_path(const ustring& name);

/// The process's current directory in the system's grammar.
/// @throws PathNotFound when it has been deleted, AccessDenied, SystemError.
OVSEL_HOST_API ustring current_path();

/// Opens a regular file for reading; null for anything else, for what is not there and for what may not be
/// read. @p name is narrow, in either form. The caller closes the file with std::fclose.
OVSEL_HOST_API std::FILE* open_for_reading(const char* name);

/// Changes the process's current directory.
/// @throws one of the six failures; the directory then stays as it was.
OVSEL_HOST_API void current_path(const ustring& name);

} // namespace fl::filesystem
