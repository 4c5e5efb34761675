#include "ovsel/frame/messages.hpp"

#include <string>
#include <utility>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"

namespace {

ovEnvironmentFcns& Hooks() {
    static ovEnvironmentFcns hooks{};
    return hooks;
}

ovMessageFcn HookOf(MessageChannel channel) {
    switch (channel) {
    case MessageChannel::Error:
        return Hooks().errorFcn;
    case MessageChannel::Warning:
        return Hooks().warningFcn;
    case MessageChannel::Info:
        break;
    }
    return Hooks().infoFcn;
}

/// A name may hold what narrow text cannot; the message then goes out without its arguments rather than not
/// at all.
std::string NarrowText(const fl::i18n::Message& message) {
    const fl::i18n::Locale& locale = fl::i18n::Locale::global();
    try {
        return fl::i18n::codecvt_ustring_to_narrow_string()(fl::i18n::message_text(message, locale));
    } catch (const fl::i18n::CvtInvalidCharacter&) {
        return message.FullId();
    }
}

} // namespace

void ReportMessage(MessageChannel channel, const char* id, std::vector<ustring> arguments) {
    host::Platform().EndNeighbours();
    const fl::i18n::Message message{"SORVEN:ovsel", id, std::move(arguments)};
    if (const ovMessageFcn hook = HookOf(channel))
        hook(NarrowText(message).c_str());
}

void ovSetMessageFcns(ovMessageFcn errorFcn, ovMessageFcn warningFcn, ovMessageFcn infoFcn) {
    Hooks() = {errorFcn, warningFcn, infoFcn};
}

ovEnvironmentFcns* ovGetEnvironmentFcns() {
    auto* block = static_cast<ovEnvironmentFcns*>(HostCalloc(1, sizeof(ovEnvironmentFcns)));
    if (block)
        *block = Hooks();
    return block;
}

void ovReturnEnvironmentFcns(ovEnvironmentFcns* fcns) {
    Hooks() = *fcns;
    HostFree(fcns);
}
