#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <string>

#include "host_interfaces/platform.hpp"

/// A platform whose answers are set by the test, in force while it lives. It keeps a diary: calls are
/// counted by operation, so that "asks the system once" is an ordinary assertion.
class FakePlatform : public host::IPlatform {
  public:
    FakePlatform() : m_previous(host::SetPlatform(this)) {}
    ~FakePlatform() override { host::SetPlatform(m_previous); }
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    std::map<ustring, std::uint32_t> driveTypes; ///< by root; any other is a fixed drive
    std::map<ustring, ustring> fullPaths;        ///< by name; any other cannot be expanded
    std::map<std::string, std::string> environment;
    std::int64_t now = 1'000'000'000;
    std::uint32_t processId = 4711;
    /// Is this byte the first of a two-byte character? By default text is single bytes.
    std::function<bool(unsigned char)> isLeadByte = [](unsigned char) { return false; };

    std::map<std::string, int> calls; ///< by name of the operation

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
    std::int64_t CurrentTime() override {
        ++calls["CurrentTime"];
        return now;
    }
    bool LocalTime(std::int64_t seconds, std::tm& result) override {
        ++calls["LocalTime"];
        const std::time_t time = seconds;
        return gmtime_r(&time, &result) != nullptr;
    }
    std::uint32_t CurrentProcessId() override { return processId; }
    const char* GetEnvironment(const char* name) override {
        ++calls["GetEnvironment"];
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    }
    const char* PreviousCharacter(const char* start, const char* p) override {
        ++calls["PreviousCharacter"];
        const char* character = start;
        for (const char* next = start; next < p;) {
            character = next;
            next += isLeadByte(static_cast<unsigned char>(*next)) && next + 1 < p ? 2 : 1;
        }
        return character;
    }

  private:
    host::IPlatform* m_previous;
};
