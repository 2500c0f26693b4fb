#include "platform/launchservices/LaunchServices.h"

#include "platform/filekinds/FileKind.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/files/NSHFSFileTypes.h"
#include "platform/launchservices/ContentSniffing.h"
#include "platform/launchservices/DynamicType.h"
#include "platform/launchservices/UTType.h"

#include <algorithm>
#include <string>

#include <sys/stat.h>

namespace kelvo {
namespace {

/// Of an item's name, in lower case.
struct Extensions {
    /// Empty where what follows the last dot is words rather than an extension.
    NSString last;
    /// With the part before it, where there is one: "tar.gz".
    NSString lastTwo;
};

Extensions extensionsOf(const NSString& path) {
    NSMutableString name = NSMutableString::stringWithCharacters(lastPathComponent(path));
    CFStringLowercase(name);
    const NSString lowerCase = name.takeString();
    const NSString last = pathExtension(lowerCase);
    if (std::ranges::any_of(last.characters(), [](char16_t unit) { return unit <= u' ' || unit == 0x7F; }))
        return {};
    const NSString before = pathExtension(stringByDeletingPathExtension(lowerCase));
    return {last, before.isEmpty() ? NSString()
                                   : before.stringByAppendingString(u".").stringByAppendingString(last)};
}

NSString declaredType(const Extensions& extensions, ItemKind item) {
    const NSString type = typeWithFilenameExtension(extensions.lastTwo, item);
    return type.isNil() ? typeWithFilenameExtension(extensions.last, item) : type;
}

NSString dynamicType(const NSString& extension, const char16_t* conformsTo) {
    return dynamicTypeIdentifier({conformsTo, {{UTTagClass::filenameExtension, extension}}});
}

bool isVolume(const std::string& path, const struct stat& facts) {
    struct stat above;
    return ::stat((path + "/..").c_str(), &above) == 0 &&
           (above.st_dev != facts.st_dev || above.st_ino == facts.st_ino);
}

NSString typeOfFolder(const NSString& path, const std::string& bytes, const struct stat& facts) {
    const Extensions extensions = extensionsOf(path);
    if (NSString type = declaredType(extensions, ItemKind::folder); !type.isNil())
        return type;
    if (kindOfFile(path) == FileKind::RTFD)
        return u"com.apple.rtfd";
    if (!extensions.last.isEmpty() && NSFileManager::defaultManager().fileExistsAtPath(
                                          stringByAppendingPathComponent(path, u"Contents/Info.plist")))
        return dynamicType(extensions.last, u"com.apple.package");
    return isVolume(bytes, facts) ? u"public.volume" : u"public.folder";
}

NSString typeOfFile(const NSString& path, const std::string& bytes, const struct stat& facts) {
    const Extensions extensions = extensionsOf(path);
    if (NSString type = declaredType(extensions, ItemKind::file); !type.isNil())
        return type;
    if (NSString type = typeWithOSType(NSHFSTypeOfFile(path)); !type.isNil())
        return type;
    if (FileDescriptor file = openRegularFile(bytes)) {
        NSString type = typeOfContents(FileContents(std::move(file)), MIMEDatabase::system());
        if (!type.isNil())
            return type;
    }
    if (!extensions.last.isEmpty())
        return dynamicType(extensions.last, u"public.data");
    return facts.st_mode & S_IXUSR ? u"public.unix-executable" : u"public.data";
}

} // namespace

NSString LSCopyItemAttribute(const NSString& path, const NSString& attribute) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    struct stat facts;
    if (!bytes || attribute != kLSItemContentType || ::stat(bytes->c_str(), &facts) != 0)
        return nullptr;
    if (S_ISDIR(facts.st_mode))
        return typeOfFolder(path, *bytes, facts);
    return S_ISREG(facts.st_mode) ? typeOfFile(path, *bytes, facts) : NSString(u"public.item");
}

} // namespace kelvo
