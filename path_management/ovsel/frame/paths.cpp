#include <ovsel/paths.hpp>

#include <new>
#include <string>

#include "host_interfaces/text.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/iohooks.hpp"
#include "ovsel/frame/messages.hpp"
#include "ovsel/frame/pathmgr.hpp"
#include "ovsel/frame/pathregistry.hpp"

ovPath ovCreatePathWithPreFrozen(int, const char* name, const char16_t* preFrozenPrefix,
                                 ovCaseSensitivity caseSensitivity, bool disableTempFileProbe) {
    if (!IOHooks::AreDefaultsComplete()) {
        ReportMessage(MessageChannel::Error, "cannotConstructPathNoIOFunctions");
        return ovPath();
    }
    if (PathRegistry::Find(name)) {
        ReportMessage(MessageChannel::Error, "cannotConstructPathDuplicate", {fl::i18n::to_ustring(name)});
        return ovPath();
    }
    return ovPath(new (std::nothrow) PathMgr(name, preFrozenPrefix, caseSensitivity, disableTempFileProbe));
}

ovPath ovCreatePathWithPreFrozen(int unused, const char* name, const char* preFrozenPrefix,
                                 ovCaseSensitivity caseSensitivity, bool disableTempFileProbe) {
    const ustring prefix = fl::i18n::to_ustring(preFrozenPrefix);
    return ovCreatePathWithPreFrozen(unused, name, preFrozenPrefix ? prefix.c_str() : nullptr,
                                     caseSensitivity, disableTempFileProbe);
}

ovPath ovCreatePath(int unused, const char* name) {
    return ovCreatePathWithPreFrozen(unused, name, u"", ovCasePlatformDefault, false);
}

ovPath ovLookupPath(const char* name) { return ovPath(PathRegistry::Find(name)); }

ovPath ovLookupPath(const ustring& name) {
    return ovLookupPath(fl::i18n::codecvt_ustring_to_narrow_string()(name).c_str());
}

void ovRemovePath(ovPath path) {
    if (IsPathInService(path))
        path->RemovePath();
}

bool ovTerminate() {
    const bool empty = PathRegistry::IsEmpty();
    PathRegistry::ForEach([](IPathManager& manager) {
        const ovPath held(&manager);
        manager.RemovePath();
    });
    return empty;
}
