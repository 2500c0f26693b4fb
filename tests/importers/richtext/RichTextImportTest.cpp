#include "importers/richtext/RichTextImport.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"
#include "platform/plugins/ImporterEngineMessages.h"
#include "support/Importing.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace kelvo::importers {
namespace {

using Attributed = std::map<std::string, std::string>;

NSData dataOf(const std::string& bytes) {
    return NSData::dataWithBytes(bytes);
}

/// By their names without what is common to these; "note": what else there is to say. `package` is the file that is found
/// in a package, by its name.
Attributed attributesOf(const std::string& file, const char* type, const std::string& package = "",
                        const NSString& name = u"TXT.rtf") {
    Attributed result;
    const NSDictionary attributes = attributesByImporter(
        importRichText, dataOf(file), type,
        [&](Outcome outcome, const NSString& why) {
            result["note"] = wordOfOutcome(outcome).UTF8String() + ": " + why.UTF8String();
        },
        [&](const NSDictionary& question) {
            const bool isThere = question.objectForKey(importerengine::nameKey) == name;
            return isThere && !package.empty() ? dataOf(package) : NSData();
        });
    for (const Value& key : attributes.allKeys()) {
        const Value& value = attributes.objectForKey(key);
        std::string shown = value.isArray() ? "" : value.description().UTF8String();
        for (const Value& each : value.array())
            shown += '<' + each.string().UTF8String() + '>';
        const std::string attribute = key.string().UTF8String();
        result[attribute.starts_with("kMDItem") ? attribute.substr(7) : attribute] = shown;
    }
    return result;
}

TEST(RichTextImport, SetsWhatDocumentsSay) {
    const std::string letter =
        "{\\rtf1\\ansi{\\info{\\title The  Tide Table}{\\author Lindqvist, Ada; Per Ek}{\\operator Mia Sund}"
        "{\\keywords tide, harbour}{\\subject Water}{\\doccomm With care}{\\*\\company Quay Ltd.}"
        "{\\*\\copyright 2020 "
        "Ada}{\\creatim\\yr2020\\mo2\\dy29\\timesinceref604672496}\\nofpages3\\nofwords12}"
        "Caf\\'e9\\line\\u9731?\\par{\\v hidden}{\\pict\\pngblip\\picw1\\pich1 89504E47}end}";
    const Attributed expected{{"Title", "The Tide Table"},
                              {"Authors", "<Lindqvist, Ada><Per Ek>"},
                              {"Editors", "<Mia Sund>"},
                              {"Keywords", "<tide><harbour>"},
                              {"Subject", "Water"},
                              {"Comment", "With care"},
                              {"Organizations", "<Quay Ltd.>"},
                              {"Copyright", "2020 Ada"},
                              {"ContentCreationDate", "2020-02-29 12:34:56 +0000"},
                              {"NumberOfPages", "3"},
                              {"plumwick_wordCount", "12"},
                              {"TextContent", "Caf\u00E9\n\u2603\nend"}};
    EXPECT_EQ(attributesOf(letter, "public.rtf"), expected);
    for (const char16_t* const name : {u"TXT.rtf", u"txt.rtf", u"TXT.RTF"})
        EXPECT_EQ(attributesOf("", "com.apple.rtfd", letter, name), expected);
    const auto folder = NSFileWrapper::initDirectory();
    const auto text = NSFileWrapper::initRegularFileWithContents(dataOf(letter));
    text->setPreferredFilename(u"TXT.rtf");
    folder->addFileWrapper(text);
    const std::string flat(folder->serializedRepresentation().characters());
    EXPECT_EQ(attributesOf(flat, "com.apple.flat-rtfd"), expected);
    EXPECT_EQ(attributesOf(flat, "com.apple.rtfd"), expected) << "a file by the name of a package";
}

TEST(RichTextImport, SaysWhatKeepsItFromReading) {
    const Attributed none{{"note", "broken: it is no rich text"}};
    EXPECT_EQ(attributesOf("", "public.rtf"), none);
    EXPECT_EQ(attributesOf("Dear reader", "public.rtf"), none);
    EXPECT_EQ(attributesOf("", "com.apple.rtfd"), none);
    const Attributed damaged{{"note", "broken: it is no RTFD, or a damaged one"}};
    EXPECT_EQ(attributesOf(std::string("rtfd\0\0\0\0\xFF\xFF", 10), "com.apple.flat-rtfd"), damaged);
}

} // namespace
} // namespace kelvo::importers
