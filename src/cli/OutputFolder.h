#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace kelvo::cli {

/// Where what a run makes of several files goes.
class OutputFolder {
public:
    /// Makes it when it is not there. `files` are those of the run, `ending` (".png") that of what is made of them. Throws
    /// CommandError (file).
    OutputFolder(std::string folder, const std::vector<std::string>& files, std::string ending);

    /// The name in the folder of what is made of a file: that of the file with the other ending, and a number where the run
    /// has written another there, or it is one of the run's own files.
    std::string nameFor(const std::string& file);

private:
    bool isFree(const std::string& name) const;

    std::string folder_;
    std::string ending_;
    std::set<std::pair<dev_t, ino_t>> files_;
    std::set<std::string> written_;
};

} // namespace kelvo::cli
