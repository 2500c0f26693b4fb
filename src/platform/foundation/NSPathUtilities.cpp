#include "platform/foundation/NSPathUtilities.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr std::size_t npos = std::u16string_view::npos;

// The path has no slashes at its end.
std::size_t startOfLastComponent(std::u16string_view path) {
    return path == u"/" ? 0 : path.rfind(u'/') + 1;
}

// Where the dot of the extension stands, or npos.
std::size_t dotOfExtension(std::u16string_view path) {
    const std::size_t dot = path.rfind(u'.');
    return dot != npos && dot > startOfLastComponent(path) && dot + 1 < path.size() ? dot : npos;
}

NSString receiverOr(const NSString& receiver, std::u16string_view result) {
    return receiver == NSString(result) ? receiver : NSString(result);
}

NSString joined(std::u16string_view head, std::u16string_view separator, std::u16string_view tail) {
    NSMutableString result =
        NSMutableString::stringWithCapacity(head.size() + separator.size() + tail.size());
    result.appendString(head);
    result.appendString(separator);
    result.appendString(tail);
    return result.takeString();
}

NSString folderFromBytes(std::string_view bytes) {
    while (bytes.size() > 1 && bytes.back() == '/')
        bytes.remove_suffix(1);
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes);
}

// The home folder in the user database, by name or, without one, of the user of this process.
NSString homeInUserDatabase(const char* name) {
    std::vector<char> buffer(16384);
    passwd entry = {};
    passwd* found = nullptr;
    for (;;) {
        const int error = name ? ::getpwnam_r(name, &entry, buffer.data(), buffer.size(), &found)
                               : ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
        if (error != ERANGE || buffer.size() > 1 << 20)
            break;
        buffer.resize(buffer.size() * 2);
    }
    return found && found->pw_dir && *found->pw_dir == '/' ? folderFromBytes(found->pw_dir) : NSString();
}

// With every link resolved; absent when there is no such file.
std::optional<std::u16string> realPath(std::u16string_view path) {
    // Longer ones have no file, and trying them over and over would take quadratic time.
    if (path.size() > PATH_MAX)
        return std::nullopt;
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto bytes = files.fileSystemRepresentationWithPath(NSString(path));
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        bytes ? ::realpath(bytes->c_str(), nullptr) : nullptr, &std::free);
    if (!resolved)
        return std::nullopt;
    return std::u16string(files.stringWithFileSystemRepresentation(resolved.get()).characters());
}

} // namespace

NSString NSHomeDirectory() {
    const char* home = std::getenv("HOME");
    if (home && *home == '/')
        return folderFromBytes(home);
    NSString fromDatabase = homeInUserDatabase(nullptr);
    return fromDatabase.isNil() ? NSString(u"/") : fromDatabase;
}

NSString NSHomeDirectoryForUser(const NSString& userName) {
    const auto name = NSFileManager::defaultManager().fileSystemRepresentationWithPath(userName);
    return name && !name->empty() ? homeInUserDatabase(name->c_str()) : NSString();
}

NSString NSTemporaryDirectory() {
    const char* folder = std::getenv("TMPDIR");
    const NSString path = folderFromBytes(folder && *folder == '/' ? folder : "/tmp");
    return path == u"/" ? path : path.stringByAppendingString(u"/");
}

std::u16string_view withoutSlashesAtEnd(std::u16string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

NSArray pathComponents(const NSString& path) {
    if (path.isNil())
        return nullptr;
    std::u16string_view rest = path;
    std::vector<Value> components;
    if (rest.starts_with(u'/'))
        components.emplace_back(u"/");
    const bool endsInSlash = rest.ends_with(u'/');
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(u'/'), rest.size());
        if (length > 0)
            components.emplace_back(NSString(rest.substr(0, length)));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    // The slash of a path of slashes alone is its first one.
    if (endsInSlash && withoutSlashesAtEnd(path) != u"/")
        components.emplace_back(u"/");
    return NSArray::arrayWithValues(std::move(components));
}

NSString lastPathComponent(const NSString& path) {
    if (path.isNil())
        return nullptr;
    const std::u16string_view trimmed = withoutSlashesAtEnd(path);
    return receiverOr(path, trimmed.substr(startOfLastComponent(trimmed)));
}

NSString pathExtension(const NSString& path) {
    if (path.isNil())
        return nullptr;
    const std::u16string_view trimmed = withoutSlashesAtEnd(path);
    const std::size_t dot = dotOfExtension(trimmed);
    return dot == npos ? NSString::string() : NSString(trimmed.substr(dot + 1));
}

NSString stringByDeletingLastPathComponent(const NSString& path) {
    if (path.isNil())
        return nullptr;
    const std::u16string_view trimmed = withoutSlashesAtEnd(path);
    if (trimmed == u"/")
        return receiverOr(path, trimmed);
    return receiverOr(path, withoutSlashesAtEnd(trimmed.substr(0, startOfLastComponent(trimmed))));
}

NSString stringByDeletingPathExtension(const NSString& path) {
    if (path.isNil())
        return nullptr;
    const std::u16string_view trimmed = withoutSlashesAtEnd(path);
    return receiverOr(path, trimmed.substr(0, dotOfExtension(trimmed)));
}

NSString stringByAppendingPathComponent(const NSString& path, const NSString& component) {
    if (path.isNil())
        return nullptr;
    std::u16string_view tail = component;
    const std::u16string_view head = withoutSlashesAtEnd(path);
    if (head.empty())
        return NSString(withoutSlashesAtEnd(tail));
    tail.remove_prefix(std::min(tail.find_first_not_of(u'/'), tail.size()));
    tail = withoutSlashesAtEnd(tail);
    if (tail.empty())
        return receiverOr(path, head);
    return joined(head, head == u"/" ? u"" : u"/", tail);
}

NSString stringByAppendingPathExtension(const NSString& path, const NSString& extension) {
    const std::u16string_view trimmed = withoutSlashesAtEnd(path);
    if (trimmed.empty() || trimmed == u"/" || extension.isEmpty() ||
        extension.characters().find(u'/') != npos)
        return path;
    return joined(trimmed, u".", extension);
}

bool isAbsolutePath(const NSString& path) {
    return !path.isEmpty() && (path.characters()[0] == '/' || path.characters()[0] == '~');
}

NSString stringByExpandingTildeInPath(const NSString& path) {
    const std::u16string_view units = path;
    if (!units.starts_with(u'~'))
        return path;
    const std::size_t end = std::min(units.find(u'/'), units.size());
    const NSString home =
        end == 1 ? NSHomeDirectory() : NSHomeDirectoryForUser(NSString(units.substr(1, end - 1)));
    return home.isNil() ? path : stringByAppendingPathComponent(home, NSString(units.substr(end)));
}

NSString stringByAbbreviatingWithTildeInPath(const NSString& path) {
    const NSString home = NSHomeDirectory();
    const std::u16string_view units = path;
    if (home == u"/" || !units.starts_with(home) ||
        (units.size() > home.length() && units[home.length()] != '/'))
        return path;
    return joined(u"~", u"", units.substr(home.length()));
}

NSString stringByStandardizingPath(const NSString& path) {
    if (path.isNil())
        return nullptr;
    const NSString expanded = stringByExpandingTildeInPath(path);
    std::u16string_view rest = expanded;
    const bool isAbsolute = rest.starts_with(u'/');
    std::u16string result;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(u'/'), rest.size());
        const std::u16string_view component = rest.substr(0, length);
        rest.remove_prefix(std::min(length + 1, rest.size()));
        if (component.empty() || component == u".")
            continue;
        if (isAbsolute && component == u"..") {
            if (auto real = result.empty() ? std::nullopt : realPath(result))
                result = *std::move(real);
            result.resize(std::min(result.rfind(u'/'), result.size()));
            continue;
        }
        if (isAbsolute || !result.empty())
            result += u'/';
        result += component;
    }
    if (result.empty() && !expanded.isEmpty())
        result.push_back(isAbsolute ? u'/' : u'.');
    return receiverOr(path, result);
}

NSString stringByResolvingSymlinksInPath(const NSString& path) {
    NSString standardized = stringByStandardizingPath(path);
    if (!standardized.characters().starts_with(u'/'))
        return standardized;
    const auto real = realPath(standardized);
    return real ? receiverOr(standardized, *real) : standardized;
}

} // namespace kelvo
