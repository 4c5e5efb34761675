#pragma once

#include <memory>
#include <utility>

#include <ovsel/ovsel.hpp>

#include "faults/faults.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/storage.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/frame/iohooks.hpp"

/// The host of Linux with a fault in front of each of its operations. Giving back has no way to fail.
namespace faults {

namespace vfs = foundation::storage::vfs;
using Text = const ustring&;

/// In force from its birth. What lies on `R:` cannot be watched.
class FaultyPlatform final : public host::IPlatform {
  public:
    using Handle = host::ChangeHandle;
    std::uint32_t GetDriveType(Text root) override {
        return Fails("drive type") ? host::DriveNoRoot : m_real.GetDriveType(root);
    }
    ustring FullPath(Text name) override { return Fails("full path") ? ustring() : m_real.FullPath(name); }
    std::int64_t CurrentTime() override { return Fails("clock", Throws), m_real.CurrentTime(); }
    bool LocalTime(std::int64_t time, std::tm& result) override {
        return !Fails("calendar time") && m_real.LocalTime(time, result);
    }
    std::uint32_t CurrentProcessId() override {
        return Fails("process id", Throws), m_real.CurrentProcessId();
    }
    const char* GetEnvironment(const char* name) override { return m_real.GetEnvironment(name); }
    const char* PreviousCharacter(const char* start, const char* p) override {
        return m_real.PreviousCharacter(start, p);
    }
    Handle FindFirstChangeNotification(Text name, bool subtree, std::uint32_t filter) override {
        return Fails("open watch") || name.starts_with(u"R:")
                   ? host::InvalidChangeHandle
                   : m_real.FindFirstChangeNotification(name, subtree, filter);
    }
    bool FindNextChangeNotification(Handle handle) override {
        return !Fails("rearm watch") && m_real.FindNextChangeNotification(handle);
    }
    bool FindCloseChangeNotification(Handle handle) override {
        return m_real.FindCloseChangeNotification(handle);
    }
    std::uint32_t WaitForSingleObject(Handle handle, std::uint32_t milliseconds) override {
        return Fails("wait") ? host::WaitFailed : m_real.WaitForSingleObject(handle, milliseconds);
    }
    void BeginChangeChecks() override { Fails("begin checks", Throws), m_real.BeginChangeChecks(); }
    bool HasNews() override { return m_real.HasNews(); }
    void BeginNeighbours() override { m_real.BeginNeighbours(); }
    void EndNeighbours() override { m_real.EndNeighbours(); }
    void EndChangeChecks() override { m_real.EndChangeChecks(); }
    bool WriteProbeFile(Text name, std::string_view text) override {
        return !Fails("probe file") && m_real.WriteProbeFile(name, text);
    }

  private:
    IPlatform& m_real = *host::SetPlatform(this);
};

inline void Storage(std::string_view name) {
    if (Fails(name))
        throw vfs::Exception("the storage is on fire");
}

class FaultyBytes final : public std::streambuf {
  public:
    explicit FaultyBytes(std::unique_ptr<std::streambuf> real) : m_real(std::move(real)) {}

  protected:
    std::streamsize xsgetn(char* text, std::streamsize length) override {
        return Storage("stream: read"), m_real->sgetn(text, length);
    }
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        return Storage("stream: write"), m_real->sputn(text, length);
    }
    int sync() override { return Storage("stream: flush"), m_real->pubsync(); }

  private:
    std::unique_ptr<std::streambuf> m_real;
};

class FaultyStorage final : public vfs::StorageSystem {
  public:
    using Location = const vfs::AbsoluteIRI&;
    using Bytes = std::unique_ptr<std::streambuf>;

    std::vector<Entry> ListAll(Location folder) const override {
        return Storage("storage: list"), m_real->ListAll(folder);
    }
    bool FolderExists(Location folder) const override {
        return Storage("storage: folder exists"), m_real->FolderExists(folder);
    }
    vfs::AbsoluteIRI CanonicalLocation(Location location) const override {
        return Storage("storage: canonical"), m_real->CanonicalLocation(location);
    }
    Bytes OpenForReading(Location file) const override {
        return Storage("storage: open to read"), std::make_unique<FaultyBytes>(m_real->OpenForReading(file));
    }
    Bytes OpenForWriting(Location file) const override {
        return Storage("storage: open to write"), std::make_unique<FaultyBytes>(m_real->OpenForWriting(file));
    }

  private:
    std::shared_ptr<StorageSystem> m_real = vfs::createStorageSystem({}, nullptr);
};

/// Once for the process.
inline void InstallFaultyHost() {
    static FaultyPlatform platform;
    linux_host::testing::SetStorageSystem(std::make_shared<FaultyStorage>());
    linux_hooks::InstallDefaultHooks();
    ovEnableToolboxCacheDiagnosticStatusReport(true);
    static const IOHooks real = IOHooks::Defaults();
    ovSetDefaultIOFcns(
        [](ovPath path, Text name, unsigned short** words) {
            return Fails("hook: list") ? nullptr : real.m_readDirectoryFcn(path, name, words);
        },
        [](ovPath path, Text name) {
            return Fails("hook: access") ? ovDirAccessFailure : real.m_dirAccessibilityFcn(path, name);
        },
        real.m_reservedIOFcn,
        [](ovPath path, Text name) { return !Fails("hook: exists") && real.m_dirExistsFcn(path, name); },
        [](ovPath path, Text name) { return Fails("hook: time") ? 0L : real.m_fileTimeFcn(path, name); });
    ovSetIsClassFcn([](Text name) { return !Fails("hook: class") && name.find(u"K.") != ustring::npos; });
    const auto hear = [](const char*) { Fails("hook: message", Throws); };
    ovSetMessageFcns(hear, hear, hear);
    linux_host::SetPrintSink([](std::string_view) { Fails("hook: print", Throws); });
}

} // namespace faults
