#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

/// An empty folder that is the working directory as long as this lives.
class TemporaryFolder {
public:
    TemporaryFolder() : before(std::filesystem::current_path()) {
        static int number = 0;
        path = std::filesystem::temp_directory_path() /
               ("norvik2d_" + std::to_string(getpid()) + "_" + std::to_string(++number));
        std::filesystem::create_directory(path);
        std::filesystem::current_path(path);
    }
    ~TemporaryFolder() {
        std::filesystem::current_path(before);
        std::filesystem::remove_all(path);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The files in it, and in folders in it, by their names from here, with what is in them.
    static std::map<std::string, std::string> files() {
        std::map<std::string, std::string> contents;
        for (const auto& entry : std::filesystem::recursive_directory_iterator("."))
            if (entry.is_regular_file()) {
                std::ifstream in(entry.path(), std::ios::binary);
                contents[entry.path().string()] = {std::istreambuf_iterator<char>(in), {}};
            }
        return contents;
    }

private:
    std::filesystem::path before, path;
};
