#pragma once

#include <utility>

#include "linux_host/linux_host.hpp"
#include "support/path_fixture.hpp"
#include "support/temp_tree.hpp"

/// A cache file of its own, what the library prints, and the process out of cache mode again at the end.
class Cache : public PathFixture {
  protected:
    Cache() {
        linux_host::SetPrintSink([this](std::string_view text) { printed += text; });
    }
    ~Cache() override {
        ovEnableToolboxCacheDiagnosticTrace(false);
        ovEnableToolboxCacheDiagnosticStatusReport(false);
        if (ovInToolboxCacheMode())
            ovRevertFromToolboxCache(ovCreatePath(0, "to end cache mode with"));
        ovTerminate();
        linux_host::SetPrintSink({});
    }

    /// The name of the cache file in the system's grammar.
    std::string FileName() const { return "C:" + folder.Path("cache.xml"); }
    /// Puts a cache, the last one unless its text is given, in force for the prefix `C:\T`.
    void Use(const std::string& text = "", const char16_t* prefix = u"C:\\T") {
        if (!text.empty())
            folder.Write("cache.xml", text);
        ovUseToolboxCache(path, U(FileName()), prefix, false);
    }
    /// With 0.00 for the seconds that reading took, which are the machine's.
    std::string TakePrinted() {
        std::string text = std::exchange(printed, {});
        const std::size_t end = text.find(" seconds.");
        if (end != std::string::npos && text[end - 3] == '.') {
            const std::size_t begin = text.rfind(' ', end - 1) + 1;
            text.replace(begin, end - begin, "0.00");
        }
        return text;
    }

    /// What is to be said or written, from a file beside this one.
    static std::string Told(const std::string& name) {
        std::ifstream file(OVSEL_TOLD + name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// A path under the prefix `C:\T`, with its directories frozen.
    ovPath PrefixedPath(const char* name, const std::vector<std::string>& dirs) {
        ovPath made = NewPath(name, ovCaseSensitive, u"C:\\T");
        for (const std::string& dir : dirs)
            ovAddDir(made, U(dir), ovDirAddAtEnd);
        return made;
    }

    test::TempTree folder = test::TempTree::InMemory();
    std::string printed;
};
