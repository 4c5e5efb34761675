#include <cstring>
#include <optional>

#include <ovsel/handles.hpp>
#include <ovsel/names.hpp>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/names/dirnametokenizer.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/plaintext.hpp"

namespace {

/// A dotted name under construction.
template <class Char>
class DottedName {
  public:
    void Add(std::basic_string_view<Char> part, bool dotted) {
        if (dotted)
            m_text.push_back('.');
        m_text.insert(m_text.end(), part.begin(), part.end());
    }
    /// Writes the name behind the @p length units of @p dst, if @p dst of @p dstLen units can hold both.
    bool AppendTo(Char* dst, std::size_t length, std::size_t dstLen) const {
        if (length + m_text.size() >= dstLen)
            return false;
        *std::copy(m_text.begin(), m_text.end(), dst + length) = Char();
        return true;
    }

  private:
    boost::container::small_vector<Char, 128> m_text;
};

/// Leaves @p tokens at the element behind the package.
template <class Char, Char Separator>
Char* PackageName(DirNameTokenizer<Char, Separator>& tokens, Char* dst, std::size_t dstLen) {
    constexpr char16_t sentinel = OvselConstants::U16_OBJPKGSENTINEL[0];
    *dst = Char();
    while (!tokens.AtEnd() && !tokens.BeginsWith(sentinel))
        tokens.Next();
    DottedName<Char> name;
    bool found = false;
    for (; tokens.BeginsWith(sentinel); tokens.Next()) {
        name.Add(tokens.TextBehindSentinel(), found);
        found = true;
    }
    return found && name.AppendTo(dst, 0, dstLen) ? dst : nullptr;
}

template <class Char, Char Separator>
Char* ClassName(DirNameTokenizer<Char, Separator>& tokens, Char* dst, std::size_t dstLen) {
    const bool packaged = PackageName(tokens, dst, dstLen) != nullptr;
    if (!packaged)
        tokens.Rewind();
    DottedName<Char> name;
    bool found = false;
    for (; !tokens.AtEnd(); tokens.Next()) {
        if (tokens.BeginsWith(OvselConstants::U16_OOPSENTINEL[0])) {
            name.Add(tokens.TextBehindSentinel(), packaged || found);
            found = true;
        } else if (packaged || found) {
            break;
        }
    }
    if (found && name.AppendTo(dst, std::char_traits<Char>::length(dst), dstLen))
        return dst;
    *dst = Char();
    return nullptr;
}

/// Does a character of its own stand at @p at, rather than the end of a multi-byte one?
bool IsWhole(std::string_view name, std::size_t at) {
    const char* p = name.data() + at;
    return host::Platform().PreviousCharacter(name.data(), p + 1) == p;
}
bool IsWhole(std::u16string_view, std::size_t) { return true; }

template <class Char>
std::size_t Find(std::basic_string_view<Char> name, char c, std::size_t from) {
    std::size_t at = name.find(static_cast<Char>(c), from);
    while (at != name.npos && !IsWhole(name, at))
        at = name.find(static_cast<Char>(c), at + 1);
    return at;
}

template <class Char>
std::size_t FindLast(std::basic_string_view<Char> name, char c) {
    std::size_t at = name.rfind(static_cast<Char>(c));
    while (at != name.npos && !IsWhole(name, at))
        at = at == 0 ? name.npos : name.rfind(static_cast<Char>(c), at - 1);
    return at;
}

/// Do only class directories stand between the `@` at @p outer and that at @p inner?
/// @pre outer < inner, and a separator stands before @p inner: the search for one always succeeds.
template <class Char>
bool EnclosesDirectly(std::basic_string_view<Char> name, std::size_t outer, std::size_t inner) {
    std::size_t element = outer;
    do
        element = Find(name, '\\', element) + 1;
    while (element != inner && name[element] == '@');
    return element == inner;
}

/// The `@` of the outermost class directory around that at @p at.
template <class Char>
std::size_t OutermostClass(std::basic_string_view<Char> name, std::size_t at) {
    std::size_t outer = Find(name, '@', 0);
    while (outer < at && !EnclosesDirectly(name, outer, at))
        outer = Find(name, '@', outer + 1);
    return outer;
}

/// Compares as far as the suffix goes, so that `\privateer` passes too.
template <class Char>
bool BeginsWithPrivateDir(std::basic_string_view<Char> name) {
    const auto begin = name.substr(0, PrivateDirSuffix.size());
    return std::equal(begin.begin(), begin.end(), PrivateDirSuffix.begin(), PrivateDirSuffix.end());
}

/// The class elements of a full name with what separates them, or nothing.
template <class Char>
std::optional<std::basic_string_view<Char>> ClassElements(std::basic_string_view<Char> name) {
    std::size_t at = FindLast(name, '@');
    if (at == name.npos)
        return std::nullopt;
    if (at != 0 && !(name[at - 1] == '\\' && IsWhole(name, at - 1)))
        return std::nullopt;
    std::size_t end = Find(name, '\\', at);
    if (end == name.npos) {
        end = name.size();
        at = OutermostClass(name, at);
    } else if (!BeginsWithPrivateDir(name.substr(end)) && Find(name, '\\', end + 1) != name.npos) {
        return std::nullopt;
    }
    return name.substr(at + 1, end - at - 1);
}

/// Turns each `\@` between class elements into a dot.
void JoinWithDots(char* text) {
    std::size_t at = 0;
    while ((at = Find(std::string_view(text), '\\', at)) != std::string_view::npos) {
        text[at] = '.';
        char* sentinel = text + at + 1;
        std::memmove(sentinel, sentinel + 1, std::strlen(sentinel));
    }
}

std::string_view ToPlain(std::string_view text) { return text; }
std::string ToPlain(std::u16string_view text) { return fl::i18n::codecvt_ustring_to_ascii()(ustring(text)); }

template <class Char>
char* ObjectName(std::basic_string_view<Char> fullName, char* dst, std::size_t dstLen) {
    *dst = '\0';
    const auto elements = ClassElements(fullName);
    if (!elements || elements->size() >= dstLen)
        return nullptr;
    const auto text = ToPlain(*elements);
    CopyPlain(dst, text.data(), text.size());
    JoinWithDots(dst);
    return dst;
}

} // namespace

char* ovGetPackageNameFromFullName(const char* fullName, char* dst, std::size_t dstLen) {
    PlainDirNameTokenizer tokens(fullName);
    return PackageName(tokens, dst, dstLen);
}

char* ovGetClassNameFromFullName(const char* fullName, char* dst, std::size_t dstLen) {
    PlainDirNameTokenizer tokens(fullName);
    return ClassName(tokens, dst, dstLen);
}

char16_t* ovGetPackageNameFromLocation(const foundation::storage::vfs::AbsoluteIRI& location, char16_t* dst,
                                       std::size_t dstLen) {
    WideDirNameTokenizer tokens(location.getPath());
    return PackageName(tokens, dst, dstLen);
}

char16_t* ovGetClassNameFromLocation(const foundation::storage::vfs::AbsoluteIRI& location, char16_t* dst,
                                     std::size_t dstLen) {
    WideDirNameTokenizer tokens(location.getPath());
    return ClassName(tokens, dst, dstLen);
}

char* ovGetObjectNameFromPath(ovPath, const char* fullName, char* dst, std::size_t dstLen) {
    return ObjectName(std::string_view(fullName), dst, dstLen);
}

char* ovGetObjectNameFromPath(ovPath, const char16_t* fullName, char* dst, std::size_t dstLen) {
    return ObjectName(std::u16string_view(fullName), dst, dstLen);
}
