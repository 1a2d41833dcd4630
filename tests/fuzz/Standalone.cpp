// Runs a fuzz target once on each file, if the program is built without a fuzzer: the corpus as a test.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

void Run(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    fprintf(stderr, "%s\n", path.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int runs = 0;
    for (int index = 1; index < argc; ++index) {
        const std::filesystem::path path = argv[index];
        if (!std::filesystem::is_directory(path)) {
            Run(path);
            ++runs;
            continue;
        }
        for (const auto& file : std::filesystem::directory_iterator(path)) {
            Run(file.path());
            ++runs;
        }
    }
    if (runs == 0) {
        fprintf(stderr, "expected files or folders of inputs, found none\n");
        return 2;
    }
    printf("%d inputs\n", runs);
    return 0;
}
