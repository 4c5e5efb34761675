#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <ovsel/ovsel.hpp>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

/// A path over a real tree, whose folders lie under `T:`, a local drive. It stands in `T:\cwd`.
class RealDisk : public testing::Test {
  protected:
    RealDisk() {
        linux_hooks::InstallDefaultHooks();
        linux_host::DriveMap::Add(u"T:", tree.Root(), linux_host::DriveMap::Kind::Fixed);
    }
    ~RealDisk() override {
        Close();
        linux_host::DriveMap::Reset();
    }
    void Open(const char16_t* prefix = nullptr) {
        tree.Add({"cwd/"});
        path = ovCreatePathWithPreFrozen(0, "main", prefix, ovCaseSensitive, true);
        ASSERT_EQ(nullptr, ovSetCWDName(path, u"T:\\cwd"));
    }
    void Close() {
        path = ovPath();
        ovTerminate();
        fl::filesystem::current_path(before); // which the path has moved
    }

    const ustring before = fl::filesystem::current_path();
    test::TempTree tree = test::TempTree::InMemory();
    ovPath path;
};
