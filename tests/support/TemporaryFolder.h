#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace kelvo::tests {

/// A new empty folder that is removed, with all that is in it, at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// Absolute, without a slash at the end.
    const std::string& path() const { return path_; }
    /// The path of an entry, whether it exists or not.
    std::string path(std::string_view name) const { return path_ + '/' + std::string(name); }
    /// Writes a file, and the folders on the way to it; returns its path.
    std::string write(std::string_view name, std::string_view contents) const {
        const std::filesystem::path file = path(name);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary)
            .write(contents.data(), static_cast<std::streamsize>(contents.size()));
        return file.string();
    }
    std::string read(std::string_view name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

} // namespace kelvo::tests
