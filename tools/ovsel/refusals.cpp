#include "tools/ovsel/refusals.hpp"

#include <optional>
#include <string_view>

#include <fmt/format.h>

#include <host_interfaces/text.hpp>
#include <linux_host/linux_host.hpp>

#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

/// The folder that a message of that kind names. The message arrives as text in whatever language, so it is
/// recognised by the catalogue's own text around a mark that no name holds.
std::optional<ustring> FolderIn(const ustring& message, const char* id) {
    static const ustring mark(1, u'\n');
    const ustring whole = fl::i18n::message_text({"SORVEN:ovsel", id, {mark}}, fl::i18n::Locale::global());
    const std::u16string_view text = message;
    const std::u16string_view head = std::u16string_view(whole).substr(0, whole.find(mark));
    const std::u16string_view tail = std::u16string_view(whole).substr(head.size() + mark.size());
    if (text.size() < head.size() + tail.size() || !text.starts_with(head) || !text.ends_with(tail))
        return std::nullopt;
    return ustring(text.substr(head.size(), text.size() - head.size() - tail.size()));
}

} // namespace

bool Refusals::Take(const std::string& message) {
    const ustring text = fl::i18n::to_ustring(message.c_str());
    for (Kind& kind : m_kinds) {
        auto folder = FolderIn(text, kind.id);
        if (!folder)
            continue;
        if (kind.folders.empty()) {
            const auto path = linux_host::DriveMap::ToPath(*folder);
            kind.example = path ? Shown(*path) + ": " + message : message;
        }
        kind.folders.insert(std::move(*folder));
        return true;
    }
    return false;
}

void Refusals::Report() {
    for (Kind& kind : m_kinds) {
        if (kind.shown || kind.folders.empty())
            continue;
        kind.shown = true;
        const std::size_t more = kind.folders.size() - 1;
        Complain(more == 0 ? kind.example
                           : fmt::format("{} (and {} more such folder{})", kind.example, more,
                                         more == 1 ? "" : "s"));
    }
}

std::size_t Refusals::Count() const {
    std::size_t count = 0;
    for (const Kind& kind : m_kinds)
        count += kind.folders.size();
    return count;
}

} // namespace tool
