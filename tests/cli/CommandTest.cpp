#include "CommandRun.h"
#include "cli/ExitStatus.h"
#include "cli/Files.h"
#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "support/Movies.h"
#include "support/OfficeDocuments.h"
#include "support/PDFDocuments.h"
#include "support/ScopedVariable.h"
#include "support/ServiceSession.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace kelvo::cli {
namespace {

using namespace std::string_literals;
using tests::ServiceSession;
using tests::TemporaryFolder;

TEST_F(CommandTest, StatusesOfTheProcess) {
    ASSERT_EQ(mkfifo(files.path("pipe").c_str(), 0600), 0);
    files.write("[a,b].zzz", "");
    files.write("show", "");
    files.write("-x", "");
    const std::tuple<const char*, std::vector<std::string>, int, const char*> rows[] = {
        {"help", {"--help"}, 0, ""},
        {"help of a subcommand", {"image", "--help"}, 0, ""},
        {"version", {"--version"}, 0, ""},
        {"nothing", {}, 2, "Subcommands"},
        {"unknown subcommand", {"melt", "text.zzz"}, 2, "melt: there is no such subcommand"},
        {"unknown option", {"metadata", "--deep", "text.zzz"}, 2, "--deep"},
        {"option of another subcommand", {"pdf-text", "--no-importers", "text.zzz"}, 2, "--no-importers"},
        {"no file", {"metadata"}, 2, "FILE"},
        {"two files for one", {"web-archive", "text.zzz", "text.zzz"}, 2, "text.zzz"},
        {"file without a name", {"read-document", ""}, 2, "FILE: a name is empty"},
        {"nowhere to write", {"html-to-rtfd", "page.html"}, 2, "-o"},
        {"base that is no URL", {"html-to-rtfd", "page.html", "--base-url", "a b", "-o", "x"}, 2, "a b"},
        {"base that is relative", {"html-to-rtfd", "page.html", "--base-url", "a/b", "-o", "x"}, 2, "a/b"},
        {"bytes and JSON in one stream", {"pdf-of", "text.zzz", "--json", "-o", "-"}, 2, "--json"},
        {"standard input for a name", {"metadata", "-"}, 2, "standard input"},
        {"time-out of nothing", {"metadata", "--timeout", "0", "text.zzz"}, 2, "--timeout"},
        {"missing file", {"metadata", "missing"}, 4, "missing: cannot be read: No such file"},
        {"missing bytes", {"pdf-text", "missing"}, 4, "missing: cannot be read: No such file"},
        {"folder for bytes", {"pdf-text", "."}, 4, "Is a directory"},
        {"pipe by name", {"image", "pipe"}, 4, "neither a file nor a folder"},
        {"output in no folder", {"pdf-of", "text.zzz", "-o", "none/out.pdf"}, 4, "folder is not there"},
        {"output over a folder", {"pdf-of", "text.zzz", "-o", "."}, 4, "Is a directory"},
        {"package over a file", {"write-rtfd", "text.zzz", "page.html"}, 4, "no RTFD package"},
        {"nil", {"image", "text.zzz"}, 1, "text.zzz"},
        {"nil of bytes", {"pdf-text", "text.zzz"}, 1, "text.zzz"},
        {"false", {"write-rtfd", "text.zzz", "out.rtfd"}, 1, "out.rtfd"},
        {"nil and missing", {"metadata", "missing", "text.zzz"}, 4, "text.zzz"},
        {"missing and nil", {"metadata", "text.zzz", "missing"}, 4, "missing"},
        {"name of a list", {"metadata", "[a,b].zzz"}, 1, "[a,b].zzz"},
        {"name of a subcommand", {"image", "show"}, 1, "show"},
        {"name like an option", {"image", "--", "-x"}, 1, "-x"},
        {"shown", {"show", "text.zzz", "page.html"}, 0, ""},
        {"shown and missing", {"show", "missing", "text.zzz"}, 4, "missing"},
    };
    for (const auto& [name, arguments, status, said] : rows) {
        const Outcome outcome = plumwick(arguments);
        EXPECT_EQ(outcome.status, status) << name << ": " << outcome.errors;
        EXPECT_NE(outcome.errors.find(said), std::string::npos) << name << ": " << outcome.errors;
        EXPECT_EQ(outcome.errors.empty(), status == 0) << name << ": " << outcome.errors;
    }
    EXPECT_EQ(entriesOf(files.path()),
              (std::vector<std::string>{"-x", "[a,b].zzz", "page.html", "pipe", "show", "text.zzz"}));
}

TEST_F(CommandTest, PrintsTheTextOfPages) {
    files.write("german.html",
                "<meta charset=windows-1252><title>T</title><body><p>\xFC&amp;<pre>a\n\nb</pre>");
    files.write("bare.html", "<body><br></body>");
    const std::tuple<std::vector<std::string>, std::string, int, std::string> rows[] = {
        {{"german.html", "--only-body"}, "", 0, "\n\n\u00FC&\n\na b\n"},
        {{"german.html", "--only-body", "--reformat", "--non-umlauted"}, "", 0, "\n\nu&\n\na\n\nb\n"},
        {{"-", "--charset", "koi8-r"}, "\xC1", 0, "\u0430\n"},
        {{"-"}, "\xFE\xFF\0<\0p\0>\4\x30"s, 0, "\n\n\u0430\n"},
        {{"-", "--charset", "koi8-r"}, "\xFE\xFF", 0, "\u0427\u042A\n"},
        {{"-"}, "<meta charset=koi8-r>\xC1", 0, "\u0430\n"},
        {{"-", "--json"}, "<p>x<!--googleoff: index-->y", 0, "{\"String\":\"\\n\\nxy\"}\n"},
        {{"-", "--json", "--markers"}, "x<!--googleoff: index-->y", 0, "{\"String\":\"x\"}\n"},
        {{"bare.html", "-", "--json"}, "text", 1, "null\n{\"String\":\"text\"}\n"},
        {{"-", "--charset", "no-such"}, "x", 2, ""},
        {{"missing.html", "bare.html"}, "", 4, "missing.html\n\nbare.html\n\n"},
    };
    for (const auto& [own, input, status, output] : rows) {
        std::vector<std::string> arguments = own;
        arguments.insert(arguments.begin(), "html-to-text");
        const Outcome outcome = plumwick(arguments, input);
        EXPECT_EQ(outcome.status, status) << own.front() << ": " << outcome.errors;
        EXPECT_EQ(outcome.output, output) << own.front();
    }
    EXPECT_FALSE(std::filesystem::exists(session.socketPath())) << "no service was asked";
}

TEST_F(CommandTest, PrintsTheTextOfWebArchives) {
    const std::string header = "MIME-Version: 1.0\r\nContent-Type: ";
    files.write("page.zzz", header + "text/html; charset=utf-8\r\n\r\n<b>\u00FC</b>");
    files.write("picture.mht",
                header + "multipart/related; boundary=b\n\n--b\nContent-Type: image/png\n\nx\n--b--\n");
    const std::tuple<std::vector<std::string>, int, std::string> rows[] = {
        {{"page.zzz"}, 0, "\n\n\u00FC\n"},
        {{"page.zzz", "--source"}, 0, "<b>\u00FC</b>\n"},
        {{"page.zzz", "--json"}, 0, "{\"String\":\"\\n\\n\u00FC\",\"Source\":\"<b>\u00FC</b>\"}\n"},
        {{"page.zzz", "--json", "--source"}, 2, ""},
        {{"picture.mht"}, 1, ""},
        {{"picture.mht", "--json"}, 1, "{}\n"},
        {{"text.zzz"}, 1, ""},
        {{"missing.mht"}, 4, ""},
    };
    for (const auto& [own, status, output] : rows) {
        std::vector<std::string> arguments = own;
        arguments.insert(arguments.begin(), "web-archive");
        const Outcome outcome = plumwick(arguments);
        EXPECT_EQ(outcome.status, status) << own.back() << ": " << outcome.errors;
        EXPECT_EQ(outcome.output, output) << own.back();
        EXPECT_EQ(outcome.errors.empty(), status == 0) << outcome.errors;
    }
    EXPECT_EQ(plumwick({"show", "page.zzz"}).output.find("page.zzz  web archive, "), 0u);
}

TEST_F(CommandTest, StatusNeverStartsTheService) {
    EXPECT_EQ(plumwick({"status"}).status, 3);
    EXPECT_EQ(plumwick({"status", "--json"}).output, "null\n");
    EXPECT_EQ(entriesOf(session.folder().path()), std::vector<std::string>{});
    plumwick({"metadata", "text.zzz"});
    const pid_t process = Client(session.options(false)).status().processIdentifier;
    const Outcome json = plumwick({"status", "--json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(json.output.find("{\"registeredName\":\"PlumwickHelper_2.0pb8build4\",\"processIdentifier\":" +
                               std::to_string(process) + ",\"uptimeSeconds\":"),
              0u)
        << json.output;
    const std::string text = plumwick({"status"}).output;
    EXPECT_NE(text.find("Process  " + std::to_string(process) + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Version  " KELVO_VERSION "\n"), std::string::npos) << text;
}

TEST_F(CommandTest, GivesUpWhenNoServiceCanBeStarted) {
    const TemporaryFolder alone;
    std::filesystem::copy_file(tests::builtProgram("plumwick"), alone.path("plumwick"));
    for (const char* subcommand : {"metadata", "show"}) {
        const Outcome outcome = run(alone.path("plumwick"), {subcommand, "text.zzz", "page.html"}, files);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
}

TEST_F(CommandTest, NilIsNullAndNothingIsWritten) {
    files.write("kept.pdf", "kept");
    for (const char* out : {"kept.pdf", "new.pdf"}) {
        const Outcome outcome = plumwick({"pdf-of", "text.zzz", "--json", "-o", out});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "null\n");
    }
    EXPECT_EQ(plumwick({"pdf-text", "-"}, "no PDF").status, 1);
    EXPECT_EQ(plumwick({"metadata", "--json", "text.zzz", "missing", "text.zzz"}).output,
              "null\nnull\nnull\n");
    EXPECT_EQ(files.read("kept.pdf"), "kept");
    EXPECT_EQ(entriesOf(files.path()), (std::vector<std::string>{"kept.pdf", "page.html", "text.zzz"}));
}

TEST_F(CommandTest, ShowsTheOperationsThatFit) {
    const std::string text = plumwick({"show", "page.html"}).output;
    EXPECT_EQ(text.find("page.html  HTML page, 8 bytes\n  metadata "), 0u) << text;
    EXPECT_NE(text.find("\n  html-to-rtfd "), std::string::npos) << text;
    EXPECT_NE(text.find("Answered by PlumwickHelper_2.0pb8build4, process "), std::string::npos) << text;
    const std::string json = plumwick({"show", "--json", "text.zzz"}).output;
    EXPECT_EQ(
        json.find(
            R"({"file":"text.zzz","kind":"plain text","bytes":5,"operations":[{"operation":"metadata",)"),
        0u)
        << json;
}

TEST_F(CommandTest, PrintsLengthsAndSizesOfMovies) {
    tests::movieFile(files, "film.mp4", tests::countedFrames("75") + tests::wellEncoded);
    tests::movieFile(files, "tone.wav", tests::toneOfOneSecond);
    const Outcome film = plumwick({"movie-poster", "film.mp4", "-o", "film.tiff"});
    EXPECT_EQ(film.output.find("Duration   75\nSize       {64, 48}\nThumbnail  "), 0U) << film.output;
    EXPECT_EQ(files.read("film.tiff").substr(0, 2), "II");
    const Outcome all = plumwick({"movie-poster", "film.mp4", "text.zzz", "missing", "tone.wav"});
    EXPECT_EQ(all.output, "film.mp4      1:15       64 × 48  picture\n"
                          "tone.wav      0:01         sound  no picture\n");
    EXPECT_NE(all.errors.find("text.zzz: unsupported: it is no movie"), std::string::npos) << all.errors;
    EXPECT_EQ(all.status, 4);
    EXPECT_EQ(plumwick({"movie-poster", "--json", "tone.wav", "text.zzz"}).output,
              "{\"file\":\"tone.wav\",\"Duration\":1.0,\"Size\":\"{0, 0}\"}\n"
              "{\"file\":\"text.zzz\",\"Duration\":0.0,\"Size\":\"{0, 0}\"}\n");
    EXPECT_EQ(plumwick({"movie-poster", "text.zzz", "-o", "none.tiff"}).status, 1);
    EXPECT_EQ(plumwick({"movie-poster", "film.mp4", "tone.wav", "-o", "none.tiff"}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(files.path("none.tiff")));
    files.write("none.mkv", "\x1A\x45\xDF\xA3 nothing");
    EXPECT_NE(plumwick({"show", "none.mkv"}).output.find("unsupported: it is no movie"), std::string::npos);
}

TEST_F(CommandTest, OddNamesReachNoTerminalRaw) {
    const std::string odd = "caf\xE9 \x1B[31m\n.zzz";
    files.write(odd, "words");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"show", odd},
          {"image", odd},
          {"image", odd + "x"},
          {"metadata", odd, odd},
          {odd},
          {"html-to-rtfd", odd, "--base-url", "\x1B", "-o", "x"}}) {
        const Outcome outcome = plumwick(arguments);
        EXPECT_EQ((outcome.output + outcome.errors).find('\x1B'), std::string::npos) << outcome.errors;
        EXPECT_EQ((outcome.output + outcome.errors).find('\xE9'), std::string::npos) << outcome.errors;
    }
    EXPECT_NE(plumwick({"show", odd}).output.find("caf\\xE9 \\x1B[31m\\x0A.zzz  plain text"),
              std::string::npos);
}

TEST_F(CommandTest, WritesRichTextInTheFormOfTheName) {
    NSMutableDictionary attributes = NSMutableDictionary::dictionary();
    attributes.setObject_forKey(u"T", NSTitleDocumentAttribute);
    const NSAttributedString words(u"words\n");
    files.write("a.bin",
                RTFDFromRange_documentAttributes(words, {0, words.length()}, attributes).characters());
    files.write("old.rtfd/TXT.rtf", "old");
    files.write("old.rtfd/picture.png", "");
    EXPECT_EQ(plumwick({"write-rtfd", "a.bin", "old.rtfd"}).status, 0);
    EXPECT_EQ(entriesOf(files.path("old.rtfd")), std::vector<std::string>{"TXT.rtf"}) << "replaced whole";
    EXPECT_EQ(plumwick({"write-rtfd", "-", "any name", "--json"}, files.read("a.bin")).output, "true\n");
    EXPECT_NE(files.read("any name/TXT.rtf").find("{\\title T}"), std::string::npos);
    EXPECT_EQ(plumwick({"write-rtfd", "a.bin", "plain.rtf"}).status, 0);
    EXPECT_EQ(files.read("plain.rtf"), files.read("old.rtfd/TXT.rtf"));
    for (const char* name : {"text.zzz", "plain.rtf"})
        EXPECT_EQ(plumwick({"write-rtfd", name, "plain.rtf"}).status, 1) << name;
    EXPECT_EQ(plumwick({"write-rtfd", "a.bin", "none/plain.rtf"}).status, 4);
    EXPECT_EQ(files.read("plain.rtf"), files.read("old.rtfd/TXT.rtf")) << "left as it was";
    EXPECT_EQ(plumwick({"read-document", "old.rtfd", "-o", "again.rtf"}).status, 0);
    EXPECT_EQ(files.read("again.rtf").find("{\\rtf1"), 0u);
    EXPECT_EQ(plumwick({"read-document", "old.rtfd", "-o", "again"}).status, 0);
    const std::string outcome =
        plumwick({"read-document", "old.rtfd", "-o", "third.rtfd", "--json", "--outcome"}).output;
    EXPECT_NE(outcome.find(R"("operation":"read-document")"), std::string::npos)
        << "not its writing: " << outcome;
    EXPECT_EQ(files.read("again").find("rtfd"), 0u);
}

TEST_F(CommandTest, PrintsTheTextOfDocuments) {
    files.write("letter.doc", tests::officeOpenXML("Dear reader", "A Letter"));
    files.write("empty.txt", "");
    files.write("lines.rtf", "{\\rtf1 a\\line b\\par c\\page d\\u8233?e}");
    EXPECT_EQ(plumwick({"read-document", "lines.rtf"}).output, "a\nb\nc\nd\ne\n");
    const Outcome read = plumwick({"read-document", "letter.doc"});
    EXPECT_EQ(read.status, 0) << read.errors;
    EXPECT_EQ(read.output.find("Dear reader["), 0u) << read.output;
    EXPECT_EQ(read.output.back(), '\n');
    const std::string facts = plumwick({"read-document", "--json", "letter.doc"}).output;
    EXPECT_NE(facts.find("\"NSTitleDocumentAttribute\":\"A Letter\""), std::string::npos) << facts;
    const std::string shown = plumwick({"show", "letter.doc"}).output;
    for (const char* part :
         {"office document", "Title         A Letter", "Author        Ann Author", "| Dear reader["})
        EXPECT_NE(shown.find(part), std::string::npos) << shown;
    EXPECT_EQ(plumwick({"read-document", "letter.doc", "-o", "letter.rtfd"}).status, 0);
    EXPECT_EQ(entriesOf(files.path("letter.rtfd")).size(), 2u);
    EXPECT_EQ(plumwick({"read-document", "empty.txt"}).status, 1);
    EXPECT_EQ(plumwick({"read-document", "."}).status, 1);
}

/// With files of which each says what it is.
class CommandPDFTest : public CommandTest {
protected:
    CommandPDFTest() {
        tests::PDFParts parts;
        parts.pages = {tests::pdfText("first"), ""};
        parts.information = "/Title(A \\033[2J)/Keywords(tide, moon)/CreationDate(D:20240229183005Z)";
        files.write("a.pdf", tests::pdfDocument(parts));
        parts.trailerEntries = tests::pdfEncryption();
        files.write("locked.pdf", tests::pdfDocument(parts));
        files.write("blank.pdf", tests::pdfDocument({""}));
        files.write("deadly.pdf", tests::pdfDocumentWithDeadlyPage());
    }

    struct Row {
        std::vector<std::string> arguments;
        int status;
        std::string output;
        std::string said;
    };
    void expect(const std::vector<Row>& rows) {
        for (Row row : rows) {
            row.arguments.insert(row.arguments.begin(), "pdf-text");
            const Outcome outcome = plumwick(row.arguments, files.read("a.pdf"));
            std::string all;
            for (const std::string& argument : row.arguments)
                all += argument + " ";
            EXPECT_EQ(outcome.status, row.status) << all << outcome.errors;
            EXPECT_EQ(outcome.output, row.output) << all;
#ifdef KELVO_SANITIZED
            // What an engine says that dies of a page stands before it.
            EXPECT_NE(outcome.errors.find(row.said.empty() ? "" : "plumwick: " + row.said), std::string::npos)
#else
            EXPECT_EQ(outcome.errors.find(row.said.empty() ? "" : "plumwick: " + row.said), 0u)
#endif
                << all << outcome.errors;
            EXPECT_EQ(outcome.errors.empty(), row.said.empty()) << all << outcome.errors;
        }
    }

    const tests::ScopedVariable zone{"TZ", "XYZ-1"};
    const std::string facts =
        "Title     A \\x1B[2J\nKeywords  tide, moon\nCreated   2024-02-29 19:30:05\nPages     2\n";
    const std::string factsInJSON =
        R"("Title":"A \u001b[2J","CreationDate":"2024-02-29T18:30:05Z","Keywords":["tide","moon"])";
    const std::string lockedFacts = "Pages   2\nLocked  yes\n";
    const std::string lockedSentence =
        "locked.pdf: answered: the document is encrypted, and its text is missing\n";
};

TEST_F(CommandPDFTest, PrintsFactsAndText) {
    expect({
        {{"a.pdf"}, 0, facts + "\nfirst\n", ""},
        {{"a.pdf", "--rich"}, 0, facts + "\nfirst\n", ""},
        {{"blank.pdf", "-"},
         0,
         "blank.pdf\nPages  1\nText   none\n\nstandard input\n" + facts + "\nfirst\n\n",
         ""},
        {{"a.pdf", "text.zzz", "missing", "--json"},
         4,
         R"({"file":"a.pdf","String":"first\n","PageCount":2,)" + factsInJSON + "}\nnull\nnull\n",
         "text.zzz: broken: it is no PDF"},
        {{"locked.pdf"}, 0, lockedFacts, lockedSentence},
        {{"locked.pdf", "--json"},
         0,
         "{\"file\":\"locked.pdf\",\"Locked\":true,\"PageCount\":2}\n",
         lockedSentence},
        {{"blank.pdf", "--rich"}, 3, "", "blank.pdf: nothing: there is no text in the document\n"},
        {{"a.pdf", "-o", "x"}, 2, "", "--output requires --rich"},
        {{"a.pdf", "a.pdf", "--rich", "-o", "x"}, 2, "", "-o: takes the answer for one FILE"},
    });
    const std::string shown = plumwick({"show", "a.pdf"}).output;
    EXPECT_NE(shown.find("      Keywords      tide, moon\n      Created       2024-02-29 19:30:05\n"
                         "      Pages         2\n      | first\n"),
              std::string::npos)
        << shown;
}

TEST_F(CommandPDFTest, WritesRichText) {
    expect({
        {{"a.pdf", "--rich", "-o", "none/x.rtf"}, 4, "", "none/x.rtf: cannot be written"},
        {{"locked.pdf", "--rich", "-o", "x.rtf"},
         1,
         lockedFacts,
         "locked.pdf: the answer has nothing to write"},
    });
    EXPECT_EQ(plumwick({"pdf-text", "a.pdf", "--rich", "-o", "a.rtfd"}).output.find(facts + "Text      "),
              0u);
    EXPECT_EQ(entriesOf(files.path("a.rtfd")), std::vector<std::string>{"TXT.rtf"});
    EXPECT_EQ(plumwick({"pdf-text", "a.pdf", "--rich", "-o", "a.rtf"}).status, 0);
    EXPECT_EQ(files.read("a.rtf"), files.read("a.rtfd/TXT.rtf"));
    for (const char* part : {"\\fswiss", "{\\title A ", "{\\keywords tide, moon}", "\\yr2024", "first"})
        EXPECT_NE(files.read("a.rtf").find(part), std::string::npos) << files.read("a.rtf");
    const std::string bytes = plumwick({"pdf-text", "a.pdf", "--rich", "-o", "-"}).output;
    EXPECT_EQ(bytes.find("rtfd"), 0u);
    const std::string json = plumwick({"pdf-text", "a.pdf", "--rich", "--json"}).output;
    EXPECT_EQ(json.find(R"({"file":"a.pdf","String":"first","PageCount":2,)" + factsInJSON +
                        ",\"Rtfd\":{\"bytes\":" + std::to_string(bytes.size()) + ",\"base64\":\"cnRmZ"),
              0u)
        << json;
    EXPECT_FALSE(std::filesystem::exists(files.path("x.rtf")));
}

TEST_F(CommandPDFTest, WalksThePagesByItself) {
    const TemporaryFolder temporary;
    const tests::ScopedVariable place("TMPDIR", temporary.path().c_str());
    expect({
        {{"a.pdf", "--pages"}, 0, facts + "\nPage 1\nfirst\n\nPage 2  no text\n", ""},
        {{"-", "blank.pdf", "--pages", "--json"},
         0,
         R"({"file":"-","PageCount":2,)" + factsInJSON +
             R"(,"Pages":["first",""]})"
             "\n"
             R"({"file":"blank.pdf","PageCount":1,"Pages":[""]})"
             "\n",
         ""},
        {{"deadly.pdf", "text.zzz", "--pages", "--json"},
         1,
         R"({"file":"deadly.pdf","PageCount":5,"Pages":["one","two",null,"four","five"]})"
         "\nnull\n",
         "deadly.pdf: answered: the text of page 3 of 5 is missing"},
        {{"locked.pdf", "--pages"}, 0, lockedFacts, lockedSentence},
        {{"missing", "--pages"}, 4, "", "missing: cannot be read"},
        {{"a.pdf", "--pages", "--rich"}, 2, "", "--rich excludes --pages"},
    });
    EXPECT_NE(plumwick({"pdf-text", "--pages", "deadly.pdf"}).output.find("\n\nPage 3  could not be read\n"),
              std::string::npos);
    EXPECT_EQ(plumwick({"pdf-text", "--pages", "deadly.pdf", "--timeout", "0.001"}).output.find("four"),
              std::string::npos)
        << "the third page took the time of the others";
    EXPECT_EQ(entriesOf(temporary.path()), std::vector<std::string>{}) << "the engine's folder goes";
    EXPECT_FALSE(std::filesystem::exists(session.socketPath())) << "no service was asked";
    const TemporaryFolder alone;
    std::filesystem::copy_file(tests::builtProgram("plumwick"), alone.path("plumwick"));
    const Outcome missing = run(alone.path("plumwick"), {"pdf-text", "--pages", "a.pdf"}, files);
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.errors, "plumwick: a.pdf: missing engine: the PDF engine cannot be started\n");
}

TEST_F(CommandTest, ListsTheImporters) {
    const TemporaryFolder prefix;
    const tests::ScopedVariable home("HOME", prefix.path("home").c_str());
    const std::string program = prefix.path("bin/plumwick");
    prefix.write("bin/x", "");
    std::filesystem::copy_file(tests::builtProgram("plumwick"), program);
    EXPECT_EQ(run(program, {"metadata", "--importers"}, files).errors,
              "plumwick: no metadata importers are installed\n");

    const std::string claim =
        "{CFBundleDocumentTypes = ({CFBundleTypeRole = MDImporter; LSItemContentTypes = ";
    prefix.write("home/Library/Spotlight/\x1B[1m.mdimporter/Contents/Info.plist",
                 claim + "(B, \"\\033[2J\");});}");
    prefix.write("System/Library/Spotlight/S.mdimporter/Contents/Info.plist", claim + "(a);});}");
    prefix.write("System/Library/Spotlight/T.mdimporter/Contents/Info.plist", "");
    std::filesystem::permissions(prefix.write("real", ""), std::filesystem::perms::owner_all);
    std::filesystem::create_symlink("../real", prefix.path("bin/PlumwickHelper"));
    const std::string own = prefix.path("home/Library/Spotlight/");
    const Outcome listed = run(program, {"metadata", "--importers"}, files);
    EXPECT_EQ(listed.status, 0) << listed.errors;
    EXPECT_EQ(listed.output,
              own + "\\x1B[1m.mdimporter\n    b\n    \\x1B[2j\n"
                    "/System/Library/Spotlight/S.mdimporter  comes with plumwick\n    a\n"
                    "/System/Library/Spotlight/T.mdimporter  comes with plumwick\n    no types\n");
    EXPECT_EQ(run(program, {"metadata", "--importers", "--json"}, files).output,
              "{\"path\":\"" + own +
                  "\\u001b[1m.mdimporter\",\"own\":false,\"types\":[\"b\",\"\\u001b[2j\"]}\n"
                  "{\"path\":\"/System/Library/Spotlight/S.mdimporter\",\"own\":true,\"types\":[\"a\"]}\n"
                  "{\"path\":\"/System/Library/Spotlight/T.mdimporter\",\"own\":true,\"types\":[]}\n");
    EXPECT_FALSE(std::filesystem::exists(session.socketPath())) << "no service was asked";
}

/// A service whose answers are known.
class CommandAnswersTest : public CommandTest {
protected:
    CommandAnswersTest() : CommandTest("RehearsalService") {
        Client(session.options()).PDFImageRepOfFile(u"/1");
    }
};

TEST_F(CommandAnswersTest, PassArgumentsAndPrintTheResult) {
    const std::string own = "file://" + files.path() + "/page.html";
    const std::tuple<std::vector<std::string>, std::string> rows[] = {
        {{"pdf-text", "page.html"}, "attributed  no\nlength      8\n"},
        {{"pdf-text", "-", "--rich", "--json"}, "{\"file\":\"-\",\"attributed\":true,\"length\":5}\n"},
        {{"image", "text.zzz", "--json"}, "{\"file\":\"text.zzz\",\"text\":false,\"importers\":true}\n"},
        {{"image", "text.zzz", "--pdf-text", "--no-importers", "--json"},
         "{\"file\":\"text.zzz\",\"text\":true,\"importers\":false}\n"},
        {{"html-to-rtfd", "page.html", "-o", "-"}, "8 " + own + " no"},
        {{"html-to-rtfd", "-", "--allow-remote", "-o", "-"}, "5  yes"},
        {{"html-to-rtfd", "page.html", "--base-url", "http://h/", "-o", "-"}, "8 http://h/ no"},
        {{"html-to-rtfd", "-", "--json"}, "{\"bytes\":5,\"base64\":\"NSAgbm8=\"}\n"},
    };
    for (const auto& [arguments, output] : rows) {
        const Outcome outcome = plumwick(arguments, "input");
        EXPECT_EQ(outcome.output, output) << outcome.errors;
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
    }
    const std::string odd = files.write("caf\xE9", "");
    EXPECT_EQ(plumwick({"image", odd, "--json"}).output.find("{\"file\":\"" + files.path() + "/caf\uFFFD\""),
              0u);
}

TEST_F(CommandAnswersTest, PrintMetadata) {
    files.write(
        "a.plist",
        "{kMDItemTextContent = \"Text \\033[2J\"; kMDItemTitle = \"A\\nB\"; file = x; \"\\U00FC\" = y;}");
    files.write("untitled.plist", "{kMDItemTextContent = (no, text);}");
    files.write("empty.plist", "{}");
    files.write("none.plist", "no list");
    files.write("broken.plist", "{damage = \"it is cut short\";}");
    const std::tuple<std::vector<std::string>, int, std::string, std::string> rows[] = {
        {{"broken.plist"}, 1, "", "broken.plist: broken: it is cut short"},
        {{"a.plist"}, 0, "Title  A\n       B\nText   Text \\x1B[2J\nfile   x\n\u00FC      y\n", ""},
        {{"a.plist", "--text"}, 0, "Text \x1B[2J\n", ""},
        {{"untitled.plist"}, 0, "Text  no, text\n", ""},
        {{"untitled.plist", "--text"}, 1, "", "untitled.plist: its importer found no text in it"},
        {{"a.plist", "--json"},
         0,
         R"({"file":"a.plist","kMDItemTextContent":"Text \u001b[2J","kMDItemTitle":"A\nB","ü":"y"})"
         "\n",
         ""},
        {{"empty.plist"}, 1, "", "empty.plist: its importer found nothing in it"},
        {{"empty.plist", "none.plist", "--json"},
         1,
         "{\"file\":\"empty.plist\"}\nnull\n",
         "empty.plist: its importer found nothing in it"},
        {{"none.plist"}, 1, "", "none.plist: "},
        {{"a.plist", "--text", "--json"}, 2, "", "--json excludes --text"},
        {{"a.plist", "--importers"}, 2, "", "FILE excludes --importers"},
        {{}, 2, "", "FILE is required"},
    };
    for (const auto& [own, status, output, said] : rows) {
        std::vector<std::string> arguments = own;
        arguments.insert(arguments.begin(), "metadata");
        const Outcome outcome = plumwick(arguments);
        EXPECT_EQ(outcome.status, status) << outcome.errors;
        EXPECT_EQ(outcome.output, output);
        EXPECT_EQ(outcome.errors.find(said.empty() ? "" : "plumwick: " + said), 0u) << outcome.errors;
        EXPECT_EQ(outcome.errors.empty(), said.empty()) << outcome.errors;
    }
    EXPECT_NE(plumwick({"show", "a.plist"})
                  .output.find("      Title         A\n      file          x\n      \u00FC             y\n   "
                               "   | Text \\x1B[2J\n"),
              std::string::npos);
}

TEST_F(CommandAnswersTest, SayWhyThereIsNoAnswer) {
    files.write("letter.odt", "note 4 the document is \x1B encrypted\nnil\n");
    files.write("cut.odt", "throw the table is cut off");
    files.write("late.odt", "sleep 0.6");
    files.write("nothing.odt", "nil");
    files.write("part.odt", "note 0 its end is missing");
    files.write("large", "/" + std::string(1000, 'x'));
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* said;
    } rows[] = {
        {{"read-document", "letter.odt"}, 1, "letter.odt: locked: the document is \\x1B encrypted"},
        {{"read-document", "letter.odt", "-o", "x"},
         1,
         "letter.odt: locked: the document is \\x1B encrypted"},
        {{"read-document", "nothing.odt"}, 1, "nothing.odt: nothing: it is no document that can be read"},
        {{"read-document", "cut.odt"}, 3, "cut.odt: broken: the table is cut off"},
        {{"read-document", "late.odt", "--timeout", "0.2"},
         3,
         "late.odt: timed out: no answer within 0.2 seconds"},
        {{"html-to-rtfd", "large", "-o", "x.rtfd"}, 1, "x.rtfd: nothing: it could not be written"},
        {{"web-archive", "text.zzz"}, 1, "text.zzz: is a web archive without text"},
        {{"html-to-rtfd", "part.odt", "-o", "-"}, 0, "part.odt: answered: its end is missing"},
        {{"write-rtfd", "text.zzz", "x.rtf"}, 1, "x.rtf: broken: the data is no rich text that can be read"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = plumwick(row.arguments);
        EXPECT_EQ(outcome.status, row.status) << row.said;
        EXPECT_EQ(outcome.errors, "plumwick: "s + row.said + "\n");
    }
    const Outcome shown = plumwick({"show", "letter.odt", "nothing.odt", "part.odt"});
    EXPECT_EQ(shown.status, 0) << shown.errors;
    for (const char* said : {"locked: the document is \\x1B encrypted", "nothing: it is no document",
                             "1 entry: its end is missing"})
        EXPECT_NE(shown.output.find(said), std::string::npos) << shown.output;
}

TEST_F(CommandAnswersTest, PrintTheOutcomeBehindTheAnswer) {
    files.write("letter.odt",
                "note 4 the document is encrypted\nuse reader 1.5 4096\nrefuse http://a/\nnil\n");
    files.write("page", "refuse http://\x1B/\nrefuse http://b/\nrefuse http://b/\n");
    files.write("bad page", "refuse http://1/\nrefuse http://2/\nrefuse http://3/\nrefuse http://4/\n"
                            "refuse http://5/\nrefuse http://6/\nrefuse http://7/\nrefuse http://8/\n"
                            "refuse http://9/\nnil\n");
    const auto linesOf = [](const std::string& text) { return std::ranges::count(text, '\n'); };
    const std::string locked = plumwick({"read-document", "--json", "--outcome", "letter.odt"}).output;
    EXPECT_EQ(locked.find("null\n{\"sequence\":"), 0u) << locked;
    for (const char* part :
         {R"("operation":"read-document")", R"("file":")", R"("outcome":"locked")",
          R"("sentence":"the document is encrypted")", R"("engine":"reader")", R"("enginePeakBytes":4096)",
          R"("engineCPUMilliseconds":1.5)", R"("refusedLoads":1,"refusedAddresses":["http://a/"])"})
        EXPECT_NE(locked.find(part), std::string::npos) << locked;
    const std::string several =
        plumwick({"metadata", "--json", "--outcome", "page", "missing", "page"}).output;
    EXPECT_EQ(linesOf(several), 6) << several;
    EXPECT_NE(several.find("\nnull\nnull\n"), std::string::npos) << "nobody was asked: " << several;
    const std::string shown = plumwick({"show", "--json", "--outcome", "letter.odt"}).output;
    EXPECT_EQ(linesOf(shown), 1);
    EXPECT_NE(shown.find(R"("result":null,"outcome":{"sequence":)"), std::string::npos) << shown;
    EXPECT_EQ(plumwick({"metadata", "--outcome", "page"}).status, 2) << "that is for JSON";

    const Outcome page = plumwick({"html-to-rtfd", "page", "--refused", "-o", "-"});
    EXPECT_EQ(page.status, 0);
    EXPECT_EQ(page.errors, "http://\\x1B/\nhttp://b/\n");
    const Outcome bad = plumwick({"html-to-rtfd", "bad page", "--refused", "-o", "x"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(linesOf(bad.errors), 10) << bad.errors;
    EXPECT_NE(bad.errors.find("bad page: 9 loads were refused; of their addresses the first 8"),
              std::string::npos);
}

TEST_F(CommandAnswersTest, StatusTellsOfEnginesAndRecentRequests) {
    files.write("engine.odt", "start reader landlock, seccomp\nstart bare\n");
    plumwick({"pdf-text", "page.html"});
    plumwick({"read-document", "engine.odt"});
    const std::string status = plumwick({"status"}).output;
    EXPECT_NE(status.find("Engine   bare, process "), std::string::npos) << status;
    EXPECT_NE(status.find(": not shut in\n"), std::string::npos) << status;
    EXPECT_NE(plumwick({"status", "--json"}).output.find(R"("engines":[{"name":"bare","processIdentifier":)"),
              std::string::npos);
    EXPECT_EQ(plumwick({"write-rtfd", "text.zzz", "die"}).errors,
              "plumwick: die: crashed: the service ended while it was at work on this\n");
    EXPECT_EQ(plumwick({"status"}).status, 3);
    for (const char* word : {"begun ", "crashed "}) {
        const Outcome recent = plumwick({"status", "--recent"});
        EXPECT_EQ(recent.status, 0) << recent.errors;
        const auto place = [&recent](const char* part) { return recent.output.find(part); };
        EXPECT_NE(place("pdf-text       answered "), std::string::npos) << recent.output;
        EXPECT_NE(place("8 bytes ("), std::string::npos) << recent.output;
        EXPECT_LT(place("pdf-text "), place("engine.odt\n")) << recent.output;
        EXPECT_LT(place("engine.odt\n"), place(("write-rtfd     "s + word).c_str())) << recent.output;
        EXPECT_NE(place(word), std::string::npos) << recent.output;
        EXPECT_NE(place("/die"), std::string::npos) << recent.output;
        // The next service goes on with what this one has left.
        plumwick({"metadata", "text.zzz"});
    }
    const Outcome json = plumwick({"status", "--recent", "3", "--json"});
    EXPECT_EQ(std::ranges::count(json.output, '\n'), 3) << json.output;
    EXPECT_NE(json.output.find(R"("outcome":"crashed","sentence":"the service ended)"), std::string::npos);
    EXPECT_EQ(plumwick({"status", "--recent", "x"}).status, 2);
    EXPECT_EQ(plumwick({"status", "--recent", "0"}).status, 2);
    std::filesystem::remove(session.socketPath() + ".ledger");
    EXPECT_EQ(plumwick({"status", "--recent"}).status, 3);
}

TEST_F(CommandAnswersTest, WritesBytesWhole) {
    files.write("70000", "");
    files.write("old.pdf", "old");
    EXPECT_EQ(plumwick({"pdf-of", "70000", "-o", "old.pdf"}).output, "70.0 KB, written to old.pdf\n");
    EXPECT_EQ(files.read("old.pdf"), std::string(70000, '\0'));
    EXPECT_EQ(plumwick({"pdf-of", "70000", "--json", "-o", "new.pdf"}).output,
              "{\"bytes\":70000,\"file\":\"new.pdf\"}\n");
    EXPECT_EQ(plumwick({"pdf-of", "70000", "-o", "-"}).output, std::string(70000, '\0'));
    EXPECT_EQ(plumwick({"pdf-of", "70000", "-o", "/dev/null"}).status, 0);
    EXPECT_EQ(plumwick({"pdf-of", "70000", "-o", "/dev/full"}).status, 4);
    EXPECT_EQ(plumwick({"pdf-of", "70000", "-o", "-"}, "", "/dev/full").status, 4);
    const Outcome full = plumwick({"metadata", "70000", "old.pdf"}, "", "/dev/full");
    EXPECT_EQ(full.status, 4);
    EXPECT_EQ(full.errors, "plumwick: standard output cannot be written: No space left on device\n");
    EXPECT_EQ(plumwick({"image", "old.pdf", "-o", "thumbnail.tiff"}).status, 1)
        << "the answer has no thumbnail";
    EXPECT_EQ(entriesOf(files.path()),
              (std::vector<std::string>{"70000", "new.pdf", "old.pdf", "page.html", "text.zzz"}));
}

TEST_F(CommandAnswersTest, TroubleLeavesThePackageAsItWas) {
    files.write("old.rtfd/TXT.rtf", "old");
    const Outcome nothingThere = plumwick({"write-rtfd", "text.zzz", "old.rtfd/"});
    EXPECT_EQ(nothingThere.status, 4) << "the service says it has written, and has not";
    const Outcome late = plumwick({"write-rtfd", "text.zzz", "sleep", "--timeout", "0.2"});
    EXPECT_EQ(late.status, 3);
    EXPECT_NE(late.errors.find("sleep: timed out"), std::string::npos) << late.errors;
    EXPECT_EQ(files.read("old.rtfd/TXT.rtf"), "old");
    EXPECT_EQ(entriesOf(files.path()), (std::vector<std::string>{"old.rtfd", "page.html", "text.zzz"}));
}

TEST(PackageOutputTest, TakesItsPlaceWholeOrNotAtAll) {
    const TemporaryFolder folder;
    const std::string place = folder.path("a.rtfd");
    const auto write = [](const PackageOutput& package, const std::string& text) {
        std::filesystem::create_directories(package.path());
        std::ofstream(package.path() + "/TXT.rtf") << text;
    };
    for (const char* text : {"first", "second"}) {
        PackageOutput package(place);
        write(package, text);
        package.commit();
        EXPECT_EQ(folder.read("a.rtfd/TXT.rtf"), text);
    }
    {
        PackageOutput abandoned(place + "/");
        write(abandoned, "third");
    }
    EXPECT_EQ(folder.read("a.rtfd/TXT.rtf"), "second");
    EXPECT_EQ(entriesOf(folder.path()), std::vector<std::string>{"a.rtfd"});
    folder.write("thesis/chapter", "");
    EXPECT_THROW(PackageOutput(folder.path("thesis")), CommandError)
        << "no package, and not for us to replace";
}

} // namespace
} // namespace kelvo::cli
