#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace kelvo::cli {

/// Where the thumbnails of one run go.
class ThumbnailFolder {
public:
    /// Makes it when it is not there. `files` are those of the run. Throws CommandError (file).
    ThumbnailFolder(std::string folder, const std::vector<std::string>& files);

    /// The name in the folder that the thumbnail of a file gets: that of the file with ".png" for its ending, and a number
    /// where the run has written another there, or it is one of the run's own files.
    std::string nameFor(const std::string& file);

private:
    bool isFree(const std::string& name) const;

    std::string folder_;
    std::set<std::pair<dev_t, ino_t>> files_;
    std::set<std::string> written_;
};

} // namespace kelvo::cli
