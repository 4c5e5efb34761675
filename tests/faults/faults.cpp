#include "faults/faults.hpp"

#include <cstdio>
#include <cstdlib>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"

namespace {

using faults::Fails, faults::IsDue, faults::state;
using Text = const ustring&;

void* Block(std::size_t size) {
    void* const block = IsDue("memory", faults::Throws) ? nullptr : std::malloc(size > 0 ? size : 1);
    state.liveBlocks += block ? 1 : 0;
    return block;
}

[[noreturn]] void Unconvertible() {
    throw fl::i18n::CvtInvalidCharacter("a character that does not convert");
}

} // namespace

void* operator new(std::size_t size) {
    void* const block = Block(size);
    return block ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Block(size); }
void operator delete(void* block) noexcept {
    state.liveBlocks -= block ? 1 : 0;
    std::free(block);
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

// The host's functions that the library calls by name. The build hands each symbol here to the linker, so
// that the library's calls arrive here.

// NOLINTBEGIN
#define WRAP(symbol, Result, Name, parameters, arguments, operation, failure)                                \
    Result Real##Name parameters asm("__real_" symbol);                                                      \
    Result Name parameters asm("__wrap_" symbol);                                                            \
    Result Name parameters {                                                                                 \
        if (Fails(operation, faults::Answers))                                                               \
            failure;                                                                                         \
        return Real##Name arguments;                                                                         \
    }
// NOLINTEND

// clang-format off
WRAP("_ZNK2fl4i18n32codecvt_ustring_to_narrow_stringclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Narrow, (const void* self, Text text), (self, text), "text: wide to narrow", Unconvertible())
WRAP("_ZNK2fl4i18n24codecvt_ascii_to_ustringclB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE",
     ustring, Wide, (const void* self, std::string_view text), (self, text), "text: ASCII to wide", Unconvertible())
WRAP("_ZNK2fl4i18n24codecvt_ustring_to_asciiclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Ascii, (const void* self, Text text), (self, text), "text: wide to ASCII", Unconvertible())
WRAP("_ZNK2fl4i18n25codecvt_ustring_to_stringclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Encoded, (const void* self, Text text), (self, text), "text: wide to UTF-8", Unconvertible())
WRAP("_ZNK2fl4i18n25codecvt_string_to_ustringclB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE",
     ustring, Decoded, (const void* self, std::string_view text), (self, text), "text: UTF-8 to wide", Unconvertible())
WRAP("_ZN2fl10filesystem12current_pathB5cxx11Ev",
     ustring, CurrentPath, (), (), "files: current path", throw fl::filesystem::PathNotFound("gone"))
WRAP("_ZN2fl10filesystem12current_pathERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     void, ChangePath, (Text name), (name), "files: change of path", throw fl::filesystem::AccessDenied("closed"))
WRAP("_ZN2fl10filesystem9canonicalERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEES8_",
     ustring, Canonical, (Text name, Text base), (name, base), "files: canonical",
     throw fl::filesystem::InvalidArgument("no name"))
WRAP("_ZN2fl10filesystem16open_for_readingEPKc",
     std::FILE*, OpenFile, (const char* name), (name), "files: open", return nullptr)
WRAP("_Z10HostCallocmm",
     void*, Calloc, (std::size_t count, std::size_t size), (count, size), "host's allocator", return nullptr)
WRAP("_Z11HostReallocPvm",
     void*, Realloc, (void* old, std::size_t size), (old, size), "host's allocator", return nullptr)
// clang-format on
