#include "host_interfaces/filesystem.hpp"

#include <algorithm>
#include <string_view>
#include <vector>

namespace fl::filesystem {

namespace {

using View = std::u16string_view;

constexpr char16_t Separator = PATHNAME_SEPARATOR[0];

bool IsDriveLetter(char16_t unit) { return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z'); }

bool HasDrive(View name) { return name.size() >= 2 && IsDriveLetter(name[0]) && name[1] == u':'; }

/// Exactly two separators in front: a third makes the name root-relative.
bool HasServer(View name) {
    return name.size() > 2 && name[0] == Separator && name[1] == Separator && name[2] != Separator;
}

std::size_t EndOfSeparators(View name, std::size_t from) {
    return std::min(name.find_first_not_of(Separator, from), name.size());
}

std::size_t EndOfElement(View name, std::size_t from) {
    return std::min(name.find(Separator, from), name.size());
}

/// The root without the separators at its end; all of them for a root-relative name.
View RootName(View name, std::size_t rootLength) {
    const View root = name.substr(0, rootLength);
    return root.substr(0, root.find_last_not_of(Separator) + 1);
}

struct Range {
    std::size_t begin;
    std::size_t end;
};

/// The last element behind the root, without the separators behind it; empty if there is none.
Range LastElement(View name) {
    const std::size_t rootLength = get_root_path_length(ustring(name));
    const View rest = name.substr(rootLength);
    const std::size_t end = rest.find_last_not_of(Separator) + 1;
    const std::size_t separator = rest.substr(0, end).rfind(Separator);
    return {rootLength + (separator == View::npos ? 0 : separator + 1), rootLength + end};
}

/// With one separator between, which a root may have brought along.
void AppendElement(ustring& name, View element) {
    if (!name.ends_with(Separator)) {
        name += Separator;
    }
    name += element;
}

ustring Replaced(const ustring& name, char16_t from, char16_t to) {
    ustring result = name;
    std::replace(result.begin(), result.end(), from, to);
    return result;
}

/// Resolves `.` and `..` of an absolute name. A share belongs to the root: `..` does not take it away.
ustring Normalized(const ustring& name) {
    const std::size_t rootLength = get_root_path_length(name);
    ustring result(RootName(name, rootLength));
    std::size_t position = rootLength;
    if (HasServer(name)) {
        const std::size_t end = EndOfElement(name, position);
        AppendElement(result, View(name).substr(position, end - position));
        position = end;
    } else {
        result += Separator;
    }
    std::vector<View> elements;
    while ((position = EndOfSeparators(name, position)) < name.size()) {
        const std::size_t end = EndOfElement(name, position);
        const View element = View(name).substr(position, end - position);
        if (element != PARENT_DIRECTORY && element != CURRENT_DIRECTORY) {
            elements.push_back(element);
        } else if (element == PARENT_DIRECTORY && !elements.empty()) {
            elements.pop_back();
        }
        position = end;
    }
    for (const View element : elements) {
        AppendElement(result, element);
    }
    return result;
}

bool SameDrive(View a, View b) { return HasDrive(a) && HasDrive(b) && (a[0] | 0x20) == (b[0] | 0x20); }

/// Drive, or server and share, of an absolute name, without a separator at the end.
View CompleteRoot(View name) {
    const std::size_t rootLength = get_root_path_length(ustring(name));
    return HasServer(name) ? name.substr(0, EndOfElement(name, rootLength)) : RootName(name, rootLength);
}

} // namespace

// The destructors stand here so that each class has its type data in this library alone: a program and the
// library under it must agree on what they throw and catch.
Failure::~Failure() = default;
InvalidArgument::~InvalidArgument() = default;
AccessDenied::~AccessDenied() = default;
PathNotFound::~PathNotFound() = default;
FileNameTooLarge::~FileNameTooLarge() = default;
SystemError::~SystemError() = default;
FileNameConversionFailure::~FileNameConversionFailure() = default;

ustring make_native_form(const ustring& name, bool /*keepAll*/) { return Replaced(name, u'/', Separator); }

ustring make_generic_form(const ustring& name) { return Replaced(name, Separator, u'/'); }

bool is_absolute(const ustring& name) {
    const std::size_t rootLength = get_root_path_length(name);
    return HasDrive(name) ? rootLength > 2 : HasServer(name) && name.size() > rootLength;
}

// A lone server counts as complete here: it has a root that no base could give it, and canonical refuses it.
ustring absolute(const ustring& name, const ustring& base) {
    if (is_absolute(name) || HasServer(name)) {
        return name;
    }
    ustring result = base.empty() ? current_path() : absolute(base, {});
    if (HasDrive(name)) {
        if (!SameDrive(name, result)) {
            result = name.substr(0, 2) + Separator;
        }
        if (name.size() > 2) {
            AppendElement(result, View(name).substr(2));
        }
    } else if (name.starts_with(Separator)) {
        result = ustring(CompleteRoot(result)) + name;
    } else if (!name.empty()) {
        AppendElement(result, name);
    }
    return result;
}

ustring canonical(const ustring& name, const ustring& base) {
    if (name.empty() || name.find(u'\0') != ustring::npos) {
        throw InvalidArgument("an empty name, or a NUL in a name");
    }
    const ustring full = absolute(make_native_form(name, true), make_native_form(base, true));
    if (!is_absolute(full)) {
        throw InvalidArgument("a server without a share");
    }
    return Normalized(full);
}

std::size_t get_root_path_length(const ustring& name) {
    if (HasDrive(name)) {
        return EndOfSeparators(name, 2);
    }
    if (HasServer(name)) {
        return EndOfSeparators(name, EndOfElement(name, 2));
    }
    return EndOfSeparators(name, 0);
}

ustring extract_first_element(const ustring& name, std::size_t rootLength) {
    if (rootLength == 0) {
        return name.substr(0, EndOfElement(name, 0));
    }
    const View root = RootName(name, rootLength);
    return root.empty() ? ustring(PATHNAME_SEPARATOR) : ustring(root);
}

void move_down(const ustring& name, std::size_t rootLength, std::size_t& position, ustring& element) {
    position += element.size();
    // One by one within the root: who rebuilds a root counts its separators.
    if (position < rootLength) {
        element.assign(1, Separator);
        return;
    }
    position = EndOfSeparators(name, position);
    element = name.substr(position, EndOfElement(name, position) - position);
}

ustring extract_stem(const ustring& name) {
    const Range last = LastElement(name);
    const ustring element = name.substr(last.begin, last.end - last.begin);
    return element.substr(0, element.rfind(u'.'));
}

ustring extract_extension(const ustring& name) {
    const Range last = LastElement(name);
    const ustring element = name.substr(last.begin, last.end - last.begin);
    const std::size_t dot = element.rfind(u'.');
    return dot == ustring::npos ? ustring() : element.substr(dot);
}

ustring extract_parent_path(const ustring& name) {
    const std::size_t rootLength = get_root_path_length(name);
    const Range last = LastElement(name);
    if (last.begin == last.end) {
        return {};
    }
    // Runs of separators before the element go with it, but not those that make the root complete.
    const std::size_t end = name.find_last_not_of(Separator, last.begin - 1) + 1;
    return name.substr(0, last.begin == 0 ? 0 : std::max(end, rootLength));
}

} // namespace fl::filesystem
