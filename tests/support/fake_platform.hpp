#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host_interfaces/platform.hpp"

/// A platform whose answers are set by the test, in force while it lives. It keeps a diary: calls are
/// counted by operation, so that "asks the system once" is an ordinary assertion.
class FakePlatform : public host::IPlatform {
  public:
    /// The mode in which the tests run is that of the process.
    FakePlatform() : m_previous(host::SetPlatform(this)) {
        if (const char* mode = m_previous->GetEnvironment("PATH_MGR_MODE"))
            environment["PATH_MGR_MODE"] = mode;
    }
    ~FakePlatform() override { host::SetPlatform(m_previous); }
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    std::map<ustring, std::uint32_t> driveTypes; ///< by root; any other is a fixed drive
    std::map<ustring, ustring> fullPaths;        ///< by name; any other cannot be expanded
    std::map<std::string, std::string> environment;
    std::int64_t now = 1'000'000'000;
    /// Is this byte the first of a two-byte character? By default text is single bytes.
    std::function<bool(unsigned char)> isLeadByte = [](unsigned char) { return false; };

    /// One folder under watch, as the caller left it and the test set it.
    struct Handle {
        ustring name;
        std::uint32_t answer =
            host::WaitTimeout; ///< to a wait; arming again turns WaitObject0 into WaitTimeout
    };
    std::map<host::ChangeHandle, Handle> handles;  ///< the open ones, numbered from 1 and never reused
    bool handlesRefused = false;                   ///< "no watch left"
    std::function<bool(const ustring&)> refusesAt; ///< the same for some folders only
    bool probeFilesRefused = false;                ///< "no write access"
    bool probeFilesNotified = true;                ///< does writing one signal the handles on its folder?
    std::vector<ustring> probeFiles;               ///< those written, by name
    bool checking = false;                         ///< between BeginChangeChecks and EndChangeChecks
    bool amongNeighbours = false;                  ///< between BeginNeighbours and EndNeighbours

    /// Lets all open handles on a folder answer @p answer from now on. @return how many there are.
    int SetAnswer(const ustring& folder, std::uint32_t answer) {
        int count = 0;
        for (auto& [number, handle] : handles)
            if (handle.name == folder)
                handle.answer = answer, ++count;
        return count;
    }
    int Signal(const ustring& folder) { return SetAnswer(folder, host::WaitObject0); }
    int Break(const ustring& folder) { return SetAnswer(folder, host::WaitFailed); }

    std::map<std::string, int> calls; ///< of the operations that somebody counts, by name

    std::uint32_t GetDriveType(const ustring& root) override {
        ++calls["GetDriveType"];
        const auto found = driveTypes.find(root);
        return found == driveTypes.end() ? host::DriveFixed : found->second;
    }
    ustring FullPath(const ustring& name) override {
        ++calls["FullPath"];
        const auto found = fullPaths.find(name);
        return found == fullPaths.end() ? ustring() : found->second;
    }
    std::int64_t CurrentTime() override { return now; }
    bool LocalTime(std::int64_t seconds, std::tm& result) override {
        const std::time_t time = seconds;
        return gmtime_r(&time, &result) != nullptr;
    }
    std::uint32_t CurrentProcessId() override { return 4711; }
    const char* GetEnvironment(const char* name) override {
        ++calls["GetEnvironment"];
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    }
    const char* PreviousCharacter(const char* start, const char* p) override {
        const char* character = start;
        for (const char* next = start; next < p;) {
            character = next;
            next += isLeadByte(static_cast<unsigned char>(*next)) && next + 1 < p ? 2 : 1;
        }
        return character;
    }
    host::ChangeHandle FindFirstChangeNotification(const ustring& name, bool, std::uint32_t) override {
        if (handlesRefused || (refusesAt && refusesAt(name)))
            return host::InvalidChangeHandle;
        handles[++m_lastHandle] = {name};
        return m_lastHandle;
    }
    bool FindNextChangeNotification(host::ChangeHandle handle) override {
        const auto found = handles.find(handle);
        if (found != handles.end() && found->second.answer == host::WaitObject0)
            found->second.answer = host::WaitTimeout;
        return found != handles.end();
    }
    bool FindCloseChangeNotification(host::ChangeHandle handle) override {
        return handles.erase(handle) == 1;
    }
    std::uint32_t WaitForSingleObject(host::ChangeHandle handle, std::uint32_t) override {
        const auto found = handles.find(handle);
        return found == handles.end() ? host::WaitFailed : found->second.answer;
    }
    void BeginChangeChecks() override { checking = true; }
    void EndChangeChecks() override { checking = false; }
    void BeginNeighbours() override { amongNeighbours = true; }
    void EndNeighbours() override { amongNeighbours = false; }
    bool WriteProbeFile(const ustring& name, std::string_view) override {
        ++calls["WriteProbeFile"];
        if (probeFilesRefused)
            return false;
        probeFiles.push_back(name);
        if (probeFilesNotified)
            Signal(name.substr(0, name.find_last_of(u"\\/")));
        return true;
    }

  private:
    host::IPlatform* m_previous;
    host::ChangeHandle m_lastHandle = 0;
};
