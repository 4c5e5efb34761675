#pragma once

#include <vector>

#include <xercesc/sax2/DefaultHandler.hpp>

#include "ovsel/reading/cacheddircontents.hpp"

namespace Quorrant::ovsel {

/// Fills a map from the elements of a cache file. Errors below fatal are passed over; fatal ones are thrown
/// as they come.
class PathCacheHandler final : public xercesc::DefaultHandler {
  public:
    explicit PathCacheHandler(CachedDirMap* contents) : m_contents(contents) {}

    /// @throws fl::i18n::MessageException for an element that a cache file does not have there.
    void startElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qName,
                      const xercesc::Attributes& attributes) override;
    void endElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qName) override;

  private:
    void OpenDirectory(const ustring& name);
    void AddEntry(char16_t letter, ustring name);

    CachedDirMap* m_contents;
    std::vector<CachedDirMap::value_type*> m_dirStack; ///< the open directories, innermost last
    int m_depth = 0;                                   ///< of all open elements
};

} // namespace Quorrant::ovsel
