#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/foundation/processes/NSTask.h"
#include "protocol/ResultKeys.h"
#include "support/Movies.h"
#include "support/OfficeDocuments.h"
#include "support/PDFDocuments.h"
#include "support/ServiceSession.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

namespace kelvo {
namespace {

using namespace std::string_literals;
using tests::ServiceSession;

/// The service itself, as clients start it.
class ServiceTest : public testing::Test {
protected:
    ServiceSession session{"PlumwickHelper"};
    Client client{session.options()};

    pid_t startedProcess() {
        client.metaDataForFile(u"/x");
        return client.status().processIdentifier;
    }

    static std::string linkTarget(pid_t process, const char* name) {
        return std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/" + name).string();
    }
};

TEST_F(ServiceTest, AnswersAllNineOperationsAsForUnreadableFiles) {
    EXPECT_TRUE(client.metaDataForFile(u"/nonexistent").isNil());
    EXPECT_TRUE(client.RTFDWithHTML_baseURL_allowRemoteRequest(nullptr, nullptr, false).isNil());
    EXPECT_FALSE(client.writeRTFDData_toFile(NSData::dataWithBytes("no rtfd"), u"/nonexistent/x.rtfd"));
    EXPECT_EQ(client.searchableTextOfWebArchive(u"/nonexistent"), NSDictionary::dictionary());
    EXPECT_TRUE(client.attributedStringWithContentsOfFile(u"/nonexistent").isNil());
    EXPECT_EQ(client.posterImageForMovieWithFile(u"/nonexistent"),
              NSDictionary(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                  {{NSNumber::numberWithFloat(0), ResultDurationKey}, {u"{0, 0}", ResultSizeKey}})));
    EXPECT_TRUE(client.attributed_stringWithPDF(true, NSData::dataWithBytes("no pdf")).isNil());
    EXPECT_TRUE(
        client.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(u"/nonexistent", true, true).isNil());
    EXPECT_TRUE(client.PDFImageRepOfFile(u"/nonexistent").isNil());
}

TEST_F(ServiceTest, WritesPackages) {
    const tests::TemporaryFolder folder;
    const auto write = [&](const NSData& data, const std::string& path) {
        return client.writeRTFDData_toFile(data, NSString::stringWithUTF8String(path));
    };
    const auto package = NSFileWrapper::initDirectory();
    for (const auto& [name, contents] :
         {std::pair(u"TXT.rtf", "{\\rtf1 a {{\\NeXTGraphic a.png}\\'ac}\\par b}"), std::pair(u"a.png", "PNG"),
          std::pair(u"unused", "x")}) {
        const auto file = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(contents));
        file->setPreferredFilename(name);
        package->addFileWrapper(file);
    }
    const NSData rtfd = package->serializedRepresentation();
    folder.write("there.rtfd/kept", "");
    folder.write("there.rtfd/TXT.rtf", "old");
    for (const char* name : {"new.rtfd", "there.rtfd"}) {
        ASSERT_TRUE(write(rtfd, folder.path(name))) << name;
        EXPECT_EQ(folder.read(name + std::string("/a.png")), "PNG") << name;
        EXPECT_FALSE(std::filesystem::exists(folder.path(name) + "/unused")) << name;
        EXPECT_EQ(folder.read(name + std::string("/TXT.rtf")).find("{\\rtf1"), 0u) << name;
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path("there.rtfd/kept")));
    EXPECT_FALSE(write(NSData::dataWithBytes("{\\rtf1 plain}"), folder.path("plain.rtfd")));
    EXPECT_FALSE(write(rtfd, folder.path("none/x.rtfd")));
    EXPECT_FALSE(write(rtfd.subdataWithRange({0, rtfd.length() - 1}), folder.path("cut.rtfd")));
    EXPECT_FALSE(write(nullptr, folder.path("nil.rtfd")) || client.writeRTFDData_toFile(rtfd, nullptr));
}

TEST_F(ServiceTest, ReadsWebArchives) {
    const tests::TemporaryFolder folder;
    const auto answer = [&](const std::string& contents) {
        return client.searchableTextOfWebArchive(
            NSString::stringWithUTF8String(folder.write("page", contents)));
    };
    EXPECT_EQ(
        answer("MIME-Version: 1.0\nContent-Type: text/html; charset=utf-8\nContent-Location: http://h/\n\n"
               "<p>\xC3\xA4"),
        NSDictionary(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{u"\n\n\n\n\u00E4", u"String"}, {u"<p>\u00E4", u"Source"}, {u"http://h/", u"URL"}})));
    EXPECT_EQ(answer("no archive"), NSDictionary::dictionary());
}

TEST_F(ServiceTest, ReadsDocuments) {
    const tests::TemporaryFolder folder;
    const auto answer = [&](const std::string& contents) {
        return client.attributedStringWithContentsOfFile(
            NSString::stringWithUTF8String(folder.write("document", contents)));
    };
    NSDictionary written;
    const auto textOf = [&written](const NSDictionary& result) {
        return NSAttributedStringKitAdditions::initWithRTFD_documentAttributes(
                   result.objectForKey(ResultRtfdKey).data(), &written)
            .string()
            .UTF8String();
    };
    const NSDictionary plain = answer("na\xEFve");
    EXPECT_EQ(plain.count(), 2U);
    EXPECT_EQ(textOf(plain), "na\xC3\xAFve");
    const NSDictionary facts = plain.objectForKey(ResultDocumentAttributesKey).dictionary();
    EXPECT_EQ(facts.objectForKey(NSDocumentTypeDocumentAttribute), Value(NSPlainTextDocumentType));
    EXPECT_EQ(facts.objectForKey(NSCharacterEncodingDocumentAttribute), Value(NSNumber::numberWithInt(12)));

    const NSDictionary office = answer(tests::officeOpenXML("Boldly", "The Title"));
    EXPECT_EQ(textOf(office).substr(0, 6), "Boldly");
    EXPECT_EQ(
        office.objectForKey(ResultDocumentAttributesKey).dictionary().objectForKey(NSTitleDocumentAttribute),
        Value(u"The Title"));
    EXPECT_EQ(written.objectForKey(NSTitleDocumentAttribute), Value(u"The Title"));
    EXPECT_TRUE(answer(tests::smallPNG()).isNil());
    EXPECT_TRUE(client.attributedStringWithContentsOfFile(nullptr).isNil());
}

TEST_F(ServiceTest, GivesPostersOfMovies) {
    const tests::TemporaryFolder folder;
    const NSDictionary film = client.posterImageForMovieWithFile(tests::stringOf(
        tests::movieFile(folder, "film.mp4", tests::countedFrames("7") + tests::wellEncoded)));
    EXPECT_EQ(film.count(), 3U);
    const NSNumber* const duration = film.objectForKey(ResultDurationKey).numberIfAny();
    ASSERT_TRUE(duration);
    EXPECT_EQ(duration->kind(), NSNumber::Kind::float32);
    EXPECT_EQ(duration->floatValue(), 7);
    EXPECT_EQ(film.objectForKey(ResultSizeKey), Value(u"{64, 48}"));
    folder.write("film.tiff", film.objectForKey(ResultThumbnailKey).data().characters());
    // LZW, and the 15th frame's grey.
    EXPECT_EQ(
        std::system(
            ("cd '" + folder.path() +
             "' && test $(identify -format '%C %w %h %[fx:round(255*p{30,20}.g)]' film.tiff | tr ' ' _) = "
             "LZW_64_48_45")
                .c_str()),
        0);
    const NSDictionary tone = client.posterImageForMovieWithFile(
        tests::stringOf(tests::movieFile(folder, "tone.wav", tests::toneOfOneSecond)));
    EXPECT_EQ(tone, NSDictionary(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                        {{NSNumber::numberWithFloat(1), ResultDurationKey}, {u"{0, 0}", ResultSizeKey}})));
}

TEST_F(ServiceTest, WritesDownWhatBecameOfEachRequest) {
    const tests::TemporaryFolder folder;
    const auto file = [&](const std::string& contents) {
        return NSString::stringWithUTF8String(folder.write("file", contents));
    };
    const NSString missing = u"/nonexistent/x";
    const NSData words = NSData::dataWithBytes("words");
    const NSString text = NSString::stringWithUTF8String(folder.write("words.txt", "words"));
    const NSString tone = tests::stringOf(tests::movieFile(folder, "tone.wav", tests::toneOfOneSecond));
    const NSString other = NSString::stringWithUTF8String(folder.write("words", std::string(16, '\1')));
    const auto read = [&](const NSString& path) { client.attributedStringWithContentsOfFile(path); };
    const auto archive = [&](const NSString& path) { client.searchableTextOfWebArchive(path); };
    const auto write = [&](const NSData& data, const NSString& path) {
        client.writeRTFDData_toFile(data, path);
    };
    const NSData rtfd =
        client.attributedStringWithContentsOfFile(file("text")).objectForKey(ResultRtfdKey).data();
    const struct {
        const char* name;
        std::function<void()> ask;
        Outcome outcome;
        const char16_t* sentence;
    } rows[] = {
        {"document", [&] { read(file("text")); }, Outcome::answered, nullptr},
        {"missing document", [&] { read(missing); }, Outcome::nothing, u"there is no such file"},
        {"page", [&] { client.RTFDWithHTML_baseURL_allowRemoteRequest(nullptr, nullptr, false); },
         Outcome::nothing, u"no page could be made of it"},
        {"archive", [&] { archive(file("MIME-Version: 1.0\nContent-Type: text/html\n\n<p>text")); },
         Outcome::answered, nullptr},
        {"archive without text", [&] { archive(file("MIME-Version: 1.0\nContent-Type: text/html\n\n<p>")); },
         Outcome::nothing, u"there is no text in the page"},
        {"no archive", [&] { archive(file("<p>words")); }, Outcome::unsupported,
         u"it is no web archive: neither a property list nor a message with a page"},
        {"missing archive", [&] { archive(missing); }, Outcome::nothing, u"there is no such file"},
        {"written", [&] { write(rtfd, NSString::stringWithUTF8String(folder.path("x.rtfd"))); },
         Outcome::answered, nullptr},
        {"no rich text", [&] { write(words, NSString::stringWithUTF8String(folder.path("y.rtfd"))); },
         Outcome::broken, u"it is no RTFD, or a damaged one"},
        {"no folder", [&] { write(rtfd, missing); }, Outcome::nothing, u"there is no such folder"},
        {"metadata", [&] { client.metaDataForFile(text); }, Outcome::answered, nullptr},
        {"metadata of none", [&] { client.metaDataForFile(other); }, Outcome::unsupported,
         u"no importer is for files of its type (public.data)"},
        {"movie", [&] { client.posterImageForMovieWithFile(tone); }, Outcome::answered, nullptr},
        {"no movie", [&] { client.posterImageForMovieWithFile(text); }, Outcome::unsupported,
         u"it is no movie or sound of a kind that can be read"},
        {"missing movie", [&] { client.posterImageForMovieWithFile(missing); }, Outcome::nothing,
         u"there is no such file"},
        {"drawing", [&] { client.PDFImageRepOfFile(text); }, Outcome::unsupported,
         u"it is no image of a kind that can be read"},
        {"missing metadata", [&] { client.metaDataForFile(missing); }, Outcome::nothing,
         u"there is no such file"},
        {"no PDF", [&] { client.attributed_stringWithPDF(true, words); }, Outcome::broken,
         u"it is no PDF, or too damaged to be opened"},
    };
    for (const auto& row : rows) {
        row.ask();
        const auto record = client.outcomeOfLastRequest();
        ASSERT_TRUE(record) << row.name;
        EXPECT_GT(record->sequence, 0u) << row.name;
        EXPECT_EQ(record->outcome, row.outcome) << row.name;
        EXPECT_EQ(record->sentence, NSString(row.sentence)) << row.name << record->sentence.UTF8String();
        EXPECT_GT(record->milliseconds, 0) << row.name;
    }
    struct stat facts;
    ASSERT_EQ(stat((session.socketPath() + ".ledger").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777, 0600u);
    const auto recent = Client::recentRequests(2);
    ASSERT_EQ(recent.size(), 2u);
    EXPECT_EQ(recent.front().path, missing);
    EXPECT_EQ(recent.back().byteCount, 5u);
}

/// Of the process, without paths and versions. Modules that the C library loads for itself are part of it.
std::set<std::string> librariesOf(pid_t process) {
    std::set<std::string> names;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t slash = line.rfind('/');
        const std::size_t end = line.find(".so", std::min(slash, line.size()));
        if (end == std::string::npos || line.find("/gconv/") != std::string::npos)
            continue;
        const std::string name = line.substr(slash + 1, end - slash - 1);
        names.insert(name.substr(0, name.find_first_of("-0123456789", name.starts_with("ld-") ? 3 : 0)));
    }
    return names;
}

TEST_F(ServiceTest, NoLibraryThatReadsFilesIsInTheService) {
    const tests::TemporaryFolder folder;
    const auto file = [&](const std::string& contents) {
        return NSString::stringWithUTF8String(folder.write("file", contents));
    };
    const std::string page = "<p>a<img src='data:image/png;base64,iVBORw0KGgo='>";
    const NSData rtfd = client.attributedStringWithContentsOfFile(file(tests::officeOpenXML("a", "b")))
                            .objectForKey(ResultRtfdKey)
                            .data();
    EXPECT_TRUE(client.writeRTFDData_toFile(rtfd, NSString::stringWithUTF8String(folder.path("a.rtfd"))));
    EXPECT_FALSE(
        client.RTFDWithHTML_baseURL_allowRemoteRequest(NSData::dataWithBytes(page), nullptr, true).isNil());
    for (const std::string& archive : {"MIME-Version: 1.0\nContent-Type: text/html\n\n" + page,
                                       "<plist "
                                       "version=\"1.0\"><dict><key>WebMainResource</"
                                       "key><dict><key>WebResourceMIMEType</key><string>text/html</string>"
                                       "<key>WebResourceData</key><string>a</string></dict></dict></plist>"s})
        EXPECT_EQ(client.searchableTextOfWebArchive(file(archive)).count(), 2U) << archive;
    tests::PDFParts parts;
    parts.pages = {tests::pdfText("page")};
    const std::string pdf = tests::pdfDocument(parts);
    const NSDictionary rich = client.attributed_stringWithPDF(true, NSData::dataWithBytes(pdf));
    EXPECT_EQ(NSAttributedString::withValue(rich.objectForKey(ResultStringKey)).string(), u"page");
    const NSString picture = file(tests::smallPNG());
    EXPECT_EQ(client.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(picture, false, true).count(), 2U);
    const NSString film =
        tests::stringOf(tests::movieFile(folder, "film.mp4", tests::countedFrames("1") + tests::wellEncoded));
    EXPECT_EQ(client.posterImageForMovieWithFile(film).count(), 3U);
    EXPECT_EQ(client.PDFImageRepOfFile(file(pdf)).length(), pdf.size());
    EXPECT_EQ(client.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(file(pdf), false, true).count(),
              4U);
    const NSString drawing = file("%!PS\n9 9 moveto 99 99 lineto stroke showpage");
    EXPECT_FALSE(client.PDFImageRepOfFile(drawing).isNil());
    for (const auto& [name, contents] :
         {std::pair{"a.html", page}, std::pair{"a.pdf", pdf}, std::pair{"a.rtf", "{\\rtf1 a}"s},
          std::pair{"a.docx", tests::officeOpenXML("a", "b")},
          std::pair{"a.doc", tests::flatOpenDocument("<text:p>a</text:p>")}, std::pair{"a.rtfd", ""s}}) {
        const NSString path = NSString::stringWithUTF8String(contents.empty() ? folder.path(name)
                                                                              : folder.write(name, contents));
        EXPECT_FALSE(client.metaDataForFile(path).objectForKey(u"kMDItemTextContent").isNil()) << name;
    }

    // The last are what cairo links; it is given pixels alone, by which none of them is called.
    const std::set<std::string> allowed{"ld-linux",        "libc",          "libm",      "libgcc_s",
                                        "libstdc++",       "libresolv",     "libicuuc",  "libicudata",
                                        "libicui",         "libexpat",      "libcapnp",  "libkj",
                                        "libhwy",          "libcairo",      "libpixman", "libfontconfig",
                                        "libfreetype",     "libpng",        "libz",      "libxcb",
                                        "libxcb-shm",      "libxcb-render", "libX",      "libXrender",
                                        "libXext",         "libXau",        "libXdmcp",  "libbrotlidec",
                                        "libbrotlicommon", "libbsd",        "libmd"};
    const auto loaded = librariesOf(client.status().processIdentifier);
    EXPECT_TRUE(loaded.contains("libexpat"));
    for (const std::string& name : loaded)
        EXPECT_TRUE(allowed.contains(name) || name.starts_with("libnss_")) << name;
}

TEST_F(ServiceTest, TellsItsStatusFromOutside) {
    startedProcess();
    const ServiceStatus status = client.status();
    EXPECT_EQ(status.registeredName, u"PlumwickHelper_2.0pb8build4");
    EXPECT_EQ(linkTarget(status.processIdentifier, "exe"), tests::builtProgram("PlumwickHelper"));
    EXPECT_EQ(status.version, NSString::stringWithUTF8String(KELVO_VERSION));
    EXPECT_GT(status.residentBytes, 1u << 20);
    EXPECT_GE(status.uptimeSeconds, 0);
    EXPECT_LT(status.uptimeSeconds, 60);
}

TEST_F(ServiceTest, SecondCopyRunsOnUnreachable) {
    const pid_t first = startedProcess();
    NSTask second;
    second.setLaunchPath(NSString::stringWithUTF8String(tests::builtProgram("PlumwickHelper")));
    second.launch();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(second.isRunning());
    Client another(session.options(false));
    another.metaDataForFile(u"/x");
    EXPECT_EQ(another.status().processIdentifier, first);
    ServiceSession::end(second.processIdentifier());
}

TEST_F(ServiceTest, TakesOverTheSocketOfAKilledCopy) {
    const pid_t first = startedProcess();
    ServiceSession::end(first);
    EXPECT_TRUE(std::filesystem::exists(session.socketPath()));
    EXPECT_NE(startedProcess(), first);
}

TEST_F(ServiceTest, KeepsNothingOfItsStarter) {
    const int inherited = open("/dev/null", O_RDONLY);
    const pid_t process = startedProcess();
    EXPECT_EQ(linkTarget(process, "cwd"), "/");
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
        const int number = std::stoi(entry.path().filename().string());
        if (number > 2) {
            EXPECT_NE(std::filesystem::read_symlink(entry.path()), "/dev/null") << number;
        }
    }
    close(inherited);
    std::stringstream facts;
    for (const char* name : {"/status", "/limits"})
        facts << std::ifstream("/proc/" + std::to_string(process) + name).rdbuf();
    EXPECT_NE(facts.str().find("\nNoNewPrivs:\t1\n"), std::string::npos);
    EXPECT_NE(facts.str().find("\nMax core file size        0                    0 "), std::string::npos);
}

} // namespace
} // namespace kelvo
