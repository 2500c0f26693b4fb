#include "cli/Commands.h"

#include "cli/AnswerOutput.h"
#include "cli/Files.h"
#include "cli/HTMLToTextCommand.h"
#include "cli/ImageCommand.h"
#include "cli/JSONView.h"
#include "cli/MetadataCommand.h"
#include "cli/MovieCommand.h"
#include "cli/PDFOfCommand.h"
#include "cli/PDFTextCommand.h"
#include "cli/Printable.h"
#include "cli/ReadDocumentCommand.h"
#include "cli/RecordView.h"
#include "cli/RichTextOutput.h"
#include "cli/Session.h"
#include "cli/ShowCommand.h"
#include "cli/TextView.h"
#include "cli/WebArchiveCommand.h"
#include "platform/foundation/FileIO.h"

#include <fmt/format.h>

#include <unistd.h>

#include <optional>

namespace kelvo::cli {
namespace {

Request requestForFile(const Options& options, Operation operation, const std::string& file) {
    Request request;
    request.operation = operation;
    request.allowsRemoteRequest = options.allowsRemoteRequest;
    switch (operation) {
    case Operation::RTFDWithHTML:
        request.baseURL = options.baseURL;
        if (request.baseURL.isNil() && file != standardStream)
            request.baseURL = NSURL::fileURLWithPath(pathOfFile(file));
        [[fallthrough]];
    case Operation::writeRTFDData:
        request.data = readInput(file);
        break;
    default:
        requireReadable(file);
        request.file = pathOfFile(file);
    }
    return request;
}

bool givesRichText(Operation operation) {
    return operation == Operation::RTFDWithHTML || operation == Operation::attributedStringWithContentsOfFile;
}

void print(Session& session, const Value& result, const WrittenBytes& written) {
    if (session.options().printsJSON)
        session.printJSON(result, written);
    else
        session.output().write(textOfResult(result, written, session.output()));
}

ExitStatus runWriteRTFD(Session& session, const std::string& dataFile, const std::string& destination) {
    const NSData rtfd = readInput(dataFile);
    const bool isWritten = richTextFormOfName(destination) == RichTextForm::plain
                               ? !writeRichText(session, rtfd, destination).isNil()
                               : writePackage(session, rtfd, destination);
    if (session.options().printsJSON)
        print(session, NSNumber::numberWithBool(isWritten), {});
    return isWritten ? ExitStatus::answered : session.complainOfNoAnswer(printableFileName(destination));
}

ExitStatus runOperation(Session& session, Operation operation, const std::string& file) {
    const Options& options = session.options();
    const std::string subject = subjectOf(file);
    const AnswerBytes form = givesRichText(operation) ? AnswerBytes::richText : AnswerBytes::asTheyAre;
    // Whatever can be known to fail fails before the work.
    requireAnswerWritable(session, form);
    const Request request = requestForFile(options, operation, file);
    const Value result = session.ask(request, kindOfFile(request.file), subject);
    if (options.listsRefused)
        session.listRefused(subject);
    const bool isEmpty = result.isDictionary() && !isAnswer(operation, result.dictionary());
    if (isNoAnswer(result) || isEmpty) {
        if (options.printsJSON)
            print(session, result, {});
        return session.complainOfNoAnswer(subject);
    }
    WrittenBytes written;
    const ExitStatus status = writeAnswer(session, bytesOfResult(operation, result), form, subject, written);
    if (options.output != standardStream)
        print(session, result, written);
    return status;
}

ExitStatus runStatus(Session& session) {
    const ServiceStatus status = session.status();
    if (session.options().printsJSON) {
        NSMutableDictionary facts = NSMutableDictionary::dictionary();
        facts.setObject_forKey(status.registeredName, u"registeredName");
        facts.setObject_forKey(NSNumber::numberWithLongLong(status.processIdentifier), u"processIdentifier");
        facts.setObject_forKey(NSNumber::numberWithDouble(status.uptimeSeconds), u"uptimeSeconds");
        facts.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(status.residentBytes)),
                               u"residentBytes");
        facts.setObject_forKey(status.version.isNil() ? Value(NSNull()) : Value(status.version), u"version");
        NSMutableArray engines = NSMutableArray::array();
        for (const EngineFacts& engine : status.engines)
            engines.addObject(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                {{engine.name, u"name"},
                 {NSNumber::numberWithLongLong(engine.processIdentifier), u"processIdentifier"},
                 {engine.layers.isNil() ? NSString::string() : engine.layers, u"layers"}}));
        facts.setObject_forKey(engines, u"engines");
        session.output().write(lineOfJSON(facts));
        return ExitStatus::answered;
    }
    session.output().write(fmt::format("Name     {}\nProcess  {}\nUptime   {}\nMemory   {}\nVersion  {}\n",
                                       printable(status.registeredName), status.processIdentifier,
                                       printableUptime(status.uptimeSeconds),
                                       printableByteCount(status.residentBytes),
                                       status.version.isNil() ? "unknown" : printable(status.version)));
    for (const EngineFacts& engine : status.engines)
        session.output().write(fmt::format("Engine   {}, process {}: {}\n", printable(engine.name),
                                           engine.processIdentifier,
                                           engine.layers.isNil() ? "not shut in" : printable(engine.layers)));
    return ExitStatus::answered;
}

ExitStatus runRecent(Session& session, std::size_t count) {
    for (const RequestRecord& record : session.recentRequests(count))
        session.output().write(session.options().printsJSON ? lineOfJSON(valueOfRecord(record))
                                                            : lineOfRecord(record));
    return ExitStatus::answered;
}

ExitStatus runOnFile(Session& session, Operation operation) {
    const Options& options = session.options();
    const std::string& file = options.files.front();
    if (operation == Operation::writeRTFDData)
        return runWriteRTFD(session, file, *options.output);
    if (operation == Operation::searchableTextOfWebArchive)
        return runWebArchive(session, file);
    if (operation == Operation::attributedStringWithContentsOfFile && !options.output && !options.printsJSON)
        return runReadDocument(session, file);
    return runOperation(session, operation, file);
}

ExitStatus runSubject(Session& session) {
    const Options& options = session.options();
    if (std::holds_alternative<Status>(options.subject))
        return options.recentCount ? runRecent(session, *options.recentCount) : runStatus(session);
    if (std::holds_alternative<Show>(options.subject))
        return runShow(session, options.files);
    if (std::holds_alternative<HTMLToText>(options.subject))
        return runHTMLToText(session, options.files);
    if (std::holds_alternative<Importers>(options.subject))
        return runImporters(session);
    const Operation operation = std::get<Operation>(options.subject);
    if (operation == Operation::metaDataForFile)
        return runMetadata(session, options.files);
    if (operation == Operation::stringWithPDF)
        return runPDFText(session, options.files);
    if (operation == Operation::posterImageForMovieWithFile)
        return runMovies(session, options.files);
    if (operation == Operation::imageWithContentsOfFile)
        return runImage(session, options.files);
    if (operation == Operation::PDFImageRepOfFile && (options.files.size() > 1 || options.folder))
        return runPDFOf(session, options.files);
    const ExitStatus status = runOnFile(session, operation);
    session.tellWhatIsMissing(subjectOf(options.files.front()));
    return status;
}

} // namespace

ExitStatus runCommand(int argumentCount, const char* const* arguments, Output& output, Output& errors) {
    const auto parsed = parseOptions(argumentCount, arguments, output, errors);
    ExitStatus status = ExitStatus::answered;
    const Options* const options = std::get_if<Options>(&parsed);
    try {
        if (options) {
            Session session(*options, output, errors);
            try {
                status = runSubject(session);
            } catch (const CommandError& error) {
                if (options->printsJSON && error.status() != ExitStatus::usage)
                    session.printJSON(nullptr);
                session.complain(error.what());
                status = error.status();
            }
        } else {
            status = std::get<ExitStatus>(parsed);
        }
        output.flush();
        errors.flush();
        return status;
    } catch (const std::exception& error) {
        // Above all a standard stream that failed. Where that is standard error, the status is all that can
        // be said.
        const std::string sentence =
            "plumwick: " + printable(NSString::stringByRepairingUTF8String(error.what())) + "\n";
        writeAll(STDERR_FILENO, sentence.data(), sentence.size());
        return ExitStatus::file;
    }
}

} // namespace kelvo::cli
