#include "fuzz/Fuzzing.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

// Runs a fuzz target on the files that are named, and on those in the folders that are named. Needs
// no libFuzzer, so that any compiler can build the kept inputs into the tests.

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& path)
{
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<char> contentOf(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    in.exceptions(std::ios::badbit | std::ios::failbit);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::size_t count = 0;
        for (int i = 1; i < argc; ++i) {
            for (const fs::path& file : filesIn(argv[i])) {
                std::cout << file.string() << std::endl; // before a check may end the process
                const std::vector<char> content = contentOf(file);
                LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()),
                                       content.size());
                ++count;
            }
        }
        std::cout << count << " inputs" << std::endl;
        return count > 0 ? 0 : 1; // an empty folder has protected nothing
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
