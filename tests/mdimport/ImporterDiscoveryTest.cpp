#include "mdimport/ImporterBundles.h"
#include "mdimport/ImporterTool.h"
#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace kelvo {
namespace {

NSString string(std::string_view bytes) {
    return NSString::stringWithUTF8String(bytes);
}

/// A machine whose folders, home and tool are those of the test.
class ImporterDiscovery : public testing::Test {
protected:
    ImporterDiscovery() { setPlatformRoot(root.path(), PlatformPlaces::all); }
    ~ImporterDiscovery() override { setPlatformRoot(""); }

    void add(const std::string& path, std::string_view information) const {
        root.write(path + ".mdimporter/Contents/Info.plist", information);
    }
    void addImporter(const std::string& path, const std::string& type) const {
        add(path, "{CFBundleDocumentTypes = ({" + importer + " = (\"" + type + "\");});}");
    }
    void tool(const std::string& script) const {
        std::filesystem::permissions(root.write("usr/bin/mdimport", "#!/bin/sh\n" + script),
                                     std::filesystem::perms::owner_all);
    }
    static std::string names(const NSArray& paths) {
        std::string names;
        for (const Value& path : paths)
            names += std::filesystem::path(path.string().UTF8String()).stem().string() + ' ';
        return names;
    }
    /// The names of the importers that a new host finds.
    static std::string found() {
        MetaDataImporter host;
        EXPECT_TRUE(host.importerForFileAtPath_contentType(nullptr, nullptr).isNil());
        return names(host.MDImporterArray);
    }

    const std::string importer = "CFBundleTypeRole = MDImporter; LSItemContentTypes";
    tests::TemporaryFolder root;
    tests::ScopedVariable homeFolder{"HOME", root.path("home").c_str()};
};

TEST_F(ImporterDiscovery, ScansApplicationsFirst) {
    for (const char* path :
         {"System/Library/Spotlight/S", "Library/Spotlight/M2", "Library/Spotlight/M1",
          "Developer/Applications/X.app/Contents/Library/Spotlight/D",
          "Applications/B/Contents/Library/Spotlight/B", "Applications/A/Contents/Library/Spotlight/A",
          "home/Applications/U/Contents/Library/Spotlight/U"})
        add(path, "");
    root.write("home/Library/Spotlight/H.MDImporter/x", "");
    root.write("Library/Spotlight/N.other/x", "");
    root.write("Applications/F/Contents/Library/Spotlight", "no folder");
    EXPECT_EQ(found(), "A B D H M1 M2 S ");

    const std::filesystem::path before = std::filesystem::current_path();
    add("~/Applications/U/Contents/Library/Spotlight/U", "");
    std::filesystem::current_path(root.path());
    EXPECT_EQ(found(), "U A B D H M1 M2 S ") << "below a folder that is called like the tilde";
    std::filesystem::current_path(before);
}

TEST_F(ImporterDiscovery, OrdersWhatTheToolLists) {
    add("Library/Spotlight/Dynamic", "{CFPlugInDynamicRegistration = YES;}");
    const std::pair<const char16_t*, const char*> rows[] = {
        {u"Paths: id(501) (\nHOME/A, /Library/Spotlight/B1, /Library/Spotlight/B2,\n"
         u"/System/Library/Spotlight/C, /Applications/D)",
         "A B2 B1 C D "},
        {u"(\n/x/E, /Applications/D, /System/Library/Spotlight/C, /Library/Spotlight/B1, (list),\n"
         u"/Library/Spotlight/Dynamic.mdimporter, /Library/SpotlightOther/P, /Library/Spotlight/B2, "
         u"\"HOME/A\")\n",
         "A B2 P B1 C E D "},
        {u"(\n/Library/Spotlight/B, /x/D, /Library/Spotlight/B, /x/D)", "B B D D "},
        {u"(\n/Library/Spotlight/Dynamic.mdimporter)", ""},
    };
    for (const auto& [listing, expected] : rows) {
        std::string text = NSString(listing).UTF8String();
        if (const std::size_t at = text.find("HOME"); at != text.npos)
            text.replace(at, 4, root.path("home/Library/Spotlight"));
        EXPECT_EQ(names(importersInListing(string(text))), expected) << text;
    }
    EXPECT_FALSE(importersInListing(rows[3].first).isNil()) << "a list, of nothing that can be used";
    for (const char16_t* text : {u"", u"(a)", u"(\n)", u"(\na,,b)", u"(\n\"\u00E4\")"})
        EXPECT_TRUE(importersInListing(text).isNil()) << NSString(text).UTF8String();
}

TEST_F(ImporterDiscovery, ReadsWhatBundlesSayOfThemselves) {
    const auto see = [this](const std::string& information) {
        add("Library/Spotlight/X", information);
        MetaDataImporter host;
        host.importerForFileAtPath_contentType(nullptr, nullptr);
        const NSArray types =
            host.contentTypesForMDImporter.objectForKey(u"/Library/Spotlight/X.mdimporter").array();
        std::string text = host.MDImporterArray.count() == 0 ? "not used" : types.isNil() ? "none" : "";
        for (const Value& type : types)
            text += type.string().UTF8String() + ' ';
        return text;
    };
    const std::pair<std::string, const char*> declarations[] = {
        {"({" + importer + " = (Public.PLAIN-Text, b, b);}, {" + importer + " = (a);})",
         "public.plain-text b b a "},
        {"({" + importer + " = (DYN.ah62d4rv4ge80g4DR, (c), {d = e;});})", "com.microsoft.chm-archive "},
        {"({CFBundleTypeRole = mdimporter; LSItemContentTypes = (b);})", "none"},
        {"({CFBundleTypeRole = \"MDImporter \"; LSItemContentTypes = (b);})", "none"},
        {"(text, (), {" + importer + " = (a);}, {LSItemContentTypes = (b);})", "a "},
        {"({" + importer + " = b;})", "none"},
        {"({" + importer + " = ();})", ""},
        {"{" + importer + " = (a);}", "none"},
        {"not { a list", "none"},
    };
    for (const auto& [list, types] : declarations)
        EXPECT_EQ(see("{CFBundleDocumentTypes = " + list + ";}"), types) << list;
    const std::pair<std::string, const char*> registrations[] = {
        {"<true/>", "not used"}, {"<integer>2</integer>", "not used"}, {"<string>On</string>", "not used"},
        {"<false/>", "none"},    {"<string>yes </string>", "none"},    {"<array><true/></array>", "none"},
    };
    for (const auto& [value, used] : registrations)
        EXPECT_EQ(see("<plist><dict><key>CFPlugInDynamicRegistration</key>" + value + "</dict></plist>"),
                  used)
            << value;
}

TEST_F(ImporterDiscovery, GetsAlongWithAnyTool) {
    add("Library/Spotlight/Scanned", "");
    // Holds the pipe for as long as the test's folder is there.
    const std::string daemon =
        "(setsid sh -c 'while [ -e \"" + root.path() + "\" ]; do sleep 0.1; done' >/dev/null &)\n";
    const std::string list = "printf '(\\n/Listed.mdimporter)' >&2";
    const std::pair<std::string, const char*> rows[] = {
        {list + "; exit 3", "Listed "},
        {list + "; kill -9 $$", "Listed "},
        {"test \"$*\" = -L && " + list, "Listed "},
        {daemon + list, "Listed "},
        {daemon, "Scanned "},
        {"head -c 200000 /dev/zero | tr '\\0' ' ' >&2; " + list, "Listed "},
        {"exec 2>&-; sleep 0.1", "Scanned "},
        {"printf '(\\n)' >&2", "Scanned "},
        {"printf 'garbage (\\n(((' >&2", "Scanned "},
        {"printf '\\377(\\n/Listed.mdimporter)' >&2", ""},
        {"head -c 100000000 /dev/zero >&2; " + list, "Scanned "},
        {"yes '\xC3\xA4\xE2\x82\xAC' >&2", "Scanned "},
    };
    for (const auto& [script, expected] : rows) {
        tool(script);
        EXPECT_EQ(found(), expected) << script;
    }
    for (const char* text : {"ab\\342\\202\\254\\342\\202", "ab\\342\\202\\254"}) {
        tool("sleep 1000 & printf $! >" + root.path("child") + "; printf '" + text + "' >&2; wait");
        EXPECT_EQ(listingOfImporterTool(1).characters(), "ab\xE2\x82\xAC") << text;
        std::string command = "running";
        for (int round = 0; round < 100 && !command.empty(); ++round) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            command.clear();
            std::getline(std::ifstream("/proc/" + root.read("child") + "/cmdline"), command);
        }
        EXPECT_EQ(command, "") << "what the tool has started is gone";
    }

    std::filesystem::permissions(root.path("usr/bin/mdimport"), std::filesystem::perms::owner_read);
    MetaDataImporter host;
    EXPECT_THROW(host.importerForFileAtPath_contentType(nullptr, nullptr), NSException);
    EXPECT_TRUE(host.importerForFileAtPath_contentType(u"/", nullptr).isNil());
    EXPECT_EQ(host.MDImporterArray.count(), 0U);
}

TEST_F(ImporterDiscovery, TheFirstImporterOfATypeIsTheOne) {
    addImporter("Applications/X/Contents/Library/Spotlight/K", "com.apple.iwork.keynote.SFFKEY");
    addImporter("Library/Spotlight/A", "Public.Plain-TEXT");
    addImporter("Library/Spotlight/B", "public.plain-text");
    addImporter("System/Library/Spotlight/H", "dyn.ah62d4rv4ge80g4dr");
    tool("echo run >> \"" + root.path("runs") + '"');
    MetaDataImporter host;
    EXPECT_TRUE(host.importerForFileAtPath_contentType(nullptr, nullptr).isNil());
    EXPECT_EQ(names(host.MDImporterArray), "K A B H ");
    addImporter("Library/Spotlight/Late", "public.png");
    for (const char* name : {"a.txt", "a.chm", "a.key", "a.png"})
        root.write(name, "x");
    const std::tuple<const char*, const char16_t*, const char16_t*> rows[] = {
        {"a.txt", u"/Library/Spotlight/A.mdimporter", u"public.plain-text"},
        {"a.chm", u"/System/Library/Spotlight/H.mdimporter", u"com.microsoft.chm-archive"},
        {"a.key", u"/Applications/X/Contents/Library/Spotlight/K.mdimporter",
         u"com.apple.iwork.keynote.sffkey"},
        {"a.png", nullptr, u"public.png"},
        {"missing.txt", nullptr, nullptr},
    };
    for (const auto& [name, expected, type] : rows) {
        NSString seen = u"unset";
        const NSString chosen = host.importerForFileAtPath_contentType(string(root.path(name)), &seen);
        EXPECT_EQ(Value(chosen), Value(expected ? NSString(expected) : NSString())) << name;
        EXPECT_EQ(Value(seen), Value(type ? NSString(type) : NSString())) << name;
    }
    EXPECT_EQ(root.read("runs"), "run\n");
}

} // namespace
} // namespace kelvo
