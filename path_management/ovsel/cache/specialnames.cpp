#include "ovsel/cache/specialnames.hpp"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/ovselconstants.hpp"

namespace Quorrant::ovsel {

ustring FoldedName(std::u16string_view name) {
    char16_t seen = 0;
    for (const char16_t unit : name)
        seen |= unit;
    if (seen < 0x80) {
        ustring lowered(name);
        std::transform(lowered.begin(), lowered.end(), lowered.begin(), LowerAscii);
        return lowered;
    }
    // One unit folds to three at most.
    ustring folded(name.size() * 3, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        u_strFoldCase(folded.data(), static_cast<std::int32_t>(folded.size()), name.data(),
                      static_cast<std::int32_t>(name.size()), U_FOLD_CASE_DEFAULT, &status);
    folded.resize(static_cast<std::size_t>(length));
    return folded;
}

bool SpecialNames::IsRepeated(std::u16string_view name) {
    const DirItemKind kind = ClassifyDirEntryName(name);
    const bool isSpecial = kind == DirItemClassDir || kind == DirItemPackageDir || kind == DirItemPrivateDir;
    return isSpecial && !m_names.insert(m_caseSensitive ? ustring(name) : FoldedName(name)).second;
}

} // namespace Quorrant::ovsel
