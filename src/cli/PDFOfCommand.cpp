#include "cli/PDFOfCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/OutputFolder.h"
#include "cli/Printable.h"
#include "cli/Session.h"

#include <fmt/format.h>

#include <optional>

namespace kelvo::cli {
namespace {

ExitStatus runFile(Session& session, const std::string& file, std::optional<OutputFolder>& folder) {
    const std::string subject = printableFileName(file);
    requireReadable(file);
    Request request;
    request.operation = Operation::PDFImageRepOfFile;
    request.file = pathOfFile(file);
    const Value result = session.ask(request, kindOfFile(request.file), subject);
    const NSData pdf = result.data();
    WrittenBytes written;
    if (folder && !pdf.isNil()) {
        written = {pdf, folder->nameFor(file)};
        writeOutput(written.fileName, pdf, session.output());
    }
    if (session.options().printsJSON)
        session.printJSON(result, written);
    if (pdf.isNil())
        return session.complainOfNoAnswer(subject);
    if (!session.options().printsJSON)
        session.output().write(
            fmt::format("{}  {}\n", printableFileName(written.fileName), printableByteCount(pdf.length())));
    return ExitStatus::answered;
}

} // namespace

ExitStatus runPDFOf(Session& session, const std::vector<std::string>& files) {
    std::optional<OutputFolder> folder;
    if (session.options().folder)
        folder.emplace(*session.options().folder, files, ".pdf");
    return runEachFile(
        session, files, [&](const std::string& file) { return runFile(session, file, folder); },
        EachFile::inItsLine);
}

} // namespace kelvo::cli
