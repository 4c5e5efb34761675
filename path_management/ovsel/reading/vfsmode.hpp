#pragma once

/// Do directories come from the storage layer rather than from the I/O hooks? Decided for the life of the
/// process at the first question, by the environment variable PATH_MGR_MODE, which must be exactly "vfs".
bool IsVFSMode();
