#include "platform/foundation/NSFileManager.h"

#include "platform/foundation/AppleDouble.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr char16_t firstByteUnit = 0xDC80;
constexpr char16_t lastByteUnit = 0xDCFF;

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// Whether the file stands for another of the sorted names.
bool isPartOfAnother(const NSString& folder, const std::string& name, const std::vector<std::string>& names) {
    constexpr std::string_view prefix = "._";
    if (!name.starts_with(prefix) || name.size() == prefix.size() ||
        !std::ranges::binary_search(names, std::string_view(name).substr(prefix.size())))
        return false;
    const NSString path = stringByAppendingPathComponent(
        folder, NSFileManager::defaultManager().stringWithFileSystemRepresentation(name));
    return AppleDouble::withData(NSData::dataWithContentsOfFileWhenNeeded(path)).has_value();
}

} // namespace

const NSFileManager& NSFileManager::defaultManager() {
    static const NSFileManager manager;
    return manager;
}

std::optional<std::string> NSFileManager::fileSystemRepresentationWithPath(const NSString& path) const {
    if (path.isNil())
        return std::nullopt;
    const std::u16string_view units = path.characters();
    std::string bytes;
    bytes.reserve(units.size());
    bool hasRawBytes = false;
    for (std::size_t i = 0; i < units.size();) {
        const char32_t character = nextCharacter(units, i);
        if (character >= firstByteUnit && character <= lastByteUnit) {
            bytes.push_back(static_cast<char>(character & 0xFF));
            hasRawBytes = true;
        } else if (character == 0 || isSurrogate(character)) {
            return std::nullopt;
        } else {
            appendUTF8Character(bytes, character);
        }
    }
    if (hasRawBytes && stringWithFileSystemRepresentation(bytes) != path)
        return std::nullopt;
    return bytes;
}

NSString NSFileManager::stringWithFileSystemRepresentation(std::string_view bytes) const {
    NSString wellFormed = NSString::stringWithUTF8String(bytes);
    if (!wellFormed.isNil())
        return wellFormed;
    NSMutableString units = NSMutableString::stringWithCapacity(bytes.size());
    const std::span data(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t start = i;
        const char32_t character = nextUTF8Character(data, i);
        if (character == notACharacter) {
            i = start + 1;
            units.appendCharacter(static_cast<char16_t>(0xDC00 + data[start]));
        } else {
            char16_t pair[2];
            units.appendString(std::u16string_view(pair, writeCharacter(character, pair)));
        }
    }
    return units.takeString();
}

bool NSFileManager::fileExistsAtPath(const NSString& path) const {
    bool isDirectory = false;
    return fileExistsAtPath_isDirectory(path, &isDirectory);
}

bool NSFileManager::fileExistsAtPath_isDirectory(const NSString& path, bool* isDirectory) const {
    const auto bytes = placeOfPath(path);
    struct stat status = {};
    const bool exists = bytes && ::stat(bytes->c_str(), &status) == 0;
    if (isDirectory)
        *isDirectory = exists && S_ISDIR(status.st_mode);
    return exists;
}

bool NSFileManager::isWritableFileAtPath(const NSString& path) const {
    const auto bytes = placeOfPath(path);
    return bytes && ::access(bytes->c_str(), W_OK) == 0;
}

NSArray NSFileManager::directoryContentsAtPath(const NSString& path) const {
    const auto bytes = placeOfPath(path);
    const std::unique_ptr<DIR, FolderCloser> folder(bytes ? ::opendir(bytes->c_str()) : nullptr);
    if (!folder)
        return nullptr;
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
        errno = 0;
    }
    if (errno != 0)
        return nullptr;
    std::ranges::sort(names);
    std::vector<Value> values;
    values.reserve(names.size());
    for (const std::string& name : names) {
        if (!isPartOfAnother(path, name, names))
            values.emplace_back(stringWithFileSystemRepresentation(name));
    }
    return NSArray::arrayWithValues(std::move(values));
}

NSDictionary NSFileManager::fileAttributesAtPath_traverseLink(const NSString& path, bool followsLinks) const {
    const auto bytes = placeOfPath(path);
    struct stat status = {};
    if (!bytes || ::fstatat(AT_FDCWD, bytes->c_str(), &status, followsLinks ? 0 : AT_SYMLINK_NOFOLLOW) != 0)
        return nullptr;
    const auto number = [](auto value) {
        return NSNumber::numberWithLongLong(static_cast<std::int64_t>(value));
    };
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{number(status.st_dev), NSFileSystemNumber},
         {number(status.st_ino), NSFileSystemFileNumber},
         {number(status.st_mode & 07777), NSFilePosixPermissions}});
}

NSString NSFileManager::pathContentOfSymbolicLinkAtPath(const NSString& path) const {
    const auto bytes = placeOfPath(path);
    std::array<char, PATH_MAX> target;
    const ssize_t length = bytes ? ::readlink(bytes->c_str(), target.data(), target.size()) : -1;
    return length < 0 ? NSString()
                      : stringWithFileSystemRepresentation({target.data(), static_cast<std::size_t>(length)});
}

bool NSFileManager::createDirectoryAtPath_attributes(const NSString& path,
                                                     const NSDictionary& attributes) const {
    const auto bytes = placeOfPath(path);
    const NSNumber* permissions = attributes.objectForKey(NSFilePosixPermissions).numberIfAny();
    const mode_t mode = permissions ? permissions->unsignedIntValue() & 07777 : 0777;
    if (!bytes || ::mkdir(bytes->c_str(), mode) != 0)
        return false;
    return !permissions || ::chmod(bytes->c_str(), mode) == 0;
}

bool NSFileManager::removeFileAtPath(const NSString& path) const {
    auto bytes = placeOfPath(path);
    if (!bytes)
        return false;
    // With a slash after it, a link would be followed.
    bytes->resize(bytes->find_last_not_of('/') + 1);
    const std::string_view name = std::string_view(*bytes).substr(bytes->rfind('/') + 1);
    if (name.empty() || name == "." || name == "..")
        return false;
    std::error_code error;
    const std::uintmax_t count = std::filesystem::remove_all(*bytes, error);
    return !error && count > 0;
}

NSString NSFileManager::currentDirectoryPath() const {
    const std::unique_ptr<char, decltype(&std::free)> path(::getcwd(nullptr, 0), &std::free);
    // The kernel writes "(unreachable)" before a folder outside the process's root.
    return path && *path == '/' ? stringWithFileSystemRepresentation(path.get()) : NSString();
}

} // namespace kelvo
