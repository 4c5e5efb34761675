#include <algorithm>
#include <array>

#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/names/pathnormalizer.hpp"
#include "ovsel/names/plaintext.hpp"

namespace {

constexpr std::size_t MaxRootUnits = 260; // terminator included

/// The last root known to be remote. Nothing guards it, so it is a plain buffer that no comparison leaves:
/// two threads at once may cost one wrong answer, but no more.
struct RemoteRootMemo {
    std::array<char16_t, MaxRootUnits> root{};
    bool filled = false;

    /// @pre a text shorter than the buffer, as for Fill
    bool Holds(const ustring& name) const {
        return filled && std::equal(name.c_str(), name.c_str() + name.size() + 1, root.begin());
    }
    void Fill(const ustring& name) {
        std::copy_n(name.c_str(), name.size() + 1, root.begin());
        filled = true;
    }
};

RemoteRootMemo g_remoteRoot;

/// The root of a full name, up to and with its first separator.
void CutBehindFirstSeparator(ustring& name) {
    const std::size_t separator = name.find(u'\\');
    if (separator != ustring::npos)
        name.resize(separator + 1);
}

/// @return false, with @p dst empty, if the normalised name does not exist
bool FullPathOfRelative(ustring& dst, const ustring& native) {
    const ustring full = fl::filesystem::absolute(native, {});
    ustring normalized = PathNormalizer(full).Normalize();
    const bool found = fl::filesystem::exists(normalized);
    if (!found)
        normalized.clear();
    dst = std::move(normalized);
    return found;
}

} // namespace

bool ovIsAbsolutePath(const ustring& name) {
    return fl::filesystem::is_absolute(fl::filesystem::make_native_form(name, true));
}

bool ovIsAbsolutePath(const char* name) {
    return std::strncmp(name, "\\\\", 2) == 0 || BeginsWithDrive(name);
}

bool ovFullPath(ustring& dst, const ustring& name) {
    try {
        const ustring native = name.empty() ? ustring() : fl::filesystem::make_native_form(name, true);
        if (!fl::filesystem::is_absolute(native))
            return FullPathOfRelative(dst, native);
        dst = name;
        return true;
    } catch (const ovsel::incorrect_root_exception&) {
        dst.clear();
        return false;
    } catch (const fl::filesystem::Failure&) {
        return false;
    }
}

char* ovFullPath(char* dst, const char* name, std::size_t size) {
    if (ovIsAbsolutePath(name))
        return std::strncpy(dst, name, size);
    const ustring full = host::Platform().FullPath(fl::i18n::to_ustring(name));
    const std::string text = fl::i18n::codecvt_ustring_to_narrow_string()(full);
    if (text.empty() || text.size() >= size)
        return nullptr;
    CopyPlain(dst, text.c_str(), text.size());
    return dst;
}

bool ovIsWinPathRemote(const ustring& name) {
    ustring root = host::Platform().FullPath(name);
    if (root.empty() || root.size() >= MaxRootUnits)
        return false;
    if (root.starts_with(u"\\\\"))
        return true;
    CutBehindFirstSeparator(root);
    if (g_remoteRoot.Holds(root))
        return true;
    if (host::Platform().GetDriveType(root) != host::DriveRemote)
        return false;
    g_remoteRoot.Fill(root);
    return true;
}
