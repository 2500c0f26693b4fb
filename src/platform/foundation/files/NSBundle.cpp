#include "platform/foundation/files/NSBundle.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <link.h>

namespace kelvo {

struct NSBundle::Parts {
    NSString path;
    std::optional<NSDictionary> information;
};

namespace {

/// Far more than any information property list, and little enough to read without asking.
constexpr std::size_t maximumInformationSizeInBytes = 16u << 20;

FileDescriptor openFile(const NSString& path) {
    const auto bytes = placeOfPath(path);
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

NSString pathOfCode(const void* place) {
    Dl_info code = {};
    link_map* library = nullptr;
    if (::dladdr1(place, &code, reinterpret_cast<void**>(&library), RTLD_DL_LINKMAP) == 0)
        return nullptr;
    const NSFileManager& files = NSFileManager::defaultManager();
    // The program itself goes without a name there.
    return library->l_name[0] == '\0' ? files.pathContentOfSymbolicLinkAtPath(u"/proc/self/exe")
                                      : files.stringWithFileSystemRepresentation(library->l_name);
}

std::string_view valueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value ? value : "";
}

std::string_view withoutEncoding(std::string_view locale) {
    return locale.substr(0, locale.find_first_of(".@"));
}

void addNames(std::string_view locale, NSMutableArray& names) {
    static constexpr std::pair<std::string_view, const char16_t*> classicNames[] = {
        {"de", u"German"},  {"en", u"English"},  {"es", u"Spanish"}, {"fr", u"French"},
        {"it", u"Italian"}, {"ja", u"Japanese"}, {"nl", u"Dutch"},
    };
    const std::string_view language = locale.substr(0, locale.find('_'));
    for (const std::string_view code : {locale, language}) {
        const NSString name = NSString::stringWithUTF8String(code);
        if (!name.isEmpty() && !names.containsObject(name))
            names.addObject(name);
    }
    const auto* const classic =
        std::ranges::find(classicNames, language, &std::pair<std::string_view, const char16_t*>::first);
    if (classic != std::end(classicNames) && !names.containsObject(classic->second))
        names.addObject(classic->second);
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

NSBundle NSBundle::bundleForClass(const std::type_info& type) {
    const NSString file = pathOfCode(&type);
    NSString folder = stringByDeletingLastPathComponent(file);
    const NSString contents = stringByDeletingLastPathComponent(folder), system = lastPathComponent(folder);
    if ((system == u"Linux" || system == u"MacOS") && lastPathComponent(contents) == u"Contents")
        folder = stringByDeletingLastPathComponent(contents);
    return bundleWithPath(folder);
}

NSArray NSBundle::preferredLocalizations() {
    std::string_view locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.empty())
            locale = valueOf(variable);
    }
    const std::string_view language = withoutEncoding(locale);
    NSMutableArray names = NSMutableArray::array();
    if (language.empty() || language == "C" || language == "POSIX")
        return names;
    std::string_view rest = valueOf("LANGUAGE");
    if (rest.empty())
        rest = locale;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(':'), rest.size());
        addNames(withoutEncoding(rest.substr(0, length)), names);
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return names;
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
    const NSString module = name.stringByAppendingString(u".so");
    const NSString library = NSString(u"lib").stringByAppendingString(module);
    for (const char16_t* folder : {u"/Contents/Linux/", u"/Contents/MacOS/", u"/"}) {
        for (const NSString& file : {name, module, library}) {
            NSString path = parts_->path.stringByAppendingString(folder).stringByAppendingString(file);
            if (openFile(path))
                return path;
        }
    }
    return nullptr;
}

} // namespace kelvo
