// usage: fuzz_TARGET FOLDER - runs every file of a corpus through a target's body, in a build without the
// fuzzer.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/body.hpp"

int main(int count, char** arguments) {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(count == 2 ? arguments[1] : ".")) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::vector<char> input(std::istreambuf_iterator<char>(stream), {});
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
        ++files;
    }
    std::fprintf(stderr, "%zu inputs\n", files);
    return files > 0 ? 0 : 1;
}
