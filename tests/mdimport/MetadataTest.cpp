#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/plugins/PlugInQuestions.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <tuple>

namespace kelvo {
namespace {

using std::filesystem::path;

NSString string(const std::string& bytes) {
    return NSString::stringWithUTF8String(bytes);
}

/// A machine whose importers are those of the test, made of one library with several factories.
class Metadata : public testing::Test {
protected:
    Metadata() {
        setPlatformRoot(root.path(), PlatformPlaces::all);
        // Whatever the machine has of its own is not asked.
        std::filesystem::create_directories(root.path("home"));
    }
    ~Metadata() override { setPlatformRoot(""); }

    /// An importer for a type, of factories that are tried in this order.
    void add(const std::string& bundle, const std::string& type, const std::vector<std::string>& factories,
             bool hasLibrary = true) const {
        std::string list;
        std::string functions;
        for (const std::string& function : factories) {
            const std::string factory =
                "00000000-0000-0000-0000-00000000000" + std::to_string(list.size() / 38);
            list += '"' + factory + "\",";
            functions += '"' + factory + "\" = " + function + ";";
        }
        root.write(
            bundle + "/Contents/Info.plist",
            "{CFBundleExecutable = X; CFPlugInFactories = {" + functions +
                "}; CFPlugInTypes = {\"8B08C4BF-415B-11D8-B3F9-0003936726FC\" = (" + list +
                ");}; CFBundleDocumentTypes = ({CFBundleTypeRole = MDImporter; LSItemContentTypes = (\"" +
                type + "\");});}");
        const path library = root.path(bundle + "/Contents/Linux/X");
        std::filesystem::create_directories(library.parent_path());
        if (hasLibrary)
            std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe").parent_path() /
                                           "RehearsalImporter.so",
                                       library);
        else
            std::ofstream(library) << "no library";
    }

    NSMutableDictionary of(const std::string& contents) {
        return host.metaDataOfFileAtPath(string(root.write("file.txt", contents)));
    }
    long long errorOf(const std::string& contents) {
        const NSDictionary result = of(contents);
        const NSNumber* const error = result.objectForKey(u"error").numberIfAny();
        return error ? error->longLongValue() : -1;
    }
    NSString sentence() const {
        return notes.sentenceOfResult().isNil() ? notes.sentence() : notes.sentenceOfResult();
    }

    tests::TemporaryFolder root;
    tests::ScopedVariable homeFolder{"HOME", root.path("home").c_str()};
    RequestNotes notes;
    MetaDataImporter host;
};

TEST_F(Metadata, TheFirstImporterWinsThatDeclaresTheType) {
    add("Library/Spotlight/A.mdimporter", "Public.Plain-TEXT", {"makeNone"});
    add("Library/Spotlight/B.mdimporter", "public.plain-text", {"make"});
    add("Library/Spotlight/C.mdimporter", "dyn.ah62d4rv4ge80g4dr", {"make"});
    EXPECT_TRUE(host.metaDataOfFileAtPath(nullptr).isNil());
    EXPECT_EQ(host.MDImporterArray.count(), 3U) << "loaded without a file as well";
    EXPECT_TRUE(of("").isNil()) << "even when it gives nothing";
    EXPECT_TRUE(host.metaDataOfFileAtPath(string(root.path("missing.txt"))).isNil());
    EXPECT_TRUE(host.metaDataOfFileAtPath(string(root.write("a.rtf", "{\\rtf1}"))).isNil());
    EXPECT_EQ(notes.outcome(), Outcome::unsupported);
    const NSDictionary help = host.metaDataOfFileAtPath(string(root.write("a.CHM", "x")));
    EXPECT_EQ(help.objectForKey(u"kMDItemTitle"), Value(u"com.microsoft.chm-archive"));
}

TEST_F(Metadata, WhatIsSetComesAsItIs) {
    add("Library/Spotlight/A.mdimporter", "public.plain-text",
        {"makeNone", "makeThrow", "makeOther", "make"});
    const NSDictionary result = of("kinds");
    const unsigned char bytes[] = {0, 1};
    const std::pair<const char16_t*, Value> rows[] = {
        {u"kMDItemTitle", u"public.plain-text"},
        {u"path", string(root.path("file.txt"))},
        {u"descriptor", NSNumber::numberWithBool(true)},
        {u"string", NSString(std::u16string_view(u"a\0ä\uFFFD", 4))},
        {u"integer", NSNumber::numberWithLongLong(INT64_MIN)},
        {u"real", NSNumber::numberWithDouble(0.5)},
        {u"boolean", NSNumber::numberWithBool(true)},
        {u"date", NSDate::dateWithTimeIntervalSince1970(-1.5)},
        {u"data", NSData::dataWithBytes(bytes, 2)},
        {u"null", NSNull()},
        {u"array",
         NSArray::arrayWithObjects({u"one", NSData::dataWithBytes("two"), NSNumber::numberWithLongLong(3)})},
        {u"empty", NSArray::array()},
    };
    for (const auto& [key, value] : rows)
        EXPECT_EQ(result.objectForKey(key), value) << NSString(key).UTF8String();
    EXPECT_EQ(result.count(), std::size(rows));

    const NSDictionary most = of("none");
    EXPECT_EQ(most.count(), 1024U);
    EXPECT_TRUE(most.objectForKey(u"none").isNil() && most.objectForKey(u"set").isNil());
    EXPECT_TRUE(host.textContentOfFileAtPath(string(root.path("file.txt"))).isNil());
}

TEST_F(Metadata, WhatBecomesOfThePlugInCostsItsFileAlone) {
    add("Library/Spotlight/Odd.mdimporter", "public.plain-text", {"make"});
    struct Row {
        const char* contents;
        Outcome noted;
        const char* sentence;
    };
    const Row rows[] = {
        {"raise out of paper", Outcome::broken, "out of paper"},
        {"abort", Outcome::crashed, "reading it crashed the importer Odd (SIGABRT)"},
#ifndef KELVO_SANITIZED
        {"grow", Outcome::outOfMemory, "reading it took more memory than it may"},
#endif
        {"hang", Outcome::timedOut, "reading it took more time than it may"},
    };
    for (const Row& row : rows) {
        RequestNotes own;
        const NSDictionary result = of(row.contents);
        EXPECT_EQ(result.objectForKey(u"kMDItemTitle"), Value(u"public.plain-text")) << row.contents;
        EXPECT_EQ(own.outcome(), row.noted) << row.contents;
        EXPECT_EQ(own.sentenceOfResult().UTF8String(), row.sentence);
    }
    for (const char* contents : {"throw it away", "throw7"}) {
        RequestNotes own;
        EXPECT_THROW(of(contents), std::runtime_error) << contents;
        EXPECT_NE(own.sentence().UTF8String().find("importer Odd"), std::string::npos);
    }
    RequestNotes own;
    EXPECT_EQ(of("note it is encrypted").count(), 3U);
    EXPECT_EQ(own.outcome(), Outcome::locked);
    EXPECT_EQ(own.sentence(), u"it is encrypted");
}

TEST_F(Metadata, BundlesThatCannotBeUsedGiveNothing) {
    struct Row {
        std::vector<std::string> factories;
        bool hasLibrary;
        const char* sentence;
    };
    const Row rows[] = {
        {{"make"}, false, "importer A cannot be used"}, {{"missing"}, true, "importer A cannot be used"},
        {{"makeThrow"}, true, "it is out of order"},    {{"makeAbort"}, true, "crashed the importer A"},
        {{"makeNone", "makeOther"}, true, ""},
    };
    for (const Row& row : rows) {
        std::filesystem::remove_all(root.path("Library"));
        add("Library/Spotlight/A.mdimporter", "public.plain-text", row.factories, row.hasLibrary);
        RequestNotes own;
        MetaDataImporter fresh;
        EXPECT_TRUE(fresh.metaDataOfFileAtPath(string(root.write("file.txt", "kinds"))).isNil());
        EXPECT_NE(own.sentence().UTF8String().find(row.sentence), std::string::npos)
            << row.factories[0] << ": " << own.sentence().UTF8String();
        EXPECT_EQ(own.sentence().isNil(), *row.sentence == 0);
    }
    std::filesystem::remove_all(root.path("Library"));
    add("Library/Spotlight/A.mdimporter", "public.plain-text", {"makeAbort", "make"});
    EXPECT_EQ(of("kinds").count(), 12U) << "the second factory has an engine of its own";
}

TEST_F(Metadata, PlugInsReachNothingButFiles) {
    add("Library/Spotlight/Other.mdimporter", "public.plain-text", {"make"});
    add("System/Library/Spotlight/Own.mdimporter", "public.json", {"make"});
    const std::string secret = root.write("secret", "s");
    const std::string target = root.path("written");
    EXPECT_EQ(errorOf("read " + secret), 0);
    EXPECT_EQ(errorOf("read " + root.path("Library")), 0);
    for (const std::string& contents : {"write " + target, "write " + secret, std::string("fork "),
                                        std::string("execute "), "connect " + target}) {
        // Either it fails, or it was the end of the engine.
        const long long error = errorOf(contents);
        EXPECT_TRUE(error == -1 || error == EACCES || error == EPERM || error == ENOSYS) << contents << error;
    }
    EXPECT_FALSE(std::filesystem::exists(target));

    const NSString own = string(root.write("own.json", "read " + secret));
    const NSDictionary result = host.metaDataOfFileAtPath(own);
    EXPECT_EQ(result.objectForKey(u"error"), Value(NSNumber::numberWithLongLong(EACCES)));
    EXPECT_EQ(result.objectForKey(u"descriptor"), Value(NSNumber::numberWithBool(true)));
}

TEST_F(Metadata, PlugInsAskTheServiceForFilesOfTheirPackage) {
    add("Library/Spotlight/A.mdimporter", "com.apple.rtfd", {"make"});
    root.write("secret", "secret");
    root.write("a.rtfd/TXT.rtf", "text");
    root.write("a.rtfd/more/TXT.rtf", "below");
    std::filesystem::create_symlink(root.path("secret"), root.path("a.rtfd/link"));
    const std::pair<const char*, Value> rows[] = {
        {"TXT.rtf", u"text"}, {"txt.rtf", nullptr},     {"more", nullptr}, {"more/TXT.rtf", nullptr},
        {"link", nullptr},    {"../secret", nullptr},   {"..", nullptr},   {"", nullptr},
        {"office", nullptr},  {"/etc/passwd", nullptr},
    };
    for (const auto& [name, answer] : rows) {
        root.write("a.rtfd/command", std::string("ask ") + name);
        EXPECT_EQ(host.metaDataOfFileAtPath(string(root.path("a.rtfd"))).objectForKey(u"answer"), answer)
            << name;
    }
}

TEST_F(Metadata, PlugInsAskTheServiceForOfficeDocuments) {
    add("Library/Spotlight/A.mdimporter", "public.plain-text", {"make"});
    const auto answerOf = [&](const char* contents) { return of(contents).objectForKey(u"answer"); };
    EXPECT_TRUE(answerOf("ask office").isNil()) << "nobody reads them";
    setOfficeDocumentReader([](const NSData& document, const NSString& contentType, double seconds) {
        EXPECT_LT(seconds, 12);
        if (document.characters() == "ask office encrypted")
            noteOutcome(Outcome::locked, u"the document is encrypted");
        if (document.characters() == "ask office ended")
            throw NSException(u"Late", u"It took too long.");
        return document.characters() == "ask office" || document.characters() == "ask-often"
                   ? NSData::dataWithBytes(contentType.UTF8String())
                   : NSData();
    });
    EXPECT_EQ(answerOf("ask office"), Value(u"public.plain-text"));
    EXPECT_EQ(of("ask-often").objectForKey(u"answers"), Value(NSNumber::numberWithLongLong(16)));
    const std::tuple<const char*, std::optional<Outcome>, const char*> rows[] = {
        {"ask office encrypted", Outcome::locked, "the text is missing: the document is encrypted"},
        {"ask office ended", std::nullopt, "the text is missing: it took too long"},
    };
    for (const auto& [contents, outcome, sentence] : rows) {
        const RequestNotes own;
        EXPECT_TRUE(answerOf(contents).isNil());
        EXPECT_EQ(own.sentenceOfResult().UTF8String(), sentence);
        EXPECT_EQ(own.outcome(), outcome);
    }
    setOfficeDocumentReader({});
}

TEST_F(Metadata, InstancesAreReleasedBeforeTheImport) {
    add("Library/Spotlight/A.mdimporter", "public.plain-text", {"makeOther", "makeNone", "make"});
    for (int time = 1; time <= 3; ++time) {
        const NSDictionary result = of("released");
        EXPECT_EQ(result.objectForKey(u"released"), Value(NSNumber::numberWithLongLong(2 * time)))
            << "also the one without the interface";
    }
}

TEST_F(Metadata, LibrariesStayLoaded) {
    add("Library/Spotlight/A.mdimporter", "public.plain-text", {"make"});
    const Value process = of("process").objectForKey(u"process");
    for (int time = 0; time < 50; ++time)
        ASSERT_EQ(of("process").objectForKey(u"process"), process);
}

} // namespace
} // namespace kelvo
