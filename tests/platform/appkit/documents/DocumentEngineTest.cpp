#include "platform/appkit/documents/DocumentEngine.h"

#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/engine/program/Landlock.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/processes/NSTask.h"
#include "support/Listener.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {
namespace {

// Long enough for the start of the engine on a loaded machine.
constexpr double ample = 120;

/// What the engine makes its folder in, in place of the user's own.
class DocumentEngineTest : public testing::Test {
protected:
    DocumentEngineTest() { ::setenv("TMPDIR", folder.path().c_str(), 1); }
    ~DocumentEngineTest() override { ::unsetenv("TMPDIR"); }

    std::string read(const std::string& document, const char16_t* extension, double seconds = ample) {
        try {
            const NSData rtf = engine.RTFOfDocument(NSData::dataWithBytes(document), extension, seconds);
            return rtf.isNil() ? "nil" : std::string(rtf.characters());
        } catch (const NSException& exception) {
            return exception.name().UTF8String();
        }
    }
    std::string text(const std::string& document, const char16_t* extension, double seconds = ample) {
        const std::string rtf = read(document, extension, seconds);
        return rtf == "nil" ? rtf
                            : NSAttributedStringKitAdditions::initWithRTF_documentAttributes(
                                  NSData::dataWithBytes(rtf), nullptr)
                                  .string()
                                  .UTF8String();
    }
    std::string paragraph(const std::string& text) {
        return tests::flatOpenDocument("<text:p>" + text + "</text:p>");
    }

    const tests::TemporaryFolder folder;
    DocumentEngine engine;
};

TEST_F(DocumentEngineTest, ADeadOrSilentEngineIsReplaced) {
    EXPECT_EQ(engine.processIdentifier(), 0);
    EXPECT_NE(read(paragraph("first"), u"fodt").find("first"), std::string::npos);
    const pid_t first = engine.processIdentifier();
    EXPECT_NE(read(paragraph("second"), u"fodt").find("second"), std::string::npos);
    EXPECT_EQ(engine.processIdentifier(), first);

    ASSERT_EQ(::kill(first, SIGSTOP), 0);
    EXPECT_EQ(read(paragraph("lost"), u"fodt", 0.2), "EngineTimeoutException");
    EXPECT_EQ(engine.processIdentifier(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_NE(read(paragraph("third"), u"fodt").find("third"), std::string::npos);

    // Ended while nobody asked.
    const auto third = static_cast<id_t>(engine.processIdentifier());
    ASSERT_EQ(::kill(engine.processIdentifier(), SIGKILL), 0);
    siginfo_t end;
    ASSERT_EQ(::waitid(P_PID, third, &end, WEXITED | WNOWAIT), 0);
    EXPECT_NE(read(paragraph("fourth"), u"fodt").find("fourth"), std::string::npos);
}

TEST_F(DocumentEngineTest, NoDocumentIsNil) {
    EXPECT_EQ(read(tests::zipPackage({{"mimetype", "application/vnd.oasis.opendocument.text"}}), u"odt"),
              "nil");
    EXPECT_EQ(read(tests::openDocument("<text:p>x</text:p>", tests::Encryption::claimed), u"odt"), "nil");
    EXPECT_EQ(read(paragraph("x"), u"../fodt"), "nil");
    EXPECT_TRUE(engine.RTFOfDocument(nullptr, u"odt", ample).isNil());
    EXPECT_NE(read(paragraph("still there"), u"fodt").find("still there"), std::string::npos);
}

TEST_F(DocumentEngineTest, DocumentsOfEachProgramBecomeOneFileOfXML) {
    const auto flat = [&](const std::string& document, const char16_t* extension) {
        const NSData result =
            engine.flatOpenDocumentOfDocument(NSData::dataWithBytes(document), extension, ample);
        return result.isNil() ? "nil" : std::string(result.characters());
    };
    const auto documentOf = [&](const std::string& kind, const std::string& content) {
        std::string document = tests::flatOpenDocument("");
        const auto replace = [&](const std::string& from, const std::string& to) {
            for (std::size_t place = 0; (place = document.find(from, place)) != document.npos;
                 place += to.size())
                document.replace(place, from.size(), to);
        };
        replace("<office:text>", "<office:" + kind + ">" + content);
        replace("</office:text>", "</office:" + kind + ">");
        replace("opendocument.text\"", "opendocument." + kind + "\"");
        replace(" xmlns:office",
                " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" xmlns:office");
        return document;
    };
    const std::string sheet = "<table:table table:name=\"Tides\"><table:table-row><table:table-cell>"
                              "<text:p>low</text:p></table:table-cell></table:table-row></table:table>";
    const std::string page = "<draw:page><draw:frame svg:width=\"5cm\" svg:height=\"2cm\"><draw:text-box>"
                             "<text:p>quay</text:p></draw:text-box></draw:frame></draw:page>";
    // What a document is, its contents say.
    EXPECT_NE(flat(paragraph("boat"), u"doc").find("<office:text"), std::string::npos);
    const std::string workbook = flat(documentOf("spreadsheet", sheet), u"xls");
    EXPECT_NE(workbook.find("<office:spreadsheet"), std::string::npos) << workbook.substr(0, 100);
    EXPECT_NE(workbook.find("table:name=\"Tides\""), std::string::npos);
    EXPECT_EQ(read(documentOf("spreadsheet", sheet), u"xls"), "nil") << "of which there is no rich text";
    const std::string slides = flat(documentOf("presentation", page), u"ppt");
    EXPECT_NE(slides.find("<office:presentation"), std::string::npos) << slides.substr(0, 100);
    EXPECT_NE(slides.find(">quay<"), std::string::npos);
    EXPECT_EQ(flat("PK", u"xls"), "nil");
}

TEST_F(DocumentEngineTest, NothingElseIsReadOrFetched) {
    const tests::Listener listener;
    const tests::TemporaryFolder other;
    const std::string picture = other.write("picture.png", tests::smallPNG());
    const std::string text = other.write("secret.txt", "SECRET");

    const auto image = [](const std::string& url) {
        return "<draw:frame text:anchor-type=\"as-char\" svg:width=\"1cm\" svg:height=\"1cm\"><draw:image "
               "xlink:href=\"" +
               url + "\" xlink:type=\"simple\" xlink:show=\"embed\" xlink:actuate=\"onLoad\"/></draw:frame>";
    };
    const std::string document = tests::flatOpenDocument(
        "<text:p>before" + image(listener.url() + "/x.png") + image("file://" + picture) +
        "after</text:p><text:section text:name=\"S\"><text:section-source xlink:href=\"file://" + text +
        "\" xlink:type=\"simple\"/><text:p>old</text:p></text:section>");
    const std::string rtf = read(document, u"fodt");
    for (const char* part : {"before", "after", "old"})
        EXPECT_NE(rtf.find(part), std::string::npos) << part;
    for (const char* part : {"SECRET", "pngblip"})
        EXPECT_EQ(rtf.find(part), std::string::npos) << part;
    EXPECT_FALSE(listener.wasAsked());
}

TEST_F(DocumentEngineTest, WhatADocumentLinksIsNotEvenOpened) {
    if (versionOfLandlock() == 0)
        GTEST_SKIP() << "this kernel has no Landlock";
    const tests::Listener listener;
    const tests::TemporaryFolder other;
    const std::string picture = other.write("picture.png", tests::smallPNG());
    const FileDescriptor opened(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    ASSERT_GE(::inotify_add_watch(opened.get(), picture.c_str(), IN_OPEN), 0);
    for (const std::string& url : {"file://" + picture, listener.url() + "/x.png"}) {
        // These kinds of links no setting of the office suite keeps it from following.
        const std::string link =
            " xlink:href=\"" + url + "\" xlink:type=\"simple\" xlink:actuate=\"onLoad\"/>";
        std::string document = tests::flatOpenDocument(
            "<text:p text:style-name=\"P\">text</text:p><text:p><draw:rect draw:style-name=\"D\" "
            "svg:width=\"2cm\" svg:height=\"2cm\"/><draw:g><draw:frame svg:width=\"1cm\" "
            "svg:height=\"1cm\"><draw:image" +
            link + "</draw:frame></draw:g></text:p>");
        document.insert(document.find("<office:body>"),
                        "<office:styles><draw:fill-image draw:name=\"F\"" + link +
                            "</office:styles><office:automatic-styles><style:style style:name=\"P\" "
                            "style:family=\"paragraph\"><style:paragraph-properties><style:background-image" +
                            link +
                            "</style:paragraph-properties></style:style><style:style style:name=\"D\" "
                            "style:family=\"graphic\"><style:graphic-properties draw:fill=\"bitmap\" "
                            "draw:fill-image-name=\"F\"/></style:style></office:automatic-styles>");
        EXPECT_NE(read(document, u"fodt").find("text"), std::string::npos) << url;
    }
    inotify_event event;
    EXPECT_EQ(::read(opened.get(), &event, sizeof event), -1) << "the picture was opened";
    EXPECT_FALSE(listener.wasAsked());
}

/// An odt whose text is not in UTF-8.
std::string inUTF16Package(const std::string& body) {
    const NSString content =
        NSString::stringWithUTF8String("<?xml version=\"1.0\" encoding=\"UTF-16\"?><office:document-content" +
                                       tests::odfNamespaces() + "><office:body><office:text><text:p>" + body +
                                       "</text:p></office:text></office:body></office:document-content>");
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : content.characters())
        bytes.append({static_cast<char>(unit), static_cast<char>(unit >> 8)});
    return tests::zipPackage(
        {{"mimetype", "application/vnd.oasis.opendocument.text"},
         {"META-INF/manifest.xml",
          R"(<?xml version="1.0"?><m:manifest xmlns:m="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0")"
          R"( m:version="1.2"><m:file-entry m:full-path="/")"
          R"( m:media-type="application/vnd.oasis.opendocument.text"/>)"
          R"(<m:file-entry m:full-path="content.xml" m:media-type="text/xml"/></m:manifest>)"},
         {"content.xml", bytes}});
}

TEST_F(DocumentEngineTest, FileNamesAreThoseThatWereSaved) {
    using namespace tests;
    const std::string field = "A<text:file-name text:display=\"full\">saved</text:file-name>B";
    const auto odt = [](const std::string& body) { return openDocument("<text:p>" + body + "</text:p>"); };
    const auto run = [](const std::string& inner) { return "<w:r>" + inner + "</w:r>"; };
    const auto mark = [&](const std::string& type) {
        return run("<w:fldChar w:fldCharType=\"" + type + "\"/>");
    };
    const auto instruction = [&](const std::string& part) {
        return run("<w:instrText xml:space=\"preserve\">" + part + "</w:instrText>");
    };
    const auto docx = [](const std::string& runs) {
        return officeOpenXML("A</w:t></w:r>" + runs + "<w:r><w:t>B", "");
    };
    const auto complexField = [&](const std::string& instructions) {
        return mark("begin") + instructions + mark("separate") + run("<w:t>saved</w:t>") + mark("end");
    };
    const struct {
        const char* name;
        std::string document;
        const char16_t* extension;
        const char* text = "AsavedB";
    } rows[] = {
        {"odt", odt(field), u"odt"},
        {"odt, fixed", odt("A<text:file-name text:fixed='true' >saved</text:file-name >B"), u"odt"},
        {"odt, empty", odt("A<text:file-name/>B"), u"odt", "AB"},
        {"odt, no field", odt("A<![CDATA[<text:file-name>]]><!-- ' --><?p '?>" + field), u"odt",
         "A<text:file-name>AsavedB"},
        {"fodt", paragraph(field), u"fodt"},
        {"odt in UTF-16", inUTF16Package("\u0159" + field), u"odt", "\u0159AsavedB"},
        {"sxw", openOfficeText(field), u"sxw"},
        {"docx", docx(complexField(instruction(" FILENAME  \\p "))), u"docx"},
        {"docx, in pieces", docx(complexField(instruction(" File") + instruction("Name\\* UPPER"))), u"docx"},
        {"docx, simple",
         docx("<w:fldSimple w:dirty='0' w:instr = ' FILENAME \\* MERGEFORMAT '>" + run("<w:t>saved</w:t>") +
              "</w:fldSimple>"),
         u"docx"},
        {"docx, within another",
         docx(complexField(instruction(" QUOTE ") + complexField(instruction("FILENAME")))), u"docx"},
        {"docx, no field", docx(run("<w:t>FILENAME</w:t>")), u"docx", "AFILENAMEB"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(row.document, row.extension).substr(0, std::string(row.text).size()), row.text)
            << row.name;
}

TEST_F(DocumentEngineTest, FileNamesAreThoseThatTheWriterOfTheFileSaved) {
    const std::string field = "<text:file-name text:display=\"name-and-extension\">x</text:file-name>";
    folder.write(
        "original.fodt",
        paragraph(field +
                  "<text:note text:note-class=\"footnote\"><text:note-citation>1</text:note-citation>"
                  "<text:note-body><text:p>" +
                  field + "</text:p></text:note-body></text:note>"));
    for (const char16_t* extension : {u"doc", u"docx", u"odt"}) {
        NSTask writer;
        writer.setLaunchPath(u"/usr/bin/soffice");
        writer.setArguments(NSArray::arrayWithObjects(
            {NSString::stringWithUTF8String("-env:UserInstallation=file://" + folder.path("profile")),
             u"--headless", u"--convert-to", extension, u"--outdir",
             NSString::stringWithUTF8String(folder.path()),
             NSString::stringWithUTF8String(folder.path("original.fodt"))}));
        const auto output = NSPipe::pipe();
        writer.setStandardOutput(output);
        writer.setStandardError(output);
        writer.launch();
        writer.waitUntilExit();
        const std::string name = NSString(extension).UTF8String();
        const std::string shown = text(folder.read("original." + name), extension);
        const std::size_t first = shown.find("original.fodt");
        EXPECT_NE(first, std::string::npos) << name << ": " << shown;
        EXPECT_NE(shown.find("original.fodt", first + 1), std::string::npos) << name << ": " << shown;
        EXPECT_EQ(shown.find("document."), std::string::npos) << name << ": " << shown;
    }
}

TEST_F(DocumentEngineTest, ADocumentIsNotLoadedAgain) {
    const std::string other = folder.write("other.fodt", paragraph("other"));
    std::string document = paragraph("words");
    document.insert(document.find("<office:body>"),
                    "<office:meta><meta:auto-reload xlink:href=\"file://" + other +
                        "\" xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\" "
                        "meta:delay=\"PT0S\"/></office:meta>");
    EXPECT_EQ(text(document, u"fodt", 12).substr(0, 5), "words");
}

TEST_F(DocumentEngineTest, ItLeavesNothing) {
    auto own = std::make_unique<DocumentEngine>();
    ASSERT_FALSE(own->RTFOfDocument(NSData::dataWithBytes(paragraph("x")), u"fodt", ample).isNil());
    const std::vector<std::filesystem::path> folders(std::filesystem::directory_iterator(folder.path()), {});
    ASSERT_EQ(folders.size(), 1U);
    struct stat facts;
    ASSERT_EQ(::stat(folders[0].c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700U);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folders[0]))
        EXPECT_FALSE(entry.path().filename().string().starts_with("document")) << entry.path();
    own = nullptr;
    EXPECT_FALSE(std::filesystem::exists(folders[0]));
}

TEST_F(DocumentEngineTest, WithoutAFolderThereIsNoEngine) {
    ::setenv("TMPDIR", folder.path("missing").c_str(), 1);
    EXPECT_EQ(read(paragraph("x"), u"fodt"), "EngineMissingException");
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    EXPECT_NE(read(paragraph("later"), u"fodt").find("later"), std::string::npos);
}

} // namespace
} // namespace kelvo
