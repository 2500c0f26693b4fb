#include "cli/PDFTextCommand.h"

#include "cli/AnswerOutput.h"
#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/MetadataTable.h"
#include "cli/RichTextView.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "client/ServiceProgram.h"
#include "pdf/PDFDocumentConversion.h"
#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "platform/engine/EngineProcess.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFEngine.h"
#include "protocol/ResultKeys.h"

#include <fmt/format.h>

#include <utility>

namespace kelvo::cli {
namespace {

NSData richTextOf(const NSAttributedString& text, const NSDictionary& facts) {
    NSMutableDictionary attributes = NSMutableDictionary::dictionary();
    for (const auto& [ofPDF, ofText] :
         {std::pair(PDFDocumentTitleAttribute, NSTitleDocumentAttribute),
          std::pair(PDFDocumentAuthorAttribute, NSAuthorDocumentAttribute),
          std::pair(PDFDocumentSubjectAttribute, NSSubjectDocumentAttribute),
          std::pair(PDFDocumentKeywordsAttribute, NSKeywordsDocumentAttribute),
          std::pair(PDFDocumentCreationDateAttribute, NSCreationTimeDocumentAttribute),
          std::pair(PDFDocumentModificationDateAttribute, NSModificationTimeDocumentAttribute)}) {
        const Value& value = facts.objectForKey(ofPDF);
        if (!value.isNil())
            attributes.setObject_forKey(value, ofText);
    }
    return RTFDFromRange_documentAttributes(text, {0, text.length()}, attributes);
}

/// The facts, and the text below them unless it has gone into a file.
void printAnswer(Session& session, const NSDictionary& answer, const NSAttributedString& rich,
                 const WrittenBytes& written) {
    Output& output = session.output();
    const NSString text = rich.isNil() ? answer.objectForKey(ResultStringKey).string() : textOfRichText(rich);
    std::vector<MetadataRow> rows = rowsOfPDF(answer);
    if (!written.fileName.empty())
        rows.push_back({"Text", textOfData(written.data, written)});
    else if (!text.isNil() && text.isEmpty())
        rows.push_back({"Text", "none"});
    output.write(tableOfRows(rows, output));
    if (written.fileName.empty() && !text.isEmpty())
        output.write("\n" + linesOfText(text, output));
}

ExitStatus runFile(Session& session, const std::string& file) {
    const Options& options = session.options();
    const std::string subject = subjectOf(file);
    requireAnswerWritable(session, AnswerBytes::richText);
    Request request;
    request.operation = Operation::stringWithPDF;
    request.data = readInput(file);
    request.wantsRichText = options.wantsRichText;
    const Value result = session.ask(request, FileKind::PDF, subject);
    if (isNoAnswer(result)) {
        if (options.printsJSON)
            session.printJSON(result);
        return session.complainOfNoAnswer(subject);
    }
    NSMutableDictionary answer(result.dictionary());
    const auto rich = NSAttributedString::withValue(answer.objectForKey(ResultStringKey));
    if (!rich.isNil() && (options.output || options.printsJSON))
        answer.setObject_forKey(richTextOf(rich, answer), ResultRtfdKey);
    WrittenBytes written;
    const ExitStatus status = writeAnswer(session, answer.objectForKey(ResultRtfdKey).data(),
                                          AnswerBytes::richText, subject, written);
    if (options.printsJSON)
        session.printJSON(withFile(file, answer), written);
    else if (options.output != standardStream)
        printAnswer(session, answer, rich, written);
    return status;
}

void printPages(Session& session, const NSDictionary& facts, const NSArray& pages) {
    Output& output = session.output();
    output.write(tableOfRows(rowsOfPDF(facts), output));
    std::size_t number = 0;
    for (const Value& page : pages) {
        const NSString text = page.string();
        const char* const lack = text.isNil() ? "  could not be read" : text.isEmpty() ? "  no text" : "";
        output.write(
            fmt::format("\n{}{}\n", output.styled(Style::strong, fmt::format("Page {}", ++number)), lack));
        output.write(linesOfText(text, output));
    }
}

ExitStatus runPagesOfFile(Session& session, const std::string& file) {
    constexpr const char16_t* pagesKey = u"Pages";
    const Options& options = session.options();
    const NSData data = readInput(file);
    RequestNotes notes;
    const PDFDocument document = PDFDocument::initWithData(data);
    NSMutableDictionary facts = NSMutableDictionary::dictionary();
    NSMutableArray pages = NSMutableArray::array();
    if (document.isLocked()) {
        noteOutcome(Outcome::answered, sentenceOfLockedPDF);
        facts.setObject_forKey(NSNumber::numberWithBool(true), ResultLockedKey);
    } else {
        walkOfPages(document, options.timeoutSeconds.value_or(secondsForPages))
            .walk([&pages](std::size_t, const NSString& text) {
                pages.addObject(text.isNil() ? Value(NSNull()) : Value(text));
            });
    }
    session.learnOutcome(outcomeOfResult(Operation::stringWithPDF, !document.isNil(), notes, nullptr));
    if (document.isNil()) {
        if (options.printsJSON)
            session.printJSON(nullptr);
        return session.complainOfNoAnswer(subjectOf(file));
    }
    facts.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(document.pageCount())),
                           ResultPageCountKey);
    for (const auto& [key, value] : document.documentAttributes())
        facts.setObject_forKey(value, key);
    if (!options.printsJSON) {
        printPages(session, facts, pages);
        return ExitStatus::answered;
    }
    if (!document.isLocked())
        facts.setObject_forKey(pages, pagesKey);
    session.printJSON(withFile(file, facts));
    return ExitStatus::answered;
}

ExitStatus runPages(Session& session, const std::vector<std::string>& files) {
    struct EngineOfThisRun {
        EngineOfThisRun() { setFolderOfEngines(folderOfServiceProgram()); }
        EngineOfThisRun(const EngineOfThisRun&) = delete;
        EngineOfThisRun& operator=(const EngineOfThisRun&) = delete;
        ~EngineOfThisRun() { PDFEngine::sharedEngine().stop(); }
    };
    const EngineOfThisRun engine;
    return runEachFile(session, files,
                       [&session](const std::string& file) { return runPagesOfFile(session, file); });
}

} // namespace

ExitStatus runPDFText(Session& session, const std::vector<std::string>& files) {
    if (session.options().wantsPages)
        return runPages(session, files);
    return runEachFile(session, files,
                       [&session](const std::string& file) { return runFile(session, file); });
}

} // namespace kelvo::cli
