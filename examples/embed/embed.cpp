// A host in twenty lines: give it folders and ask it what a name means.
// usage: ovsel_embed NAME FOLDER...
#include <iostream>

#include <host_interfaces/text.hpp>
#include <linux_hooks/linux_hooks.hpp>
#include <ovsel/ovsel.hpp>

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    linux_hooks::InstallDefaultHooks();
    ovSetMessageFcns(
        nullptr, [](const char* text) { std::cerr << text << '\n'; }, nullptr);

    const ovPath path =
        ovCreatePathWithPreFrozen(0, "main", static_cast<const char16_t*>(nullptr), ovCaseSensitive, true);
    for (int i = 2; i < argc; ++i)
        ovAddDir(path, argv[i], ovDirAddAtEnd);

    const char* const extensions[] = {".p", ".sv", nullptr};
    ovDir where;
    ustring file;
    if (ovFindFirstFileVisibleToFile(path, u"", fl::i18n::to_ustring(argv[1]), extensions, &where, file) == 0)
        return 1;
    std::cout << fl::i18n::codecvt_ustring_to_narrow_string()(file) << '\n';
}
