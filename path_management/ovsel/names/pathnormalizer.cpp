#include "ovsel/names/pathnormalizer.hpp"

#include "host_interfaces/filesystem.hpp"

using fl::filesystem::CURRENT_DIRECTORY;
using fl::filesystem::PARENT_DIRECTORY;
using fl::filesystem::PATHNAME_SEPARATOR;

/// Walks the elements of a name as the filesystem layer cuts them: separators of the root come as elements.
struct PathNormalizer::Cursor {
    explicit Cursor(const ustring& text)
        : name(text),
          rootLength(fl::filesystem::get_root_path_length(text)),
          element(fl::filesystem::extract_first_element(text, rootLength)) {}

    bool AtEnd() const { return position >= name.size(); }
    void Advance() { fl::filesystem::move_down(name, rootLength, position, element); }
    void AdvancePastSeparators() {
        do
            Advance();
        while (element == PATHNAME_SEPARATOR);
    }

    const ustring& name;
    const std::size_t rootLength;
    std::size_t position = 0;
    ustring element;
};

namespace {

bool IsServer(const ustring& element) {
    return element.size() > 2 && element[0] == PATHNAME_SEPARATOR[0] && element[1] == PATHNAME_SEPARATOR[0];
}

void AppendElement(ustring& text, const ustring& element) {
    if (!text.empty() && !text.ends_with(PATHNAME_SEPARATOR) && element != PATHNAME_SEPARATOR)
        text += PATHNAME_SEPARATOR;
    text += element;
}

} // namespace

ustring PathNormalizer::Normalize() {
    m_rootElements.clear();
    m_nameElements.clear();
    Cursor cursor(m_name);
    TakeRoot(cursor);
    TakeNames(cursor);
    return Join();
}

void PathNormalizer::TakeRoot(Cursor& cursor) {
    m_rootElements.push_back(cursor.element);
    cursor.AdvancePastSeparators();
    if (IsServer(m_rootElements.front())) {
        if (cursor.AtEnd())
            throw ovsel::incorrect_root_exception();
        m_rootElements.push_back(cursor.element);
        cursor.AdvancePastSeparators();
    }
    if (!m_rootElements.back().ends_with(PATHNAME_SEPARATOR))
        m_rootElements.back() += PATHNAME_SEPARATOR;
}

void PathNormalizer::TakeNames(Cursor& cursor) {
    for (; !cursor.AtEnd(); cursor.Advance()) {
        if (cursor.element == PARENT_DIRECTORY) {
            if (!m_nameElements.empty())
                m_nameElements.pop_back();
        } else if (cursor.element != CURRENT_DIRECTORY) {
            m_nameElements.push_back(cursor.element);
        }
    }
}

ustring PathNormalizer::Join() const {
    ustring text;
    for (const ustring& element : m_rootElements)
        AppendElement(text, element);
    for (const ustring& element : m_nameElements)
        AppendElement(text, element);
    return text;
}
