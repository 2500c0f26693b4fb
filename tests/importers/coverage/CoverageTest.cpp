#include "platform/foundation/Value.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "platform/launchservices/DeclaredTypes.h"
#include "platform/launchservices/LaunchServices.h"
#include "platform/launchservices/UTType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace kelvo {
namespace {

std::string sourceFolder() {
    return std::getenv("KELVO_SOURCES");
}

std::string lowerCased(std::string text) {
    std::ranges::transform(text, text.begin(), [](char byte) {
        return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
    });
    return text;
}

/// The folders of the importers by the types that they declare.
std::multimap<std::string, std::string> importersByType() {
    std::multimap<std::string, std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() + "/importers")) {
        const NSData file = NSData::dataWithContentsOfFile(
            NSString::stringWithUTF8String((entry.path() / "Info.plist").string()));
        if (file.isNil())
            continue;
        const Value information =
            NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
                file, NSPropertyListMutabilityOptions::immutable, nullptr, nullptr);
        for (const Value& documents :
             information.dictionary().objectForKey(u"CFBundleDocumentTypes").array()) {
            for (const Value& type : documents.dictionary().objectForKey(u"LSItemContentTypes").array())
                result.emplace(type.string().UTF8String(), entry.path().filename().string());
        }
    }
    return result;
}

/// What the documentation says of the types that no importer is for.
struct Excused {
    std::set<std::string> types;
    /// With all that conform to them.
    std::set<std::string> kinds;

    bool has(const std::string& type) const {
        return types.contains(type) || std::ranges::any_of(kinds, [&](const std::string& kind) {
                   return type == kind || UTTypeConformsTo(NSString::stringWithUTF8String(type),
                                                           NSString::stringWithUTF8String(kind));
               });
    }
};

Excused excusedTypes() {
    Excused excused;
    std::ifstream document(sourceFolder() + "/docs/importers.md");
    bool isThere = false;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("## "))
            isThere = line == "## Types without an importer";
        if (!isThere || !line.starts_with("| `"))
            continue;
        const std::size_t reason = line.find(" | ", 2);
        for (std::size_t at = line.find('`'); at < reason; at = line.find('`', line.find('`', at + 1) + 1)) {
            std::string type = line.substr(at + 1, line.find('`', at + 1) - at - 1);
            const bool isKind = type.ends_with('*');
            if (isKind)
                type.pop_back();
            (isKind ? excused.kinds : excused.types).insert(type);
        }
    }
    return excused;
}

TEST(Coverage, EachTypeHasAnImporterOrAReason) {
    const auto importers = importersByType();
    const Excused excused = excusedTypes();
    ASSERT_GT(excused.types.size(), 40u);
    std::set<std::string> declared;
    for (const DeclaredType& row : declaredTypes()) {
        const std::string type(row.identifier);
        declared.insert(type);
        const bool isClaimed = importers.contains(lowerCased(type));
        EXPECT_TRUE(isClaimed || excused.has(type)) << type << " has neither an importer nor a reason";
        EXPECT_FALSE(isClaimed && excused.types.contains(type)) << type << " has an importer";
    }
    for (const auto* const listed : {&excused.types, &excused.kinds}) {
        for (const std::string& type : *listed)
            EXPECT_TRUE(declared.contains(type)) << type << " is in the list and no type";
    }
}

TEST(Coverage, EachTypeHasOneImporter) {
    const auto importers = importersByType();
    ASSERT_GT(importers.size(), 300u);
    std::set<std::string> declared;
    for (const DeclaredType& row : declaredTypes())
        declared.insert(lowerCased(std::string(row.identifier)));
    for (auto each = importers.begin(); each != importers.end(); each = importers.upper_bound(each->first)) {
        EXPECT_EQ(importers.count(each->first), 1u) << each->first << " is also for " << each->second;
        EXPECT_TRUE(each->first.starts_with("dyn.") || declared.contains(each->first))
            << each->second << " is for " << each->first << ", which no file is";
    }
}

// The samples that people try the system with.
TEST(Coverage, SamplesHaveImporters) {
    const auto importers = importersByType();
    int samples = 0;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() + "/examples")) {
        if (!entry.is_regular_file())
            continue;
        ++samples;
        const std::string type =
            LSCopyItemAttribute(NSString::stringWithUTF8String(entry.path().string()), kLSItemContentType)
                .UTF8String();
        EXPECT_TRUE(importers.contains(lowerCased(type))) << entry.path() << " is " << type;
    }
    EXPECT_GE(samples, 4);
}

} // namespace
} // namespace kelvo
