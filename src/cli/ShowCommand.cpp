#include "cli/ShowCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/KindFacts.h"
#include "cli/MetadataValues.h"
#include "cli/Printable.h"
#include "cli/RecordView.h"
#include "cli/RichTextView.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "platform/appkit/NSDocumentAttributes.h"

#include <fmt/format.h>

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace kelvo::cli {
namespace {

constexpr std::size_t shownLines = 3;
constexpr std::size_t shownWidth = 72;
constexpr std::size_t shownAttributes = 8;

/// One operation on one file: what came back, or why nothing did.
struct Answer {
    Operation operation;
    Value result;
    double milliseconds = 0;
    bool startedService = false;
    std::optional<std::string> failure;
    std::optional<RequestRecord> record;
};

std::vector<Operation> operationsForKind(FileKind kind) {
    std::vector<Operation> operations{Operation::metaDataForFile};
    switch (kind) {
    case FileKind::HTML:
        operations.push_back(Operation::RTFDWithHTML);
        break;
    case FileKind::webArchive:
    case FileKind::MIMEHTML:
        operations.push_back(Operation::searchableTextOfWebArchive);
        break;
    case FileKind::plainText:
    case FileKind::RTF:
    case FileKind::RTFD:
    case FileKind::wordDocument:
    case FileKind::wordML:
    case FileKind::officeOpenXML:
    case FileKind::openDocument:
    case FileKind::flatOpenDocument:
    case FileKind::openOfficeText:
    // Reading them tells what is wrong with them.
    case FileKind::encryptedPackage:
    case FileKind::damagedPackage:
        operations.push_back(Operation::attributedStringWithContentsOfFile);
        break;
    case FileKind::PDF:
        operations.insert(operations.end(), {Operation::stringWithPDF, Operation::imageWithContentsOfFile});
        break;
    case FileKind::postScript:
        operations.insert(operations.end(),
                          {Operation::imageWithContentsOfFile, Operation::PDFImageRepOfFile});
        break;
    case FileKind::SVG:
    case FileKind::image:
        operations.push_back(Operation::imageWithContentsOfFile);
        break;
    case FileKind::movie:
    case FileKind::audio:
        operations.push_back(Operation::posterImageForMovieWithFile);
        break;
    case FileKind::folder:
    case FileKind::spreadsheet:
    case FileKind::presentation:
    case FileKind::book:
    case FileKind::archive:
    case FileKind::other:
        break;
    }
    return operations;
}

Request requestForShow(Operation operation, const std::string& file) {
    Request request;
    request.operation = operation;
    request.file = pathOfFile(file);
    if (operation == Operation::RTFDWithHTML)
        request.baseURL = NSURL::fileURLWithPath(request.file);
    if (operation == Operation::RTFDWithHTML || operation == Operation::stringWithPDF)
        request.data = readInput(file);
    return request;
}

class Presentation {
public:
    explicit Presentation(Session& session) : session_(session) {}

    ExitStatus run(const std::vector<std::string>& files) {
        for (const std::string& file : files) {
            try {
                showFile(file);
            } catch (const CommandError& error) {
                if (session_.options().printsJSON)
                    session_.output().write("null\n");
                session_.complain(error.what());
                status_ = worse(status_, error.status());
            }
            // What has been answered is seen while the next file is at work.
            session_.output().flush();
            if (!session_.isReachable())
                return status_;
        }
        if (!session_.options().printsJSON)
            showEnd();
        return status_;
    }

private:
    void showFile(const std::string& file) {
        requireReadable(file);
        const FileKind kind = kindOfFile(pathOfFile(file));
        std::vector<Answer> answers;
        for (const Operation operation : operationsForKind(kind)) {
            answers.push_back(ask(requestForShow(operation, file), kind, printableFileName(file)));
            if (!session_.isReachable())
                throw CommandError(ExitStatus::service, *answers.back().failure);
        }
        if (session_.options().printsJSON)
            printJSON(file, kind, answers);
        else
            printText(file, kind, answers);
    }

    Answer ask(const Request& request, FileKind kind, const std::string& subject) {
        Answer answer;
        answer.operation = request.operation;
        answer.startedService = !isFirstDone_ && !session_.isServiceRunning();
        isFirstDone_ = true;
        const auto begin = std::chrono::steady_clock::now();
        session_.forgetOutcome();
        try {
            answer.result = session_.ask(request, kind, subject);
        } catch (const CommandError& error) {
            answer.failure = error.what();
            status_ = worse(status_, error.status());
        }
        answer.milliseconds =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        answer.record = session_.outcome();
        return answer;
    }

    static std::optional<std::uint64_t> sizeOf(const std::string& file) {
        struct stat facts;
        if (stat(file.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode))
            return std::nullopt;
        return static_cast<std::uint64_t>(facts.st_size);
    }

    void printText(const std::string& file, FileKind kind, const std::vector<Answer>& answers) {
        Output& output = session_.output();
        std::string heading = std::string(nameOfKind(kind));
        if (const auto size = sizeOf(file))
            heading += ", " + printableByteCount(*size);
        output.write(fmt::format("{}  {}\n", output.styled(Style::strong, printableFileName(file)), heading));
        for (const Answer& answer : answers) {
            output.write(fmt::format("  {:<15}{}  {}\n", subcommandOfOperation(answer.operation),
                                     outcome(answer), output.styled(Style::faint, duration(answer))));
            for (const std::string& line : details(answer))
                output.write("      " + line + "\n");
        }
        output.write("\n");
    }

    static std::string duration(const Answer& answer) {
        return printableMilliseconds(answer.milliseconds) +
               (answer.startedService ? ", the start of the service among them" : "");
    }

    std::string outcome(const Answer& answer) {
        const Output& output = session_.output();
        if (answer.failure)
            return output.styled(Style::failure, *answer.failure);
        // A file that is no movie is answered as well.
        const bool isOfNoMovie = answer.operation == Operation::posterImageForMovieWithFile &&
                                 !isAnswer(answer.operation, answer.result.dictionary());
        if (answer.result.isData() || (answer.result.dictionary().count() > 0 && !isOfNoMovie)) {
            const std::size_t count = answer.result.dictionary().count();
            const std::string size = answer.result.isData()
                                         ? printableByteCount(answer.result.data().length())
                                         : fmt::format("{} {}", count, count == 1 ? "entry" : "entries");
            return answer.record && !answer.record->sentence.isNil()
                       ? size + ": " + printable(answer.record->sentence)
                       : size;
        }
        return answer.record && answer.record->outcome != Outcome::answered ? outcomeOfRecord(*answer.record)
                                                                            : "nothing found";
    }

    static std::vector<std::string> details(const Answer& answer) {
        const NSDictionary answered = answer.result.dictionary();
        if (answer.operation == Operation::stringWithPDF)
            return detailsOfRows(rowsOfPDF(answered), answered.objectForKey(ResultStringKey).string());
        if (answer.operation != Operation::metaDataForFile)
            return details(answer.result);
        NSMutableDictionary facts(answered);
        facts.removeObjectForKey(u"kMDItemTextContent");
        return detailsOfRows(rowsOfMetadata(facts), answered.objectForKey(u"kMDItemTextContent").string());
    }

    static std::vector<std::string> detailsOfRows(const std::vector<MetadataRow>& rows,
                                                  const NSString& text) {
        std::vector<std::string> lines;
        for (const MetadataRow& row : rows) {
            if (lines.size() == shownAttributes) {
                lines.push_back("…");
                break;
            }
            const auto first = firstLines(NSString::stringWithUTF8String(row.text), 1, shownWidth);
            lines.push_back(fmt::format("{:<13} {}", row.label, first.empty() ? "" : first.front()));
        }
        addBeginning(lines, text);
        return lines;
    }

    static void addBeginning(std::vector<std::string>& lines, const NSString& text) {
        for (const std::string& line : firstLines(text, shownLines, shownWidth))
            lines.push_back("| " + line);
    }

    /// What people look for first: the title, the facts of fixed size, the beginning of the text.
    static std::vector<std::string> details(const Value& result) {
        std::vector<std::string> lines;
        const NSDictionary dictionary = result.dictionary();
        const auto addSummary = [&](const char16_t* key) {
            const Value& value = dictionary.objectForKey(key);
            if (!value.isNil())
                lines.push_back(fmt::format("{:<14}{}", printable(key), summaryOfValue(value, shownWidth)));
        };
        for (const char16_t* key : {u"Title", u"Author", ResultURLKey, ResultLockedKey, ResultPageCountKey,
                                    ResultSizeKey, ResultPixelSizeKey, ResultAlphaKey, ResultDurationKey,
                                    ResultPropertiesKey, ResultThumbnailKey, ResultRtfdKey})
            addSummary(key);
        const NSDictionary facts = dictionary.objectForKey(ResultDocumentAttributesKey).dictionary();
        for (const auto& [label, key] :
             {std::pair("Title", NSTitleDocumentAttribute), std::pair("Author", NSAuthorDocumentAttribute)}) {
            const Value& value = facts.objectForKey(key);
            if (!value.isNil())
                lines.push_back(fmt::format("{:<14}{}", label, summaryOfValue(value, shownWidth)));
        }
        addBeginning(lines, dictionary.objectForKey(ResultStringKey).string());
        addBeginning(lines, textOfRichText(result.isData() ? result.data()
                                                           : dictionary.objectForKey(ResultRtfdKey).data()));
        return lines;
    }

    void printJSON(const std::string& file, FileKind kind, const std::vector<Answer>& answers) {
        NSMutableArray operations = NSMutableArray::array();
        for (const Answer& answer : answers) {
            NSMutableDictionary row = NSMutableDictionary::dictionary();
            const std::string name(subcommandOfOperation(answer.operation));
            row.setObject_forKey(NSString::stringWithUTF8String(name), u"operation");
            row.setObject_forKey(NSNumber::numberWithDouble(answer.milliseconds), u"milliseconds");
            if (answer.failure)
                row.setObject_forKey(NSString::stringByRepairingUTF8String(*answer.failure), u"failure");
            row.setObject_forKey(answer.result.isNil() ? Value(NSNull()) : answer.result, u"result");
            if (session_.options().printsOutcome && answer.record)
                row.setObject_forKey(valueOfRecord(*answer.record), u"outcome");
            operations.addObject(row);
        }
        NSMutableDictionary facts = NSMutableDictionary::dictionary();
        facts.setObject_forKey(pathOfFile(file), u"file");
        facts.setObject_forKey(NSString::stringByRepairingUTF8String(nameOfKind(kind)), u"kind");
        if (const auto size = sizeOf(file))
            facts.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(*size)), u"bytes");
        facts.setObject_forKey(operations, u"operations");
        session_.output().write(lineOfJSON(facts));
    }

    void showEnd() {
        Output& output = session_.output();
        if (session_.isServiceRunning()) {
            const ServiceStatus status = session_.status();
            output.write(fmt::format("Answered by {}, process {}, {} of memory{}.\n",
                                     printable(status.registeredName), status.processIdentifier,
                                     printableByteCount(status.residentBytes),
                                     status.version.isNil() ? "" : ", version " + printable(status.version)));
        }
    }

    Session& session_;
    ExitStatus status_ = ExitStatus::answered;
    bool isFirstDone_ = false;
};

} // namespace

ExitStatus runShow(Session& session, const std::vector<std::string>& files) {
    return Presentation(session).run(files);
}

} // namespace kelvo::cli
