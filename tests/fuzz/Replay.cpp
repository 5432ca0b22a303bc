// SPDX-License-Identifier: Apache-2.0
// Runs a target once with each file of a corpus, for builds without libFuzzer.
#include "Target.hpp"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace
{

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& directory)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

std::string contentOf(const std::filesystem::path& file)
{
    std::string content(std::filesystem::file_size(file), '\0');
    std::ifstream in;
    in.exceptions(std::ios::badbit | std::ios::failbit);
    in.open(file, std::ios::binary);
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
}

int replay(const std::filesystem::path& corpus)
{
    const auto files = filesOf(corpus);
    if (files.empty()) {
        std::cerr << "no file in " << corpus << std::endl;
        return 1;
    }
    for (const auto& file : files) {
        std::cout << file.filename().string() << std::endl; // the last one is that which failed
        const auto content = contentOf(file);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    }
    std::cout << files.size() << " inputs" << std::endl;
    return 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::cerr << "Usage: replay CORPUS" << std::endl;
        return 2;
    }
    try {
        return replay(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
