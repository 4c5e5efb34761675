#include "ovsel/model/fileextension.hpp"

#include <algorithm>
#include <cstring>
#include <memory>

FileExtension::FileExtension(std::u16string_view diskName) {
    const std::size_t dot = diskName.rfind(u'.');
    if (dot == std::u16string_view::npos)
        return;
    const std::u16string_view text = diskName.substr(dot + 1);
    if (text.empty()) {
        m_units[0] = emptyMark;
    } else if (text.size() <= longestInPlace) {
        std::copy(text.begin(), text.end(), m_units.begin());
    } else {
        auto block = std::make_unique<char16_t[]>(text.size() + 1);
        std::copy(text.begin(), text.end(), block.get());
        const char16_t* const address = block.release();
        static_assert(sizeof address == longestInPlace * sizeof(char16_t));
        std::memcpy(m_units.data() + 1, &address, sizeof address);
        m_units[0] = longMark;
    }
}

FileExtension::~FileExtension() {
    if (m_units[0] == longMark)
        delete[] LongText();
}

char16_t* FileExtension::LongText() const {
    char16_t* text = nullptr;
    std::memcpy(&text, m_units.data() + 1, sizeof text);
    return text;
}
