#include "ovsel/cache/xmlreader.hpp"

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host_interfaces/text.hpp"
#include "ovsel/cache/cacheerrors.hpp"
#include "ovsel/cache/cachelimits.hpp"
#include "ovsel/cache/pathcachehandler.hpp"
#include "ovsel/frame/ipathmanager.hpp"

namespace vfs = foundation::storage::vfs;

namespace Quorrant::ovsel {

namespace {

std::string ReadWhole(std::istream& stream) {
    constexpr std::streamsize chunk = 1 << 16;
    std::string text;
    for (;;) {
        const std::size_t length = text.size();
        text.resize(length + chunk);
        // From the buffer, since the end of the file is no failure here.
        const std::streamsize got = stream.rdbuf()->sgetn(text.data() + length, chunk);
        text.resize(length + static_cast<std::size_t>(got));
        if (got == 0)
            return text;
        if (text.size() > MostCacheBytes)
            throw PathCacheXMLParseError(u"The file is too large.");
    }
}

/// A cache has no use for a document type, and refusing it here keeps the parser away from all that one can
/// do. In a comment it is refused too.
void RefuseDocumentType(const std::string& text) {
    if (text.find("<!DOCTYPE") != std::string::npos)
        throw PathCacheXMLParseError(u"A document type is not allowed.");
}

/// A cache file's text, as the parser takes it.
struct CacheText {
    std::string bytes; ///< of a text that is all ASCII
    ustring units;     ///< of any other
    bool hasNamespaces = false;
};

CacheText Convert(std::string bytes) {
    RefuseDocumentType(bytes);
    CacheText text;
    text.hasNamespaces = bytes.find("xmlns") != std::string::npos;
    if (std::any_of(bytes.begin(), bytes.end(), [](char c) { return c < 0; }))
        text.units = fl::i18n::codecvt_string_to_ustring("UTF-8")(bytes);
    else
        text.bytes = std::move(bytes);
    return text;
}

CacheText ReadText(const ovPath& path, const vfs::AbsoluteIRI& location) {
    const auto unable = [&](const char* reason) {
        return UnableToLoadCache(vfs::fromAbsoluteIRI(location), fl::i18n::to_ustring(reason));
    };
    try {
        vfs::File file;
        path->GetFileByIRI(file, location);
        vfs::ifstream stream(file);
        stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
        return Convert(ReadWhole(stream));
    } catch (const vfs::Exception& failure) {
        throw unable(failure.what());
    } catch (const std::ios_base::failure& failure) {
        throw unable(failure.what());
    } catch (const fl::i18n::CvtInvalidCharacter& failure) {
        throw unable(failure.what());
    }
}

/// The parser's library, for as long as it is needed; it counts its users. Its exceptions live no longer.
class XercesSession {
  public:
    XercesSession() {
        try {
            xercesc::XMLPlatformUtils::Initialize();
        } catch (const xercesc::XMLException& failure) {
            throw PathCacheXMLParseError(failure.getMessage());
        } catch (const xercesc::OutOfMemoryException&) {
            throw std::bad_alloc();
        }
    }
    ~XercesSession() { xercesc::XMLPlatformUtils::Terminate(); }
    XercesSession(const XercesSession&) = delete;
    XercesSession& operator=(const XercesSession&) = delete;
};

/// Well-formedness is all that is asked of a cache, and the scanner that asks no more is the quickest. The
/// rest is belt and braces: what a document type could ask for, if one got this far.
void SetUp(xercesc::SAX2XMLReader& reader, bool hasNamespaces) {
    // The property takes a pointer to what it may change, and does not.
    reader.setProperty(xercesc::XMLUni::fgXercesScannerName,
                       const_cast<XMLCh*>(xercesc::XMLUni::fgWFXMLScanner));
    // No cache needs them, and minding them costs.
    reader.setFeature(xercesc::XMLUni::fgSAX2CoreNameSpaces, hasNamespaces);
    reader.setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
    reader.setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
}

void ParseText(const CacheText& text, CachedDirMap& contents) {
    const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
    SetUp(*reader, text.hasNamespaces);
    PathCacheHandler handler(&contents);
    reader->setContentHandler(&handler);
    reader->setErrorHandler(&handler);
    const bool isAscii = text.units.empty();
    const void* const data = isAscii ? static_cast<const void*>(text.bytes.data()) : text.units.data();
    const std::size_t size = isAscii ? text.bytes.size() : text.units.size() * sizeof(char16_t);
    xercesc::MemBufInputSource source(static_cast<const XMLByte*>(data), size, "pathXmlBuffer");
    // Whatever the text says of itself.
    source.setEncoding(isAscii ? xercesc::XMLUni::fgUTF8EncodingString
                               : xercesc::XMLUni::fgUTF16EncodingString);
    reader->parse(source);
}

void Parse(const CacheText& text, CachedDirMap& contents) {
    const XercesSession session;
    try {
        ParseText(text, contents);
    } catch (const xercesc::XMLException& failure) {
        throw PathCacheXMLParseError(failure.getMessage());
    } catch (const xercesc::SAXParseException& failure) {
        throw PathCacheXMLParseError(failure.getMessage());
    } catch (const xercesc::OutOfMemoryException&) {
        throw std::bad_alloc(); // theirs is no std::exception
    }
}

} // namespace

bool ReadCacheFileXML(const ovPath& path, const vfs::AbsoluteIRI& fileLocation,
                      const vfs::AbsoluteIRI& rootLocation) {
    const CacheText text = ReadText(path, fileLocation);
    CachedDirMap contents;
    Parse(text, contents);
    path->InstallCachedDirItems(std::move(contents), rootLocation);
    return true;
}

} // namespace Quorrant::ovsel
