#include "text/FileNames.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/files/NSHFSFileTypes.h"
#include "text/CharacterSetReps.h"
#include "text/CopyingForm.h"
#include "text/NSStringExtensions.h"
#include "text/StringComparison.h"
#include "text/StringNormalization.h"

#include <algorithm>
#include <string>

namespace kelvo {

namespace {

constexpr std::u16string_view invalidAtEnds = u"./~:";
constexpr std::size_t maximumExtensionLength = 15;

/// The length of the longest beginning of the name that, with the tail, fits on disk.
std::size_t lengthThatFits(std::u16string_view name, std::u16string_view tail) {
    // No unit takes less than a byte.
    if (tail.size() >= maximumFileNameSizeInBytes)
        return 0;
    const NSFileManager& files = NSFileManager::defaultManager();
    std::size_t length = std::min(name.size(), maximumFileNameSizeInBytes - tail.size());
    for (; length > 0; --length) {
        const auto bytes = files.fileSystemRepresentationWithPath(
            NSString(std::u16string(name.substr(0, length)).append(tail)));
        if (bytes && bytes->size() <= maximumFileNameSizeInBytes)
            break;
    }
    return length;
}

} // namespace

bool pathMatchingExtensions(const NSString& path, const NSArray& extensions) {
    return !path.isNil() && containsStringNoCase(extensions, pathExtension(path));
}

bool pathMatchingExtensionsOrTypes(const NSString& path, const NSArray& extensionsOrTypes) {
    if (extensionsOrTypes.isNil() || pathMatchingExtensions(path, extensionsOrTypes))
        return !extensionsOrTypes.isNil();
    const NSString type = NSHFSTypeOfFile(path);
    return !type.isEmpty() && containsString(extensionsOrTypes, type);
}

bool isValidPathExtension(std::u16string_view extension) {
    return extension.size() <= maximumExtensionLength && isAlphaNumString(extension);
}

NSString validPathExtension(const NSString& path) {
    const NSString extension = pathExtension(path);
    return extension.isNil() || isValidPathExtension(extension) ? extension : NSString::string();
}

NSString stringByReplacingPathExtensionWith(const NSString& path, const NSString& extension) {
    NSString stem = stringByDeletingPathExtension(path);
    if (extension.isEmpty())
        return stem;
    const NSString result = stringByAppendingPathExtension(stem, extension);
    // What takes no extension keeps the one that it has.
    return result.isIdenticalTo(stem) || result == path ? path : result;
}

NSString stringByAppendingPathExtensionIfNecessary(const NSString& path, const NSString& extension) {
    return isEqualToStringNoCase(pathExtension(path), extension)
               ? path
               : stringByAppendingPathExtension(path, extension);
}

void trimInvalidFilenameCharacters(NSMutableString& name) {
    const std::u16string_view units = name;
    const std::size_t end = units.find_last_not_of(invalidAtEnds) + 1;
    const std::size_t start = std::min(end, units.find_first_not_of(invalidAtEnds));
    name.deleteCharactersInRange({end, name.length() - end});
    name.deleteCharactersInRange({0, start});
}

NSString stringByTrimmingInvalidFilenameCharacters(const NSString& name) {
    return copyChangedBy(name, trimInvalidFilenameCharacters);
}

void createFilename(NSMutableString& name) {
    normalizeString(name);
    trimInvalidFilenameCharacters(name);
    std::replace_if(
        name.mutableCharacters(), name.mutableCharacters() + name.length(),
        [](char16_t unit) { return unit == u'/' || unit == u':' || unit == u'~'; }, u'-');
}

NSString stringByCreatingFilename(const NSString& text) {
    return copyChangedBy(text, createFilename);
}

void createFileSystemRepresentation(NSMutableString& name) {
    name.setLength(lengthThatFits(name, {}));
}

NSString stringByCreatingFileSystemRepresentation(const NSString& name) {
    return name.substringToIndex(lengthThatFits(name, {}));
}

void createFileSystemRepresentationAndAppendExtension(NSMutableString& name, std::u16string_view extension) {
    const std::u16string tail = extension.empty() || extension.size() >= maximumFileNameSizeInBytes
                                    ? std::u16string()
                                    : std::u16string(u".").append(extension);
    const std::size_t length = lengthThatFits(name, tail);
    if (tail.empty() || length == 0)
        return createFileSystemRepresentation(name);
    name.setLength(length);
    name.appendString(tail);
}

NSString stringByCreatingFileSystemRepresentationByAppendingExtension(const NSString& name,
                                                                      std::u16string_view extension) {
    return copyChangedBy(name, [&](NSMutableString& copy) {
        createFileSystemRepresentationAndAppendExtension(copy, extension);
    });
}

} // namespace kelvo
