#include "platform/launchservices/MIMEDatabase.h"

#include "platform/filekinds/FileContents.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSLog.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr std::size_t mostBytesOfFile = 16 << 20;
/// What has less matches the sign of a comment, or two bytes that occur in anything.
constexpr int leastPriority = 40;

std::string contentsOf(const std::string& path) {
    return FileContents(openRegularFile(path)).bytes(0, mostBytesOfFile);
}

/// Has `take` look at the two words of each line that has two.
template <typename Take>
void readPairs(const std::string& path, Take take) {
    const std::string file = contentsOf(path);
    std::string_view rest = file;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::size_t blank = line.find(' ');
        if (blank != std::string_view::npos)
            take(std::string(line.substr(0, blank)), std::string(line.substr(blank + 1)));
    }
}

} // namespace

const MIMEDatabase& MIMEDatabase::system() {
    static const MIMEDatabase database = [] {
        MIMEDatabase read("/usr/share/mime");
        if (read.magic_.isEmpty())
            NSLog(
                u"There is no shared MIME database in /usr/share/mime: files are known by their names only");
        return read;
    }();
    return database;
}

MIMEDatabase::MIMEDatabase(const std::string& folder) : magic_(contentsOf(folder + "/magic"), leastPriority) {
    readPairs(folder + "/aliases", [&](std::string alias, std::string type) {
        otherNames_[alias].push_back(type);
        otherNames_[std::move(type)].push_back(std::move(alias));
    });
    readPairs(folder + "/subclasses", [&](std::string type, std::string above) {
        kindsAbove_[std::move(type)].push_back(std::move(above));
    });
}

std::vector<std::string> MIMEDatabase::namesOf(std::string_view type) const {
    std::vector<std::string> names{std::string(type)};
    const auto add = [&](const Relation& relation, std::size_t index) {
        const auto found = relation.find(names[index]);
        if (found == relation.end())
            return;
        for (const std::string& name : found->second) {
            if (std::ranges::find(names, name) == names.end())
                names.push_back(name);
        }
    };
    for (std::size_t begin = 0; begin < names.size();) {
        for (std::size_t index = begin; index < names.size(); ++index)
            add(otherNames_, index);
        const std::size_t end = names.size();
        for (std::size_t index = begin; index < end; ++index)
            add(kindsAbove_, index);
        begin = end;
    }
    return names;
}

bool MIMEDatabase::isText(std::string_view type) const {
    return std::ranges::any_of(namesOf(type),
                               [](const std::string& name) { return name.starts_with("text/"); });
}

} // namespace kelvo
