#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <utility>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/filesystem.hpp"
#include "support/fake_disk.hpp"
#include "support/fake_platform.hpp"
#include "support/fake_storage.hpp"
#include "support/invariants.hpp"
#include "support/texts.hpp"

/// A path over the fake disk with `C:\cwd` in front, which is not the process's directory; the messages that
/// come out; and the events, by name. The index is checked at the end of each test.
class PathFixture : public testing::Test {
  protected:
    PathFixture() {
        disk = FakeDisk();
        disk.Put(N(fl::filesystem::current_path()), "");
        disk.Put("C:\\cwd", "");
        disk.Install();
        Messages().clear();
        ovSetMessageFcns(&Collect<'E'>, &Collect<'W'>, &Collect<'I'>);
        owner = ovCreatePath(0, "owner of the process's directory");
        path = NewPath("main");
    }
    /// Before the fixture's own members go, which callbacks may use.
    void TearDown() override {
        CheckIndex();
        owner = ovPath();
        path = ovPath();
        ovTerminate();
        ovSetMessageFcns(nullptr, nullptr, nullptr);
    }

    ovPath NewPath(const char* name, ovCaseSensitivity rule = ovCaseSensitive,
                   const char16_t* prefix = nullptr) {
        ovPath made = ovCreatePathWithPreFrozen(0, name, prefix, rule, false);
        EXPECT_EQ(nullptr, ovSetCWDName(made, u"C:\\cwd"));
        return made;
    }
    ovDir Add(const std::string& name, ovDirAddLocn where = ovDirAddAtEnd) {
        return ovAddDir(path, U(name), where);
    }
    ovDir Find(const std::string& name) { return ovFindDirFullName(path, U(name)); }
    /// All files that a name means, wherever on the path.
    std::string Everywhere(const std::string& name, ovExtensionList extensions = nullptr) {
        return Short(Search(ovCreateAllSearchIterator(path, U(name), extensions, ovCaseOfPath)).All());
    }
    void CheckIndex() {
        if (path != nullptr && path->IsValid())
            EXPECT_EQ("", InvariantCheck(path).Run());
    }

    /// Each message behind the letter of its hook.
    static std::vector<std::string>& Messages() {
        static std::vector<std::string> messages;
        return messages;
    }
    static std::string TakeMessages() { return Join(std::exchange(Messages(), {})); }
    /// The text of a message as it reaches a hook.
    static std::string MessageText(char hook, const char* id, std::vector<ustring> arguments = {}) {
        return std::string(1, hook) + " " +
               N(fl::i18n::message_text({"SORVEN:ovsel", id, std::move(arguments)},
                                        fl::i18n::Locale::global()));
    }

    /// Notes every event on the path as "Added C:\a" from now on.
    void Listen() {
        ovRegisterPathInterest(path, [this](ovEventType event, ovDir dir) {
            static const char* const names[] = {"Loaded",     "ReplaceBegin", "CWDBegin",   "RefreshBegin",
                                                "Removed",    "Added",        "ReplaceEnd", "CWDEnd",
                                                "RefreshEnd", "PathRemoved"};
            const std::string name = N(ovGetDirName(dir));
            events.push_back(names[event] + (name.empty() ? "" : " " + name));
        });
    }
    /// Runs @p act once, at the first event of that kind on that directory.
    void At(ovEventType wanted, const std::string& name, std::function<void(ovDir)> act) {
        ovRegisterPathInterest(path, [=, done = false](ovEventType event, ovDir dir) mutable {
            if (!done && event == wanted && N(ovGetDirName(dir)) == name)
                done = true, act(dir);
        });
    }
    std::string TakeEvents() { return Join(std::exchange(events, {})); }

    FakePlatform platform;
    FakeStorageInForce storage;
    FakeDisk& disk = FakeDisk::Get();
    ovPath owner;
    ovPath path;
    std::vector<std::string> events;

  private:
    template <char Hook>
    static void Collect(const char* text) {
        Messages().push_back(std::string(1, Hook) + " " + text);
    }
};
