#include "platform/plugins/CFPlugIn.h"

#include "platform/foundation/Value.h"

#include <array>
#include <cstdint>
#include <set>

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

} // namespace

double CFPlugIn::secondsLeft() const {
    const std::chrono::duration<double> left = creation_ + timeOfPlugIn - std::chrono::steady_clock::now();
    return left.count();
}

CFPlugIn CFPlugInCreate(const NSURL& url) {
    CFPlugIn plugIn;
    if (url.isFileURL())
        plugIn.bundle_ = NSBundle::bundleWithPath(url.path());
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
