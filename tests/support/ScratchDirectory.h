#ifndef ORVABASE_TESTS_SCRATCHDIRECTORY_H
#define ORVABASE_TESTS_SCRATCHDIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

/// A directory of its own for a test, removed with all that is in it at the end of the scope.
class ScratchDirectory {
public:
    ScratchDirectory() {
        path = (std::filesystem::temp_directory_path() / "orvabase-test-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr)
            throw std::runtime_error("no scratch directory: " + path);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    /// The path of a file in the directory.
    std::string file(const std::string& name) const { return path + "/" + name; }

    /// Makes a file with a content and returns its path.
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
        return file(name);
    }

    /// The content of a file.
    std::string read(const std::string& name) const {
        std::ifstream stream(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    std::string path;
};

/// The number of descriptors that the process has open.
inline long openDescriptors() {
    long count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        (void)entry;
        ++count;
    }
    return count - 1; // one is the iteration's own
}

#endif
