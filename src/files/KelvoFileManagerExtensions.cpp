#include "files/KelvoFileManagerExtensions.h"

#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "text/StringComparison.h"
#include "text/WildcardMatching.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

/// Which of the two kinds a listing is about.
struct Kinds {
    bool files, folders;

    bool include(bool isDirectory) const { return isDirectory ? folders : files; }
};

NSArray matching(const NSFileManager& files, const NSString& path, bool fullPath,
                 const std::function<bool(const NSString&)>& matches) {
    std::vector<Value> result;
    for (const Value& value : files.directoryContentsAtPath(path)) {
        if (const NSString name = value.string(); matches(name))
            result.emplace_back(fullPath ? stringByAppendingPathComponent(path, name) : name);
    }
    return NSArray::arrayWithValues(std::move(result));
}

NSArray _directoryContentsAtPath_fullPath_resolveLinks_files_folders(const NSFileManager& files,
                                                                     const NSString& path, bool fullPath,
                                                                     bool resolveLinks, Kinds kinds) {
    const NSString folder = resolveLinks ? resolveLink(files, path) : path;
    const bool examines = resolveLinks || !kinds.files || !kinds.folders;
    std::vector<Value> result;
    for (const Value& value : files.directoryContentsAtPath(folder)) {
        NSString entry = stringByAppendingPathComponent(folder, value.string());
        if (resolveLinks)
            entry = resolveLink(files, entry);
        bool isDirectory = false;
        if (!examines ||
            (files.fileExistsAtPath_isDirectory(entry, &isDirectory) && kinds.include(isDirectory)))
            result.emplace_back(fullPath || resolveLinks ? entry : value.string());
    }
    return NSArray::arrayWithValues(std::move(result));
}

/// One deep listing. Full paths that the kernel takes bound the depth: what lies deeper does not exist.
class DeepListing {
public:
    DeepListing(const NSFileManager& files, bool resolveLinks, Kinds kinds)
        : files_(files), resolveLinks_(resolveLinks), kinds_(kinds) {}

    NSArray of(const NSString& path) {
        enter(resolveLinks_ ? resolveLink(files_, path) : path, false);
        return NSArray::arrayWithValues(std::move(result_));
    }

private:
    /// File system and file, which tell a folder from all others whatever path leads to it.
    using Identity = std::pair<std::int64_t, std::int64_t>;

    static constexpr int maximumListingsByWayOfLinks = 16;

    void enter(const NSString& folder, bool isByWayOfLinks) {
        const NSDictionary attributes = files_.fileAttributesAtPath_traverseLink(folder, true);
        const NSNumber* const system = attributes.objectForKey(NSFileSystemNumber).numberIfAny();
        const NSNumber* const file = attributes.objectForKey(NSFileSystemFileNumber).numberIfAny();
        if (!system || !file)
            return;
        const Identity identity(system->longLongValue(), file->longLongValue());
        // Without the second rule a few folders with links to each other would be listed on every way that
        // leads through them, and there are more of these than anybody can list.
        if (std::ranges::find(way_, identity) != way_.end() ||
            (isByWayOfLinks && listingsByWayOfLinks_[identity]++ >= maximumListingsByWayOfLinks))
            return;
        way_.push_back(identity);
        _deepDirectoryContents_atPath(folder, isByWayOfLinks);
        way_.pop_back();
    }

    void _deepDirectoryContents_atPath(const NSString& folder, bool isByWayOfLinks) {
        for (const Value& value : files_.directoryContentsAtPath(folder)) {
            const NSString named = stringByAppendingPathComponent(folder, value.string());
            const NSString entry = resolveLinks_ ? resolveLink(files_, named) : named;
            bool isDirectory = false;
            if (!files_.fileExistsAtPath_isDirectory(entry, &isDirectory))
                continue;
            if (kinds_.include(isDirectory))
                result_.emplace_back(entry);
            if (isDirectory)
                enter(entry, isByWayOfLinks || !files_.pathContentOfSymbolicLinkAtPath(named).isNil());
        }
    }

    const NSFileManager& files_;
    const bool resolveLinks_;
    const Kinds kinds_;
    std::vector<Value> result_;
    std::vector<Identity> way_;
    std::map<Identity, int> listingsByWayOfLinks_;
};

} // namespace

NSArray directoryContentsAtPath_matchingExtension_fullPath(const NSFileManager& files, const NSString& path,
                                                           const NSString& extension, bool fullPath) {
    return matching(files, path, fullPath, [&extension](const NSString& name) {
        return isEqualToStringNoCase(pathExtension(name), extension);
    });
}

NSArray directoryContentsAtPath_matchingWildcard_fullPath(const NSFileManager& files, const NSString& path,
                                                          const NSString& wildcard, bool fullPath) {
    return matching(files, path, fullPath, [&wildcard](const NSString& name) {
        return isCaseInsensitiveLikeWildcard(name, wildcard);
    });
}

NSArray directoryContentsAtPath_fullPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                      bool fullPath, bool resolveLinks) {
    return _directoryContentsAtPath_fullPath_resolveLinks_files_folders(files, path, fullPath, resolveLinks,
                                                                        {true, true});
}

NSArray directoryFilesAtPath_fullPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                   bool fullPath, bool resolveLinks) {
    return _directoryContentsAtPath_fullPath_resolveLinks_files_folders(files, path, fullPath, resolveLinks,
                                                                        {true, false});
}

NSArray deepDirectoryContentsAtPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                 bool resolveLinks) {
    return DeepListing(files, resolveLinks, {true, true}).of(path);
}

NSArray deepDirectoryFilesAtPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                              bool resolveLinks) {
    return DeepListing(files, resolveLinks, {true, false}).of(path);
}

NSString resolveLink(const NSFileManager& files, const NSString& path) {
    const NSString named = path.substringToIndex(withoutSlashesAtEnd(path).size());
    return files.pathContentOfSymbolicLinkAtPath(named).isNil() || !files.fileExistsAtPath(named)
               ? path
               : stringByResolvingSymlinksInPath(named);
}

} // namespace kelvo
