#include "cli/OutputFolder.h"

#include "cli/ExitStatus.h"
#include "cli/Printable.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo::cli {

OutputFolder::OutputFolder(std::string folder, const std::vector<std::string>& files, std::string ending)
    : folder_(std::move(folder)), ending_(std::move(ending)) {
    constexpr mode_t usualMode = 0777;
    struct stat facts {};
    if (mkdir(folder_.c_str(), usualMode) != 0 &&
        (errno != EEXIST || stat(folder_.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode) ||
         access(folder_.c_str(), W_OK | X_OK) != 0))
        throw CommandError(ExitStatus::file,
                           printableFileName(folder_) +
                               ": is no folder that can be written to: " + std::strerror(errno));
    for (const std::string& file : files) {
        if (stat(file.c_str(), &facts) == 0)
            files_.emplace(facts.st_dev, facts.st_ino);
    }
}

bool OutputFolder::isFree(const std::string& name) const {
    struct stat facts {};
    return !written_.contains(name) &&
           (stat(name.c_str(), &facts) != 0 || !files_.contains({facts.st_dev, facts.st_ino}));
}

std::string OutputFolder::nameFor(const std::string& file) {
    const std::size_t end = file.find_last_not_of('/') + 1;
    const std::size_t start = file.find_last_of('/', end - 1) + 1;
    std::string stem = file.substr(start, end - start);
    const std::size_t dot = stem.rfind('.');
    if (dot != std::string::npos && dot > 0)
        stem.resize(dot);
    std::string name = folder_ + '/' + stem + ending_;
    for (unsigned number = 2; !isFree(name); ++number)
        name = folder_ + '/' + stem + ' ' + std::to_string(number) + ending_;
    written_.insert(name);
    return name;
}

} // namespace kelvo::cli
