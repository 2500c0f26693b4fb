#include "platform/foundation/files/NSBundle.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

struct NSBundle::Parts {
    NSString path;
    std::optional<NSDictionary> information;
};

namespace {

/// Far more than any information property list, and little enough to read without asking.
constexpr std::size_t maximumInformationSizeInBytes = 16u << 20;

FileDescriptor openFile(const NSString& path) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    return bytes ? openRegularFile(*bytes) : FileDescriptor();
}

NSData contentsUpToLimit(const FileDescriptor& file) {
    std::vector<std::uint8_t> bytes;
    constexpr std::size_t step = 65536;
    for (;;) {
        const std::size_t length = bytes.size();
        bytes.resize(length + step);
        const ssize_t count = readSome(file.get(), bytes.data() + length, step);
        if (count < 0 || length + static_cast<std::size_t>(count) > maximumInformationSizeInBytes)
            return nullptr;
        bytes.resize(length + static_cast<std::size_t>(count));
        if (count == 0)
            return NSData::dataWithBytesNoCopy(std::move(bytes));
    }
}

NSDictionary readInformation(const NSString& bundlePath) {
    for (const char16_t* place : {u"/Contents/Info.plist", u"/Resources/Info.plist", u"/Info.plist"}) {
        if (const FileDescriptor file = openFile(bundlePath.stringByAppendingString(place)))
            return NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
                       contentsUpToLimit(file), NSPropertyListMutabilityOptions::immutable, nullptr, nullptr)
                .dictionary();
    }
    return nullptr;
}

} // namespace

NSBundle NSBundle::bundleWithPath(const NSString& path) {
    bool isDirectory = false;
    if (!NSFileManager::defaultManager().fileExistsAtPath_isDirectory(path, &isDirectory) || !isDirectory)
        return nullptr;
    std::size_t length = path.length();
    while (length > 1 && path.characters()[length - 1] == '/')
        --length;
    NSBundle bundle;
    bundle.parts_ = std::make_shared<Parts>(Parts{path.substringToIndex(length), std::nullopt});
    return bundle;
}

NSString NSBundle::bundlePath() const {
    return isNil() ? NSString() : parts_->path;
}

NSDictionary NSBundle::infoDictionary() const {
    if (isNil())
        return nullptr;
    if (!parts_->information)
        parts_->information = readInformation(parts_->path);
    return *parts_->information;
}

Value NSBundle::objectForInfoDictionaryKey(const NSString& key) const {
    return infoDictionary().objectForKey(key);
}

NSString NSBundle::executablePath() const {
    const NSString name = objectForInfoDictionaryKey(u"CFBundleExecutable").string();
    if (name.isEmpty() || name.characters().find(u'/') != std::u16string_view::npos)
        return nullptr;
    const NSString library = NSString(u"lib").stringByAppendingString(name).stringByAppendingString(u".so");
    for (const char16_t* folder : {u"/Contents/Linux/", u"/Contents/MacOS/", u"/"}) {
        for (const NSString& file : {name, library}) {
            NSString path = parts_->path.stringByAppendingString(folder).stringByAppendingString(file);
            if (openFile(path))
                return path;
        }
    }
    return nullptr;
}

} // namespace kelvo
