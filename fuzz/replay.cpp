// Runs a fuzz target over stored inputs: every file of the folders named as arguments. Fails when there is none.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        std::error_code missing;
        for (const auto &entry : std::filesystem::directory_iterator(argv[i], missing)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    printf("%d inputs replayed\n", inputs);
    return inputs ? 0 : 1;
}
