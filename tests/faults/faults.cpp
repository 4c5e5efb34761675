#include "faults/faults.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <link.h>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"

namespace faults {

namespace {

/// Where the parser's library lies, which ends the process when there is no memory to begin with.
struct Range {
    std::uintptr_t begin = 0, end = 0;
};
Range RangeOfParser() {
    Range range;
    dl_iterate_phdr(
        [](dl_phdr_info* object, std::size_t, void* found) {
            for (int i = 0; std::strstr(object->dlpi_name, "libxerces") && i < object->dlpi_phnum; ++i)
                if (const auto& part = object->dlpi_phdr[i];
                    part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0)
                    *static_cast<Range*>(found) = {object->dlpi_addr + part.p_vaddr,
                                                   object->dlpi_addr + part.p_vaddr + part.p_memsz};
            return 0;
        },
        &range);
    return range;
}

bool IsOfParser(const void* caller) {
    static const Range range = RangeOfParser();
    const auto place = reinterpret_cast<std::uintptr_t>(caller);
    return range.begin <= place && place < range.end;
}

void* Block(std::size_t size, const void* caller) {
    if (Get().armed && !IsOfParser(caller) && IsDue(Memory))
        return nullptr;
    void* const block = std::malloc(size > 0 ? size : 1);
    Get().liveBlocks += block ? 1 : 0;
    return block;
}

void* BlockOrThrow(std::size_t size, const void* caller) {
    void* const block = Block(size, caller);
    return block ? block : throw std::bad_alloc();
}

void Free(void* block) {
    Get().liveBlocks -= block ? 1 : 0;
    std::free(block);
}

} // namespace

State& Get() {
    static constinit State state;
    return state;
}

} // namespace faults

void* operator new(std::size_t size) { return faults::BlockOrThrow(size, __builtin_return_address(0)); }
void* operator new[](std::size_t size) { return faults::BlockOrThrow(size, __builtin_return_address(0)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return faults::Block(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return faults::Block(size, __builtin_return_address(0));
}
void operator delete(void* block) noexcept { faults::Free(block); }
void operator delete[](void* block) noexcept { faults::Free(block); }
void operator delete(void* block, std::size_t) noexcept { faults::Free(block); }
void operator delete[](void* block, std::size_t) noexcept { faults::Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { faults::Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { faults::Free(block); }

// The host's functions that the library calls by name. The build hands each symbol of this table to the
// linker, so that the library's calls arrive here.

// NOLINTBEGIN
#define WRAP(symbol, Result, name, parameters, arguments, operation, failure)                                \
    Result Real##name parameters asm("__real_" symbol);                                                      \
    Result name parameters asm("__wrap_" symbol);                                                            \
    Result name parameters {                                                                                 \
        if (faults::IsDue(faults::operation))                                                                \
            failure;                                                                                         \
        return Real##name arguments;                                                                         \
    }
// NOLINTEND

namespace {

using Text = const ustring&;
using fl::i18n::CvtInvalidCharacter;
namespace files = fl::filesystem;

[[noreturn]] void Unconvertible() { throw CvtInvalidCharacter("a character that does not convert"); }

} // namespace

// clang-format off
WRAP("_ZNK2fl4i18n32codecvt_ustring_to_narrow_stringclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Narrow, (const void* self, Text text), (self, text), ToNarrow, Unconvertible())
WRAP("_ZNK2fl4i18n24codecvt_ascii_to_ustringclB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE",
     ustring, Wide, (const void* self, std::string_view text), (self, text), FromAscii, Unconvertible())
WRAP("_ZNK2fl4i18n24codecvt_ustring_to_asciiclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Ascii, (const void* self, Text text), (self, text), ToAscii, Unconvertible())
WRAP("_ZNK2fl4i18n25codecvt_ustring_to_stringclERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     std::string, Encoded, (const void* self, Text text), (self, text), ToEncoding, Unconvertible())
WRAP("_ZNK2fl4i18n25codecvt_string_to_ustringclB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEE",
     ustring, Decoded, (const void* self, std::string_view text), (self, text), FromEncoding, Unconvertible())
WRAP("_ZN2fl10filesystem12current_pathB5cxx11Ev",
     ustring, CurrentPath, (), (), CurrentPath, throw files::PathNotFound("gone"))
WRAP("_ZN2fl10filesystem12current_pathERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEE",
     void, ChangePath, (Text name), (name), ChangePath, throw files::AccessDenied("closed"))
WRAP("_ZN2fl10filesystem9canonicalERKNSt7__cxx1112basic_stringIDsSt11char_traitsIDsESaIDsEEES8_",
     ustring, Canonical, (Text name, Text base), (name, base), Canonical, throw files::InvalidArgument("no name"))
WRAP("_ZN2fl10filesystem16open_for_readingEPKc",
     std::FILE*, OpenFile, (const char* name), (name), OpenFile, return nullptr)
// clang-format on

// The host's blocks are counted as those of operator new. A lack of memory ends the process in the third.

#define WRAP_BLOCK(symbol, name, parameters, arguments, fails, count)                                        \
    void* Real##name parameters asm("__real_" symbol);                                                       \
    void* name parameters asm("__wrap_" symbol);                                                             \
    void* name parameters {                                                                                  \
        if (fails)                                                                                           \
            return nullptr;                                                                                  \
        faults::Get().liveBlocks += count;                                                                   \
        return Real##name arguments;                                                                         \
    }

WRAP_BLOCK("_Z10HostCallocmm", Calloc, (std::size_t count, std::size_t size), (count, size),
           faults::IsDue(faults::HostBlock), 1)
WRAP_BLOCK("_Z11HostReallocPvm", Realloc, (void* old, std::size_t size), (old, size),
           faults::IsDue(faults::HostBlock), old ? 0 : 1)
WRAP_BLOCK("_Z19HostMallocWithCheckm", Malloc, (std::size_t size), (size), false, 1)

void RealFree(void* block) asm("__real__Z8HostFreePv");
void WrappedFree(void* block) asm("__wrap__Z8HostFreePv");
void WrappedFree(void* block) {
    faults::Get().liveBlocks -= block ? 1 : 0;
    RealFree(block);
}
