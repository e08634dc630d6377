// Stands in for the fuzzer where that isn't there: gives the target all inputs in the files and folders that are named.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size);

namespace {

/// Says which one it is before a fault ends the program.
void replay(const std::filesystem::path& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    int numInputs = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            replay(argv[i]);
            ++numInputs;
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (!entry.is_regular_file()) continue;
            replay(entry.path());
            ++numInputs;
        }
    }
    return numInputs == 0 ? 1 : 0;
}
