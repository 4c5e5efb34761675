#include "ovsel/frame/builtin.hpp"

#include <any>
#include <optional>

#include "host_interfaces/array.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/text.hpp"

namespace vfs = foundation::storage::vfs;

namespace {

/// The name with links and dots resolved; nothing if anything at all goes wrong on the way.
std::optional<ustring> CanonicalName(const ustring& name) {
    try {
        const vfs::StorageSystemReference storage(vfs::createStorageSystem(std::any(), nullptr));
        const vfs::Folder folder(vfs::toAbsoluteIRI(u"file", host::AbsolutizeByCurrentFolder(name)), storage);
        return vfs::fromAbsoluteIRI(folder.getCanonicalLocation());
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace

void AbsolutizePath(int /*outputCount*/, HostArray* outputs[], int /*inputCount*/,
                    const HostArray* inputs[]) {
    const ustring given = host::TextOfArray(*inputs[0]);
    // Raised outside the guard, which would take it for one more failure of the layers beneath.
    const std::optional<ustring> name = CanonicalName(given);
    if (!name)
        throw fl::i18n::MessageException({"SORVEN:ovsel", "cannotAbsolutizePath", {given}});
    outputs[0] = host::NewTextArray(*name);
}
