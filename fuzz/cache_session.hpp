#pragma once

#include <algorithm>
#include <cstdio>
#include <sstream>

#include <ovsel/ovsel.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "fuzz/body.hpp"
#include "host_interfaces/filesystem.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/cache/xmlreader.hpp"
#include "support/fake_platform.hpp"
#include "support/fake_storage.hpp"
#include "support/invariants.hpp"
#include "support/map_receiver.hpp"

/// @file
/// A process whose one file is the input: what the targets share that read it as a cache.

namespace cache_session {

namespace vfs = foundation::storage::vfs;
using Quorrant::ovsel::CachedDirMap;

inline std::string g_file;
inline bool g_readingFails = false; ///< behind the last byte, for the reader that is no XML parser

/// The fake disk, which is empty, but for the file.
class Storage final : public FakeStorage {
  public:
    std::unique_ptr<std::streambuf> OpenForReading(const AbsoluteIRI&) const override {
        return std::make_unique<std::stringbuf>(g_file, std::ios::in);
    }
};

/// What all inputs find: paths without a directory, in one mode.
class Session {
  public:
    explicit Session(const char* mode) {
        xercesc::XMLPlatformUtils::Initialize(); // held, so that it need not start anew for each input
        m_platform.environment["PATH_MGR_MODE"] = mode;
        linux_host::SetPrintSink([](std::string_view) {});
        linux_host::testing::SetStorageSystem(std::make_shared<Storage>());
        FakeDisk::Get().dirs[N(fl::filesystem::current_path())];
        FakeDisk::Get().Install();
        m_path = ovCreatePath(0, "from the cache");
        m_receiver = ovCreatePath(0, "receiver");
    }

    /// @return whether the XML reader takes the file. @pre the mode is vfs.
    bool ReadXml(CachedDirMap& contents) {
        m_receiver->SetDirItemsIteratorFactory(std::make_unique<MapReceiver>(contents));
        try {
            return Quorrant::ovsel::ReadCacheFileXML(m_receiver, vfs::toAbsoluteIRI(u"file", u"R:\\cache"),
                                                     vfs::toAbsoluteIRI(u"file", u"R:\\T"));
        } catch (const fl::i18n::MessageException&) {
            return false;
        }
    }

    /// Lets a path take some of the cache's directories from it, and looks at what it makes of them.
    void RunFromCache(const std::vector<ustring>& dirs) {
        ovUseToolboxCache(m_path, u"R:\\cache", u"R:\\T", false);
        Expect(ovInToolboxCacheMode(), "a cache that can be read can be used");
        for (std::size_t i = 0; i < std::min<std::size_t>(dirs.size(), 6); ++i)
            ovAddDir(m_path, fl::filesystem::make_native_form(u"R:\\T\\" + dirs[i], true), ovDirAddAtEnd);
        ExpectSame(InvariantCheck(m_path).Run(), "", "the index is whole");
        ovReplacePath(m_path, u"");
        ovRevertFromToolboxCache(m_path);
    }

  private:
    FakePlatform m_platform;
    ovPath m_path, m_receiver;
};

} // namespace cache_session

/// In place of the host's. A target is one source, so that this stands in it once.
std::FILE* fl::filesystem::open_for_reading(const char*) {
    std::FILE* file = ::fmemopen(cache_session::g_file.data(), cache_session::g_file.size(), "r");
    if (!file || !cache_session::g_readingFails)
        return file;
    const auto read = [](void* below, char* to, std::size_t size) -> ssize_t {
        const std::size_t taken = std::fread(to, 1, size, static_cast<std::FILE*>(below));
        return taken == 0 ? -1 : static_cast<ssize_t>(taken);
    };
    const auto seek = [](void* below, off64_t* offset, int whence) {
        const int result = std::fseek(static_cast<std::FILE*>(below), *offset, whence);
        *offset = std::ftell(static_cast<std::FILE*>(below));
        return result;
    };
    const auto close = [](void* below) { return std::fclose(static_cast<std::FILE*>(below)); };
    return ::fopencookie(file, "r", {read, nullptr, seek, close});
}
