#pragma once

#include <string>

#include <boost/function.hpp>

class IPathManager;

/// All paths in service by name, process-wide. Names compare byte for byte; managers enter at the end of
/// their construction and leave in RemovePath. Plain pointers: the registry keeps nothing alive.
class PathRegistry {
  public:
    static IPathManager* Find(const std::string& name);
    static bool IsEmpty();
    static void Insert(const std::string& name, IPathManager* manager);
    static void Erase(const std::string& name);

    /// Visits every path that is in service at the start and still is when its turn comes, so that a visit
    /// may remove paths. The order has no meaning.
    static void ForEach(const boost::function<void(IPathManager&)>& visit);
};
