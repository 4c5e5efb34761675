#pragma once

#include <ovsel/hooks.hpp>

/// The five I/O hooks in their order.
struct IOHooks {
    ovReadDirectoryFcn m_readDirectoryFcn = nullptr;
    ovDirAccessibilityFcn m_dirAccessibilityFcn = nullptr;
    ovReservedIOFcn m_reservedIOFcn = nullptr;
    ovDirExistsFcn m_dirExistsFcn = nullptr;
    ovFileTimeFcn m_fileTimeFcn = nullptr;

    /// Each hook of @p preferred, or of @p fallback where that is null.
    static IOHooks Merge(const IOHooks& preferred, const IOHooks& fallback);
    bool IsComplete() const;

    /// The defaults that new paths copy.
    static const IOHooks& Defaults();
    static bool AreDefaultsComplete();
};
