#include "cli/Options.h"

#include "cli/Files.h"
#include "cli/Output.h"
#include "cli/Printable.h"
#include "cli/Request.h"
#include "markup/CharsetLabels.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace kelvo::cli {
namespace {

constexpr const char* generalFooter = R"(Examples:
  plumwick show notes.rtf page.html        what the service makes of some files
  plumwick metadata --json *.pdf           one line of JSON a file
  plumwick pdf-text report.pdf             the text of a PDF
  plumwick html-to-rtfd page.html -o page.rtfd
  plumwick status                          the running service
  plumwick SUBCOMMAND --help               more on each, with examples

The service PlumwickHelper is started when none answers. "-" is standard input or standard output where bytes are
meant; a file of that name is "./-", and a file whose name begins with "-" comes behind "--".

Exit status (with several files the largest):
  0  answered
  1  the service answered nil: what became of the file is said in a word and a sentence
  2  the command line makes no sense
  3  the service could not be reached, failed, died or took too long
  4  a file could not be read or written)";

constexpr std::size_t usualRecentCount = 20;

/// Builds the parser; each add… function is one subcommand.
class Parser {
public:
    Parser() {
        app_.require_subcommand(1);
        app_.footer(generalFooter);
        app_.set_version_flag("--version", "plumwick " KELVO_VERSION);
        app_.get_formatter()->column_width(26);

        addShow();
        addMetaData();
        addHTMLToRTFD();
        addWriteRTFD();
        addWebArchive();
        addReadDocument();
        addMoviePoster();
        addPDFText();
        addImage();
        addPDFOf();
        addHTMLToText();
        addStatus();
    }

    std::variant<Options, ExitStatus> parse(int argumentCount, const char* const* arguments, Output& output,
                                            Output& errors) {
        // The parser takes its arguments from the end. It would read "[a,b]" as a list of two names.
        std::vector<std::string> reversed;
        for (int index = argumentCount; --index > 0;) {
            const std::string_view argument(arguments[index]);
            const bool looksLikeList = argument.starts_with('[') && argument.ends_with(']');
            reversed.push_back((looksLikeList ? "./" : "") + std::string(argument));
        }
        try {
            if (reversed.empty()) {
                errors.write(app_.help());
                return ExitStatus::usage;
            }
            const auto all = app_.get_subcommands([](const CLI::App*) { return true; });
            if (!reversed.back().starts_with('-') &&
                std::ranges::count(all, reversed.back(), &CLI::App::get_name) == 0)
                refuse(reversed.back() + ": there is no such subcommand");
            app_.parse(reversed);
            finish();
            return options_;
        } catch (const CLI::CallForHelp&) {
            output.write(app_.help());
        } catch (const CLI::CallForVersion& version) {
            output.write(std::string(version.what()) + "\n");
        } catch (const CLI::ParseError& error) {
            const auto chosen = app_.get_subcommands();
            errors.write(fmt::format("plumwick: {}\nTry: plumwick {}--help\n",
                                     printableFileName(error.what()),
                                     chosen.empty() ? "" : chosen.front()->get_name() + " "));
            return ExitStatus::usage;
        }
        return ExitStatus::answered;
    }

private:
    using Subject = decltype(Options::subject);

    /// What is wrong beyond the parser's own grammar.
    [[noreturn]] static void refuse(const std::string& reason) {
        throw CLI::ValidationError(reason, CLI::ExitCodes::ValidationError);
    }

    CLI::App& add(const std::string& name, const std::string& description, Subject subject,
                  const std::string& footer) {
        CLI::App& subcommand = *app_.add_subcommand(name, description);
        subcommand.footer(footer);
        subcommand.get_formatter()->column_width(26);
        subcommand.add_flag("--json", options_.printsJSON, "Print the answer as JSON, with nil as null");
        subcommand.parse_complete_callback([this, subject] { options_.subject = subject; });
        return subcommand;
    }

    CLI::App& add(Operation operation, const std::string& description, const std::string& footer) {
        CLI::App& subcommand =
            add(std::string(subcommandOfOperation(operation)), description, Subject(operation), footer);
        addTimeout(subcommand);
        addOutcome(subcommand);
        return subcommand;
    }

    void addTimeout(CLI::App& subcommand) {
        subcommand
            .add_option("--timeout", options_.timeoutSeconds,
                        "Wait so long for an answer (15, for HTML and PDF 75, unless given)")
            ->type_name("SECONDS")
            ->check(CLI::Range(0.001, 1e6).description(""));
    }

    void addOutcome(CLI::App& subcommand) {
        subcommand
            .add_flag("--outcome", options_.printsOutcome,
                      "Print behind the answer what became of the request, as JSON")
            ->needs("--json");
    }

    void addFile(CLI::App& subcommand, const std::string& description) {
        subcommand.add_option("FILE", file_, description)->required()->type_name("");
    }

    CLI::Option* addFiles(CLI::App& subcommand, const std::string& description) {
        return subcommand.add_option("FILE", options_.files, description)
            ->required()
            ->type_name("")
            ->expected(1, -1);
    }

    CLI::Option* addOutput(CLI::App& subcommand, const std::string& description) {
        return subcommand.add_option("-o,--output", options_.output, description)->type_name("OUT");
    }

    void addShow() {
        CLI::App& subcommand = add(
            "show", "Show what the service makes of files, with every operation that fits them", Show(),
            R"(Each file is taken for what its first bytes, else its extension, say it is. Nothing is written. An answer of nil is
shown and does not count as a failure; --json prints one line a file.

Examples:
  plumwick show examples/*.*
  plumwick show --json picture.png | python3 -m json.tool)");
        addFiles(subcommand, "Files of any kind");
        addTimeout(subcommand);
        addOutcome(subcommand);
    }

    void addMetaData() {
        CLI::App& subcommand = add(
            Operation::metaDataForFile, "Print the metadata that the importers find in files",
            R"(With --json each file gives one line, in their order: a dictionary with "file" and the attributes by their own
names, or null when there is none. --importers needs no service; with --json it prints a line an importer.

Examples:
  plumwick metadata song.mp3
  plumwick metadata --json *.pdf
  plumwick metadata --text report.pdf
  plumwick metadata --importers)");
        addFiles(subcommand, "Files or folders of any kind")->required(false);
        subcommand
            .add_flag("--text", options_.printsOnlyText, "Print the text of the files, and nothing else")
            ->excludes("--json");
        subcommand
            .add_flag("--importers", listsImporters_,
                      "List the importers that are installed, in their order, and what each is for")
            ->excludes("FILE", "--text", "--outcome");
    }

    void addHTMLToRTFD() {
        CLI::App& subcommand = add(
            Operation::RTFDWithHTML, "Turn an HTML page into rich text with its pictures (RTFD)",
            R"(Relative addresses in the page start at --base-url, or else at the page's own place on the disk. Without
--allow-remote only files, embedded data and hosts of the local network are loaded.
An OUT that ends in ".rtfd" becomes a package (a folder), one that ends in ".rtf" plain RTF without pictures; any
other is written as one stream of bytes.

Examples:
  plumwick html-to-rtfd page.html -o page.rtfd
  curl -s https://example.org/ | plumwick html-to-rtfd - --base-url https://example.org/ --allow-remote -o page.bin)");
        addFile(subcommand, "The page; - reads standard input");
        subcommand.add_option("--base-url", baseURL_, "Address at which relative addresses start")
            ->type_name("URL");
        subcommand.add_flag("--allow-remote", options_.allowsRemoteRequest,
                            "Let the page load from the network");
        subcommand.add_flag("--refused", options_.listsRefused,
                            "List what the page was not let load, on standard error");
        addOutput(subcommand, "Where the RTFD goes; - writes standard output");
    }

    void addWriteRTFD() {
        CLI::App& subcommand = add(
            Operation::writeRTFDData, "Write RTFD bytes as a package that programs can open",
            R"(A name that ends in ".rtf" becomes a file of plain RTF, without the pictures; that needs no service.

Examples:
  plumwick html-to-rtfd page.html -o page.bin && plumwick write-rtfd page.bin page.rtfd)");
        subcommand.add_option("DATAFILE", file_, "RTFD as one stream of bytes; - reads standard input")
            ->required()
            ->type_name("");
        subcommand
            .add_option("OUT.rtfd", options_.output, "The package, a folder; an older package is replaced")
            ->required()
            ->type_name("");
    }

    void addWebArchive() {
        CLI::App& subcommand = add(
            Operation::searchableTextOfWebArchive, "Print the text of a saved web page with its frames",
            R"(Reads web archives (.webarchive) and MIME HTML (.mht, .mhtml). With --json the answer is a dictionary with "String",
"Source" and "URL", as far as they are known, and empty for a file that is no web archive.

Examples:
  plumwick web-archive page.webarchive
  plumwick web-archive --source page.mhtml > page.html
  plumwick web-archive --json page.webarchive)");
        addFile(subcommand, "A web archive");
        subcommand.add_flag("--source", options_.wantsSource, "Print the source of the page instead")
            ->excludes("--json");
    }

    void addReadDocument() {
        CLI::App& subcommand = add(
            Operation::attributedStringWithContentsOfFile,
            "Print the text of a document, or write it as rich text (RTFD)",
            R"(Reads plain text, RTF, RTFD, HTML, web archives, MIME HTML, doc, docx, odt, sxw and WordML, whatever the name says.
Pictures stand in the printed text as their names in brackets. With --json the answer has "Rtfd" and
"DocumentAttributes".
An OUT that ends in ".rtfd" becomes a package (a folder), one that ends in ".rtf" plain RTF without pictures; any
other is written as one stream of bytes.

Examples:
  plumwick read-document letter.doc
  plumwick read-document letter.doc -o letter.rtfd
  plumwick read-document --json letter.doc)");
        addFile(subcommand, "A text document");
        addOutput(subcommand, "Where the RTFD goes; - writes standard output");
    }

    void addMoviePoster() {
        CLI::App& subcommand = add(
            Operation::posterImageForMovieWithFile,
            "Print the length and size of movies and sound, and take a picture from one",
            R"(The picture is the frame of the middle, at most that of 15 seconds, or the cover of a piece of sound. Several files
give a line each: name, length, size in pixels, whether there is a picture; with --json a dictionary with "file",
"Duration", "Size" and "Thumbnail". An OUT that ends in ".png" or ".jpeg" (".jpg") becomes a file of that kind, one that
ends in ".tiff" (".tif") has the bytes of the service.

Examples:
  plumwick movie-poster holiday.mov -o holiday.tiff
  plumwick movie-poster *.mp4 -d posters)");
        addFiles(subcommand, "Movies or sound");
        addPictureOutputs(subcommand, "picture");
    }

    void addPDFText() {
        CLI::App& subcommand = add(
            Operation::stringWithPDF, "Print the text of PDFs and what they say of themselves",
            R"(With --json each file gives one line, in their order: a dictionary with "file", "String", "PageCount" and what
the document says of itself, with --rich "Rtfd" as well, or null when it is no PDF. --pages needs no service; with
--json there is "Pages" in place of "String", a string a page, and null for one that could not be read.
An OUT that ends in ".rtfd" becomes a package (a folder), one that ends in ".rtf" plain RTF; any other is written as
RTFD in one stream of bytes.

Examples:
  plumwick pdf-text report.pdf
  plumwick pdf-text --pages report.pdf
  plumwick pdf-text --rich report.pdf -o report.rtf
  curl -s https://example.org/report.pdf | plumwick pdf-text - --json)");
        addFiles(subcommand, "PDFs; - reads standard input");
        subcommand.add_flag("--rich", options_.wantsRichText, "Ask for text with its fonts and colours");
        addOutput(subcommand, "Where the rich text goes; - writes standard output")->needs("--rich");
        subcommand.add_flag("--pages", options_.wantsPages, "Print the text page by page")
            ->excludes("--rich", "--outcome");
    }

    void addImage() {
        CLI::App& subcommand = add(
            Operation::imageWithContentsOfFile,
            "Print the size and properties of images and PDFs, with their thumbnails",
            R"(Of one file everything is printed, of several a line each: name, size in pixels, kind, and what is missing. An OUT that
ends in ".png" or ".jpeg" (".jpg") becomes a file of that kind, one that ends in ".tiff" (".tif") has the bytes of the
service. With --json each file gives one line, in their order: a dictionary with "file" and the answer, or null.

Examples:
  plumwick image photo.jpg -o thumbnail.png
  plumwick image *.jpg -d thumbnails
  plumwick image --show photo.jpg
  plumwick image report.pdf --pdf-text)");
        addFiles(subcommand, "Images, PDFs, EPS or PostScript files");
        subcommand.add_flag("--pdf-text", options_.wantsPDFText, "Ask for the text of a PDF, too");
        subcommand.add_flag("--no-importers", refusesImporters_,
                            "Do not take that text from the metadata importers");
        addPictureOutputs(subcommand, "thumbnail");
    }

    void addFolder(CLI::App& subcommand, const std::string& description, CLI::Option* output) {
        subcommand
            .add_option("-d,--folder", options_.folder,
                        description + ", by the names of their files; made if it is not there")
            ->type_name("FOLDER")
            ->excludes(output);
    }

    void addPictureOutputs(CLI::App& subcommand, const std::string& what) {
        CLI::Option* const output = addOutput(
            subcommand, "Where the " + what + " goes, as its name says; - writes TIFF to standard output");
        addFolder(subcommand, "Where the " + what + "s go as PNG", output);
        subcommand
            .add_flag("--show", options_.showsPicture,
                      "Draw the " + what + ", on a terminal that can (kitty graphics, sixel)")
            ->excludes("--json");
    }

    void addPDFOf() {
        CLI::App& subcommand = add(Operation::PDFImageRepOfFile,
                                   "Turn drawings (PostScript, EPS, Illustrator) into PDF", R"(Examples:
  plumwick pdf-of logo.eps -o logo.pdf
  plumwick pdf-of *.eps -d pdfs)");
        addFiles(subcommand, "Drawings; what is a PDF stays as it is");
        CLI::Option* const output = addOutput(subcommand, "Where the PDF goes; - writes standard output");
        addFolder(subcommand, "Where the PDFs go", output);
    }

    void addHTMLToText() {
        CLI::App& subcommand =
            add("html-to-text", "Print the text of HTML pages, as a search would see it", HTMLToText(),
                R"(Works by itself, without the service. The charset is the one given, else that of a
byte-order mark, else the page's own, else ISO Latin 1. With
--json each page gives one line, in their order: a dictionary with "String", or null when it has no text.

Examples:
  plumwick html-to-text page.html
  curl -s https://example.org/ | plumwick html-to-text - --only-body --remove-junk
  plumwick html-to-text --charset windows-1251 old/*.html)");
        addFiles(subcommand, "The pages; - reads standard input");
        subcommand.add_flag("--reformat", options_.reformats, "Keep the lines of preformatted text");
        subcommand.add_flag("--only-body", options_.takesOnlyBody, "Leave out what stands outside the body");
        subcommand.add_flag("--remove-junk", options_.removesJunk, "Leave out overlong lines");
        subcommand.add_flag("--non-umlauted", options_.foldsAccents, "Write accented letters as plain ones");
        subcommand.add_flag("--markers", options_.honoursMarkers,
                            "Leave out what googleoff and googleon comments enclose");
        subcommand.add_option("--charset", charset_, "The pages' charset, as a header would name it")
            ->type_name("LABEL");
    }

    void addStatus() {
        CLI::App& subcommand = add(
            "status", "Print the name, process, age, memory, version and engines of the running service",
            Status(),
            R"(Never starts a service and asks none; the exit status is 3 when none runs. With --recent what the service has written
down of its latest requests is printed instead, the newest last: time, operation, outcome, milliseconds, file and a
sentence. That is there also when no service runs any more; "begun" is what one was at work on when it ended.

Examples:
  plumwick status
  plumwick status --json
  plumwick status --recent 50)");
        subcommand
            .add_option("--recent", recent_, "Print the latest N requests, 20 unless given, of up to 512")
            ->type_name("[N]")
            ->expected(0, 1);
    }

    void finish() {
        if (file_)
            options_.files = {*file_};
        options_.mayUseImporters = !refusesImporters_;
        if (std::ranges::count(options_.files, "") > 0)
            refuse("FILE: a name is empty");
        if (listsImporters_)
            options_.subject = Importers();
        else if (options_.files.empty() && !std::holds_alternative<Status>(options_.subject))
            refuse("FILE is required");
        if (!baseURL_.empty()) {
            options_.baseURL = NSURL::URLWithString(NSString::stringByRepairingUTF8String(baseURL_));
            if (options_.baseURL.isNil() || options_.baseURL.scheme().isNil())
                refuse("--base-url: " + baseURL_ + " is not an absolute URL");
        }
        const Operation* const operation = std::get_if<Operation>(&options_.subject);
        readRecent();
        if (!charset_.empty()) {
            options_.charset = NSString::stringByRepairingUTF8String(charset_);
            if (charset2NSStringEncoding(options_.charset) == kCFStringEncodingInvalidId)
                refuse("--charset: " + charset_ + " is not known");
        }
        const bool takesBytes =
            std::holds_alternative<HTMLToText>(options_.subject) ||
            (operation && (*operation == Operation::RTFDWithHTML || *operation == Operation::writeRTFDData ||
                           *operation == Operation::stringWithPDF));
        if (!takesBytes && std::ranges::count(options_.files, standardStream) > 0)
            refuse(
                "FILE: the service reads this kind by name, not from standard input (./- is a file named -)");
        if (!operation)
            return;
        if (*operation == Operation::writeRTFDData && options_.output == standardStream)
            refuse("OUT.rtfd: a package is a folder and cannot go to standard output");
        const bool givesOnlyBytes =
            *operation == Operation::RTFDWithHTML || *operation == Operation::PDFImageRepOfFile;
        if (givesOnlyBytes && !options_.output && !options_.folder && !options_.printsJSON)
            refuse("-o OUT is required (or --json)");
        if (options_.output && options_.files.size() > 1)
            refuse("-o: takes the answer for one FILE");
        if (options_.output && options_.output->empty())
            refuse("-o: the name is empty");
        if (options_.folder && options_.folder->empty())
            refuse("-d: the name is empty");
        if (options_.output == standardStream && options_.showsPicture)
            refuse("--show and -o - cannot both go to standard output");
        if (options_.output == standardStream && options_.printsJSON)
            refuse("--json and -o - cannot both go to standard output");
    }

    void readRecent() {
        if (!recent_)
            return;
        if (recent_->empty()) {
            options_.recentCount = usualRecentCount;
            return;
        }
        std::size_t count = 0;
        const char* const end = recent_->data() + recent_->size();
        const auto [rest, error] = std::from_chars(recent_->data(), end, count);
        if (error != std::errc() || rest != end || count == 0)
            refuse("--recent: " + *recent_ + " is not a number of requests");
        options_.recentCount = count;
    }

    CLI::App app_{
        "Asks the conversion service on this machine what is in files: their metadata, text, pictures.",
        "plumwick"};
    Options options_;
    std::optional<std::string> file_;
    std::string baseURL_;
    std::string charset_;
    std::optional<std::string> recent_;
    bool refusesImporters_ = false;
    bool listsImporters_ = false;
};

} // namespace

std::variant<Options, ExitStatus> parseOptions(int argumentCount, const char* const* arguments,
                                               Output& output, Output& errors) {
    return Parser().parse(argumentCount, arguments, output, errors);
}

} // namespace kelvo::cli
