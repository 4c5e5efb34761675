#pragma once

/// The name of the current path in one scope, the host's unit of storage per virtual machine. The scope
/// owns the record; nobody here owns the text.
class PathNameStorage {
  public:
    /// The current scope's record, or null before Create.
    static PathNameStorage* Find();
    /// The current scope's record, made if there is none.
    static PathNameStorage& Create();
    /// @pre Create was called in this scope; ends the process otherwise
    static PathNameStorage& Get();

    const char* m_name = nullptr;
};
