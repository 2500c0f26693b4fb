#include "platform/plugins/CFPlugIn.h"

#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <set>
#include <system_error>
#include <unordered_map>

#include <sys/stat.h>

namespace kelvo {
namespace {

/// The value of an identifier in a dictionary of the information, whose keys may be in either case.
Value informationOf(const CFUUID& uuid, const CFPlugIn& plugIn, const char16_t* dictionary) {
    for (const auto& [key, value] : plugIn.bundle().objectForInfoDictionaryKey(dictionary).dictionary()) {
        if (CFUUIDCreateFromString(key.string()) == uuid)
            return value;
    }
    return {};
}

/// Those who ask the service wait 15 seconds.
constexpr std::chrono::seconds timeOfPlugIn{12};

/// Where the path really leads; empty when it leads nowhere.
std::string realPlace(const NSString& path) {
    std::error_code error;
    const auto real = std::filesystem::canonical(placeOfPath(path).value_or(""), error);
    return error ? std::string() : real.native();
}

/// Which file it is, and in which state; absent when it is no file.
using FileIdentity = std::optional<std::array<std::int64_t, 5>>;

FileIdentity identityOfInformation(const NSString& bundle) {
    const auto place = placeOfPath(bundle);
    struct stat status {};
    if (!place || ::stat((*place + "/Contents/Info.plist").c_str(), &status) != 0)
        return std::nullopt;
    return std::array<std::int64_t, 5>{static_cast<std::int64_t>(status.st_dev),
                                       static_cast<std::int64_t>(status.st_ino), status.st_size,
                                       status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

} // namespace

double CFPlugIn::secondsLeft() const {
    const std::chrono::duration<double> left = creation_ + timeOfPlugIn - std::chrono::steady_clock::now();
    return left.count();
}

std::string systemFolderOfImporters() {
    return realPlace(u"/System/Library/Spotlight");
}

std::shared_ptr<const CFPlugIn::Facts> CFPlugIn::factsOfBundle(const NSString& path) {
    struct Kept {
        FileIdentity information;
        std::shared_ptr<const Facts> facts;
    };
    static std::unordered_map<NSString, Kept> kept;
    const FileIdentity information = identityOfInformation(path);
    if (const auto found = kept.find(path);
        found != kept.end() && information && found->second.information == information)
        return found->second.facts;
    auto facts = std::make_shared<Facts>();
    facts->bundle = NSBundle::bundleWithPath(path);
    if (facts->bundle.isNil())
        return nullptr;
    facts->library = placeOfPath(facts->bundle.executablePath());
    const std::string folder = systemFolderOfImporters();
    facts->isOfSystem =
        !folder.empty() && std::filesystem::path(realPlace(path)).parent_path().native() == folder;
    kept[path] = {information, facts};
    return facts;
}

CFPlugIn CFPlugInCreate(const NSURL& url) {
    CFPlugIn plugIn;
    if (url.isFileURL())
        plugIn.facts_ = CFPlugIn::factsOfBundle(url.path());
    return plugIn;
}

std::optional<std::vector<CFUUID>> CFPlugInFindFactoriesForPlugInTypeInPlugIn(const CFUUID& type,
                                                                              const CFPlugIn& plugIn) {
    const Value listed = informationOf(type, plugIn, u"CFPlugInTypes");
    if (!listed.isArray())
        return std::nullopt;
    std::vector<CFUUID> factories;
    std::set<std::array<std::uint8_t, 16>> seen;
    for (const Value& each : listed.array()) {
        const auto factory = CFUUIDCreateFromString(each.string());
        if (factory && seen.insert(factory->bytes).second)
            factories.push_back(*factory);
    }
    return factories;
}

NSString nameOfFactoryFunction(const CFUUID& factory, const CFPlugIn& plugIn) {
    const NSString name = informationOf(factory, plugIn, u"CFPlugInFactories").string();
    return name.isEmpty() ? NSString() : name;
}

} // namespace kelvo
