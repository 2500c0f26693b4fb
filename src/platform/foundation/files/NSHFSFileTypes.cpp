#include "platform/foundation/files/NSHFSFileTypes.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/encodings/NSStringEncoding.h"

#include <array>
#include <cstdint>
#include <span>

#include <sys/xattr.h>
#include <unistd.h>

namespace kelvo {

namespace {

using TypeCode = std::array<std::uint8_t, 4>;
constexpr TypeCode noType{};

constexpr std::size_t finderInfoSizeInBytes = 32;

TypeCode typeInAttribute(const std::string& path) {
    std::array<std::uint8_t, finderInfoSizeInBytes> info{};
    const ssize_t size = ::getxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size());
    return size >= 4 ? TypeCode{info[0], info[1], info[2], info[3]} : noType;
}

std::uint32_t bigEndian32(std::span<const std::uint8_t> bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

TypeCode typeInAppleDouble(const std::string& path) {
    constexpr std::uint32_t magic = 0x00051607, finderInfo = 9;
    constexpr std::size_t headerSize = 26, entrySize = 12;
    const FileDescriptor file = openRegularFile(path);
    if (!file)
        return noType;
    std::array<std::uint8_t, 4096> block;
    const ssize_t size = ::pread(file.get(), block.data(), block.size(), 0);
    if (size < static_cast<ssize_t>(headerSize))
        return noType;
    const std::span<const std::uint8_t> bytes(block.data(), static_cast<std::size_t>(size));
    if (bigEndian32(bytes) != magic)
        return noType;
    const std::size_t entries = std::size_t{bytes[24]} << 8 | bytes[25];
    for (std::size_t at = headerSize, k = 0; k < entries && at + entrySize <= bytes.size();
         ++k, at += entrySize) {
        if (bigEndian32(bytes.subspan(at)) != finderInfo)
            continue;
        const std::size_t offset = bigEndian32(bytes.subspan(at + 4));
        if (bigEndian32(bytes.subspan(at + 8)) < 4 || offset > bytes.size() || bytes.size() - offset < 4)
            return noType;
        return {bytes[offset], bytes[offset + 1], bytes[offset + 2], bytes[offset + 3]};
    }
    return noType;
}

} // namespace

NSString NSHFSTypeOfFile(const NSString& path) {
    const NSFileManager& files = NSFileManager::defaultManager();
    if (path.isNil() || !files.fileExistsAtPath(path))
        return nullptr;
    TypeCode code = typeInAttribute(files.fileSystemRepresentationWithPath(path).value_or(std::string()));
    if (code == noType) {
        NSMutableString besideName = NSMutableString::stringWithCharacters(u"._");
        besideName.appendString(lastPathComponent(path));
        const NSString beside =
            stringByAppendingPathComponent(stringByDeletingLastPathComponent(path), besideName.takeString());
        code = typeInAppleDouble(files.fileSystemRepresentationWithPath(beside).value_or(std::string()));
    }
    if (code == noType)
        return NSString::string();
    NSMutableString quoted = NSMutableString::stringWithCharacters(u"'");
    quoted.appendString(
        stringWithData_encoding(NSData::dataWithBytes(code.data(), code.size()), NSMacOSRomanStringEncoding));
    quoted.appendCharacter(u'\'');
    return quoted.takeString();
}

} // namespace kelvo
