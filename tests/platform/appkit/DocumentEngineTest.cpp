#include "platform/appkit/DocumentEngine.h"

#include "platform/foundation/NSLog.h"
#include "support/Listener.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

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
        const NSData rtf = engine.RTFOfDocument(NSData::dataWithBytes(document), extension, seconds);
        return rtf.isNil() ? "nil" : std::string(rtf.characters());
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
    EXPECT_EQ(read(paragraph("lost"), u"fodt", 0.2), "nil");
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

TEST_F(DocumentEngineTest, WithoutAFolderThereIsOneLineInTheLog) {
    ::setenv("TMPDIR", folder.path("missing").c_str(), 1);
    const NSLogCapture log;
    EXPECT_EQ(read(paragraph("x"), u"fodt"), "nil");
    EXPECT_EQ(log.messages().size(), 1U);
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    EXPECT_NE(read(paragraph("later"), u"fodt").find("later"), std::string::npos);
}

} // namespace
} // namespace kelvo
