#include "ovsel/cache/pathcachehandler.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include <xercesc/sax2/Attributes.hpp>

#include "ovsel/cache/cacheerrors.hpp"
#include "ovsel/cache/cachelimits.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr std::u16string_view RootElement = u"Quorrant";

/// The list that an entry of that letter goes to, or null.
std::vector<ustring>* ListFor(CachedDirContents& contents, char16_t letter) {
    switch (letter) {
    case u'd':
        return &contents.subdirs;
    case u'F':
        return &contents.files;
    case u'C':
        return &contents.classFiles;
    case u'N':
        return &contents.noClassFiles;
    case u'U':
        return &contents.unconfirmed;
    default:
        return nullptr;
    }
}

/// The parser tells the local name only where it was told to mind name spaces; a prefix without one means
/// nothing then.
const XMLCh* LocalNameOf(const XMLCh* localName, const XMLCh* qName) {
    if (*localName != u'\0')
        return localName;
    if (std::u16string_view(qName).find(u':') != std::u16string_view::npos)
        throw PathCacheXMLParseError(ustring(u"An unknown prefix: ") + qName);
    return qName;
}

fl::i18n::MessageException TooDeep() {
    return PathCacheXMLParseError(u"The directories are nested too deeply.");
}

} // namespace

void PathCacheHandler::startElement(const XMLCh* /*uri*/, const XMLCh* localName, const XMLCh* qName,
                                    const xercesc::Attributes& attributes) {
    localName = LocalNameOf(localName, qName);
    // Directories in each other, in the root, with one entry in the innermost.
    if (++m_depth > MostCacheDepth + 2)
        throw TooDeep();
    if (RootElement == localName)
        return;
    const XMLCh* name = attributes.getValue(u"name");
    if (!name)
        throw CacheFileWrongFormat();
    // Only the first character counts.
    if (localName[0] == u'D')
        OpenDirectory(name);
    else
        AddEntry(localName[0], name);
}

/// A directory is as deep as its name says, wherever it stands: that is how deep the records go.
void PathCacheHandler::OpenDirectory(const ustring& name) {
    if (m_dirStack.size() == MostCacheDepth || std::count(name.begin(), name.end(), u'/') >= MostCacheDepth)
        throw TooDeep();
    const auto [opened, isNew] = m_contents->try_emplace(name);
    if (!isNew)
        throw CacheFileWrongFormat();
    if (!m_dirStack.empty())
        m_dirStack.back()->second.subdirs.push_back(name);
    m_dirStack.push_back(&*opened);
}

void PathCacheHandler::AddEntry(char16_t letter, ustring name) {
    std::vector<ustring>* list = m_dirStack.empty() ? nullptr : ListFor(m_dirStack.back()->second, letter);
    if (!list)
        throw CacheFileWrongFormat();
    list->push_back(std::move(name));
}

void PathCacheHandler::endElement(const XMLCh* /*uri*/, const XMLCh* localName, const XMLCh* qName) {
    --m_depth;
    if (!m_dirStack.empty() && std::u16string_view(LocalNameOf(localName, qName)) == u"D")
        m_dirStack.pop_back();
}

} // namespace Quorrant::ovsel
