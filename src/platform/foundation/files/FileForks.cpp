#include "platform/foundation/files/FileForks.h"

#include "platform/foundation/AppleDouble.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kelvo {

namespace {

constexpr std::size_t typeSizeInBytes = 4, finderInfoSizeInBytes = 32;
// What tools put there that must not leave it empty: a whole fork without resources that says so.
constexpr std::string_view blankForkText = "This resource fork intentionally left blank";
constexpr std::size_t blankForkSizeInBytes = 286;

std::string bytesOf(const NSString& path) {
    return NSFileManager::defaultManager().fileSystemRepresentationWithPath(path).value_or(std::string());
}

NSString withoutLinks(const NSString& path) {
    const bool isAbsolute = path.characters().starts_with(u'/');
    return stringByResolvingSymlinksInPath(
        isAbsolute || path.isEmpty()
            ? path
            : stringByAppendingPathComponent(NSFileManager::defaultManager().currentDirectoryPath(), path));
}

NSString pathBeside(const NSString& path) {
    NSMutableString name = NSMutableString::stringWithCharacters(u"._");
    name.appendString(lastPathComponent(path));
    return stringByAppendingPathComponent(stringByDeletingLastPathComponent(path), name.takeString());
}

std::optional<AppleDouble> fileBeside(const NSString& path) {
    return AppleDouble::withData(NSData::dataWithContentsOfFileWhenNeeded(pathBeside(path)));
}

NSData attributeOfFile(const NSString& path, const char* name) {
    const std::string bytes = bytesOf(path);
    const ssize_t size = ::getxattr(bytes.c_str(), name, nullptr, 0);
    if (size <= 0)
        return nullptr;
    std::vector<std::uint8_t> value(static_cast<std::size_t>(size));
    const ssize_t length = ::getxattr(bytes.c_str(), name, value.data(), value.size());
    if (length <= 0)
        return nullptr;
    value.resize(static_cast<std::size_t>(length));
    return NSData::dataWithBytesNoCopy(std::move(value));
}

bool namesType(const NSData& info) {
    return info.length() >= typeSizeInBytes &&
           !std::ranges::all_of(info.bytes().first(typeSizeInBytes),
                                [](std::uint8_t byte) { return byte == 0; });
}

bool isFork(const NSData& fork) {
    return !fork.isEmpty() && fork.length() <= maximumResourceForkSizeInBytes &&
           (fork.length() != blankForkSizeInBytes ||
            fork.characters().find(blankForkText) == std::string_view::npos);
}

/// An empty file where there is none, which whoever may use the file, and nobody else, may use as well.
bool createBeside(const std::string& beside, mode_t rights) {
    FileDescriptor file(::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return file && ::fchmod(file.get(), rights & 0666) == 0 && file.close();
}

} // namespace

NSData finderInfoOfFile(const NSString& path) {
    const NSString file = withoutLinks(path);
    NSData info = attributeOfFile(file, "user.com.apple.FinderInfo");
    if (namesType(info))
        return info;
    const auto metadata = AppleDouble::withData(attributeOfFile(file, "user.org.netatalk.Metadata"));
    info = metadata ? metadata->entry(AppleDouble::EntryID::finderInfo, finderInfoSizeInBytes) : NSData();
    if (namesType(info))
        return info;
    const auto beside = fileBeside(file);
    info = beside ? beside->entry(AppleDouble::EntryID::finderInfo, finderInfoSizeInBytes) : NSData();
    return namesType(info) ? info : NSData();
}

NSData resourceForkOfFile(const NSString& path) {
    const NSString file = withoutLinks(path);
    if (!openRegularFile(bytesOf(file)))
        return nullptr;
    const auto beside = fileBeside(file);
    NSData fork = beside
                      ? beside->entry(AppleDouble::EntryID::resourceFork, maximumResourceForkSizeInBytes + 1)
                      : NSData();
    for (const char* name : {"user.com.apple.ResourceFork", "user.org.netatalk.ResourceFork"}) {
        if (!isFork(fork))
            fork = attributeOfFile(file, name);
    }
    return isFork(fork) ? fork : NSData();
}

bool setResourceForkOfFile(const NSString& path, const NSData& fork) {
    const NSString file = withoutLinks(path), beside = pathBeside(file);
    struct stat status = {};
    if (fork.isNil() || fork.length() > maximumResourceForkSizeInBytes ||
        ::stat(bytesOf(file).c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const std::string besideBytes = bytesOf(beside);
    if (!createBeside(besideBytes, status.st_mode)) {
        const auto present = fileBeside(file);
        // An empty one is what a process leaves that was killed in here.
        const bool isEmpty = !present && NSData::dataWithContentsOfFile(beside) == NSData::data();
        const NSData changed = present   ? present->dataByReplacingResourceFork(fork)
                               : isEmpty ? AppleDouble::dataWithResourceFork(fork)
                                         : NSData();
        return changed.writeToFile_atomically(beside, true);
    }
    if (AppleDouble::dataWithResourceFork(fork).writeToFile_atomically(beside, true))
        return true;
    ::unlink(besideBytes.c_str());
    return false;
}

} // namespace kelvo
