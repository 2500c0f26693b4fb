#include "cli/MetadataCommand.h"

#include "cli/Files.h"
#include "cli/MetadataValues.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "client/ServiceProgram.h"
#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/PlatformRoot.h"

#include <algorithm>
#include <string_view>

namespace kelvo::cli {
namespace {

constexpr std::size_t widestLabel = 24;
constexpr const char16_t* keyOfFile = u"file";

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (byte & '\xC0') != '\x80'; }));
}

std::string tableOf(const NSDictionary& attributes, const Output& output) {
    const std::vector<MetadataRow> rows = rowsOfMetadata(attributes);
    std::size_t width = 0;
    for (const MetadataRow& row : rows)
        width = std::max(width, std::min(widthOf(row.label), widestLabel));
    std::string table;
    for (const MetadataRow& row : rows) {
        const std::size_t own = widthOf(row.label);
        table += output.styled(Style::strong, row.label) + std::string(own < width ? width - own : 0, ' ');
        std::string lead = "  ";
        std::string_view rest = row.text;
        for (bool isFirst = true; isFirst || !rest.empty(); isFirst = false) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            if (end > 0)
                table.append(lead).append(rest.substr(0, end));
            table += '\n';
            rest.remove_prefix(std::min(end + 1, rest.size()));
            lead = std::string(width + 2, ' ');
        }
    }
    return table;
}

NSDictionary withFile(const std::string& file, const NSDictionary& attributes) {
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    result.setObject_forKey(pathOfFile(file), keyOfFile);
    for (const auto& [name, value] : attributes) {
        // An attribute of that name would hide which line is whose.
        if (name.string() != keyOfFile)
            result.setObject_forKey(value, name);
    }
    return result;
}

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
    if (attributes.count() == 0 || (options.printsOnlyText && text.isEmpty())) {
        session.complain(subject + (attributes.count() == 0 ? ": its importer found nothing in it"
                                                            : ": its importer found no text in it"));
        return ExitStatus::noAnswer;
    }
    if (options.printsOnlyText)
        output.write((output.isTerminal() ? printable(text, LineEnds::kept) : text.UTF8String()) + "\n");
    else if (!options.printsJSON)
        output.write(tableOf(attributes, output));
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
