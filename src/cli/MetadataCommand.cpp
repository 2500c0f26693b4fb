#include "cli/MetadataCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/MetadataTable.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "client/ServiceProgram.h"
#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/PlatformRoot.h"

namespace kelvo::cli {
namespace {

ExitStatus runFile(Session& session, const std::string& file) {
    const Options& options = session.options();
    const std::string subject = printableFileName(file);
    requireReadable(file);
    Request request;
    request.operation = Operation::metaDataForFile;
    request.file = pathOfFile(file);
    const Value result = session.ask(request, kindOfFile(request.file), subject);
    Output& output = session.output();
    if (options.printsJSON)
        session.printJSON(isNoAnswer(result) ? Value() : Value(withFile(file, result.dictionary())));
    if (isNoAnswer(result))
        return session.complainOfNoAnswer(subject);
    const NSDictionary attributes = result.dictionary();
    const NSString text = attributes.objectForKey(u"kMDItemTextContent").string();
    // Nothing is an answer, too, but there may be a reason for it.
    if (attributes.count() == 0 && session.outcome() && session.outcome()->outcome > Outcome::nothing)
        return session.complainOfNoAnswer(subject);
    if (attributes.count() == 0 || (options.printsOnlyText && text.isEmpty())) {
        session.complain(subject + (attributes.count() == 0 ? ": its importer found nothing in it"
                                                            : ": its importer found no text in it"));
        return ExitStatus::noAnswer;
    }
    if (options.printsOnlyText)
        output.write(wholeText(text, output) + "\n");
    else if (!options.printsJSON)
        output.write(tableOfRows(rowsOfMetadata(attributes), output));
    return ExitStatus::answered;
}

} // namespace

ExitStatus runMetadata(Session& session, const std::vector<std::string>& files) {
    return runEachFile(session, files,
                       [&session](const std::string& file) { return runFile(session, file); });
}

ExitStatus runImporters(Session& session) {
    const bool hasOwn = setPlatformRootOfService();
    MetaDataImporter host;
    try {
        host.importerForFileAtPath_contentType(nullptr, nullptr);
    } catch (const NSException& exception) {
        throw CommandError(ExitStatus::file,
                           "the importers cannot be listed: " + printable(exception.reason()));
    }
    Output& output = session.output();
    for (const Value& importer : host.MDImporterArray) {
        const NSString path = importer.string();
        const bool isOwn = hasOwn && path.characters().starts_with(u"/System/Library/");
        const NSArray types = host.contentTypesForMDImporter.objectForKey(importer).array();
        if (session.options().printsJSON) {
            output.write(lineOfJSON(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                {{path, u"path"},
                 {NSNumber::numberWithBool(isOwn), u"own"},
                 {types.isNil() ? NSArray::array() : types, u"types"}})));
            continue;
        }
        std::string text = output.styled(Style::strong, printable(path)) +
                           (isOwn ? "  comes with plumwick\n" : "\n") +
                           (types.count() == 0 ? "    no types\n" : "");
        for (const Value& type : types)
            text += "    " + printable(type.string()) + "\n";
        output.write(text);
    }
    if (host.MDImporterArray.count() > 0)
        return ExitStatus::answered;
    session.complain("no metadata importers are installed");
    return ExitStatus::noAnswer;
}

} // namespace kelvo::cli
