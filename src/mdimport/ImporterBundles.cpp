#include "mdimport/ImporterBundles.h"

#include "files/KelvoFileManagerExtensions.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/files/NSBundle.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "text/StringComparison.h"

#include <string_view>
#include <vector>

namespace kelvo {
namespace {

constexpr const char16_t* folderOfMachine = u"/Library/Spotlight";
constexpr const char16_t* folderOfSystem = u"/System/Library/Spotlight";
constexpr const char16_t* folderInApplication = u"Contents/Library/Spotlight";

NSString folderOfUser() {
    return stringByAppendingPathComponent(NSHomeDirectory(), u"Library/Spotlight");
}

bool saysYes(const Value& value) {
    const NSNumber* const number = value.numberIfAny();
    return number ? number->boolValue() : boolValue(value.string());
}

bool canBeUsed(const NSString& path) {
    return !saysYes(
        NSBundle::bundleWithPath(path).objectForInfoDictionaryKey(u"CFPlugInDynamicRegistration"));
}

void loadPluginsFromApplications(NSMutableArray& importers, const NSString& folder) {
    const NSFileManager& files = NSFileManager::defaultManager();
    for (const Value& name : files.directoryContentsAtPath(stringByExpandingTildeInPath(folder))) {
        // The tilde stays in the path of the importers, as it always has: the user's own applications offer none
        // unless there is a folder of that name.
        const NSString inside = stringByAppendingPathComponent(
            stringByAppendingPathComponent(folder, name.string()), folderInApplication);
        bool isFolder = false;
        if (files.fileExistsAtPath_isDirectory(inside, &isFolder) && isFolder)
            loadPluginsFromFolder(importers, inside);
    }
}

NSString typeToRecord(const Value& declared) {
    if (!declared.isString())
        return nullptr;
    NSMutableString type(declared.string());
    CFStringLowercase(type);
    // What the extension of compiled help files stood for as long as they had no type.
    return type == u"dyn.ah62d4rv4ge80g4dr" ? NSString(u"com.microsoft.chm-archive") : type.takeString();
}

} // namespace

void loadPluginsFromFolder(NSMutableArray& importers, const NSString& folder) {
    for (const Value& name :
         directoryContentsAtPath_matchingExtension(NSFileManager::defaultManager(), folder, u"mdimporter")) {
        const NSString path = stringByAppendingPathComponent(folder, name.string());
        if (canBeUsed(path))
            importers.addObject(path);
    }
}

NSMutableArray importersInFolders() {
    NSMutableArray importers = NSMutableArray::array();
    for (const char16_t* folder : {u"~/Applications", u"/Applications", u"/Developer/Applications"})
        loadPluginsFromApplications(importers, folder);
    for (const NSString& folder : {folderOfUser(), NSString(folderOfMachine), NSString(folderOfSystem)})
        loadPluginsFromFolder(importers, folder);
    return importers;
}

NSMutableArray importersInListing(const NSString& listing) {
    const std::u16string_view text = listing;
    const std::size_t start = text.find(u"(\n");
    if (start == text.npos)
        return nullptr;
    const NSArray listed =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            dataUsingEncoding(NSString(text.substr(start)), NSASCIIStringEncoding),
            NSPropertyListMutabilityOptions::mutableContainers, nullptr, nullptr)
            .array();
    if (listed.count() == 0)
        return nullptr;

    std::vector<NSString> left;
    for (const Value& path : listed) {
        if (path.isString() && canBeUsed(path.string()))
            left.push_back(path.string());
    }
    NSMutableArray importers = NSMutableArray::array();
    for (const NSString& folder : {folderOfUser(), NSString(folderOfMachine), NSString(folderOfSystem)}) {
        const auto isThere = [&](const NSString& path) {
            return path.characters().starts_with(folder.characters());
        };
        for (auto path = left.rbegin(); path != left.rend(); ++path) {
            if (isThere(*path))
                importers.addObject(*path);
        }
        std::erase_if(left, isThere);
    }
    for (const NSString& path : left)
        importers.addObject(path);
    return importers;
}

bool appendContentTypesOfImporter(NSMutableArray& types, const NSString& path) {
    bool hasDeclaration = false;
    const NSArray documents =
        NSBundle::bundleWithPath(path).objectForInfoDictionaryKey(u"CFBundleDocumentTypes").array();
    for (const Value& document : documents) {
        const NSDictionary entry = document.dictionary();
        const Value& declared = entry.objectForKey(u"LSItemContentTypes");
        if (entry.objectForKey(u"CFBundleTypeRole").string() != u"MDImporter" || !declared.isArray())
            continue;
        hasDeclaration = true;
        for (const Value& each : declared.array()) {
            if (const NSString type = typeToRecord(each); !type.isNil())
                types.addObject(type);
        }
    }
    return hasDeclaration;
}

} // namespace kelvo
