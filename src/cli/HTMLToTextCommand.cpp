#include "cli/HTMLToTextCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "cli/TextView.h"
#include "markup/CharsetLabels.h"
#include "markup/Html2Text.h"
#include "markup/MarkupDecoding.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "protocol/ResultKeys.h"

namespace kelvo::cli {
namespace {

/// What the user says about the page is heeded as it is, then its byte-order mark, then its own declaration.
NSString markupOfPage(const NSData& page, const NSString& charset) {
    if (!charset.isNil())
        return stringByRepairingData_encoding(page, NSEncodingFromName(charset));
    if (NSString marked = stringWithMarkedData(page, nullptr); !marked.isNil())
        return marked;
    return XmlExtensions::stringWithMarkupData_defaultEncoding(page, NSISOLatin1StringEncoding);
}

/// Nil when the page has no text.
NSString textOfPage(const NSData& page, const Options& options) {
    const NSString markup = markupOfPage(page, options.charset);
    const NSString text = stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        markup, options.foldsAccents, options.reformats, options.takesOnlyBody, options.removesJunk, nullptr,
        options.honoursMarkers);
    return text.isEmpty() || isBareMarkup(text, markup) ? NSString() : text;
}

ExitStatus runPage(Session& session, const std::string& file) {
    const NSString text = textOfPage(readInput(file), session.options());
    Output& output = session.output();
    if (session.options().printsJSON)
        output.write(lineOfJSON(
            text.isNil() ? Value()
                         : NSMutableDictionary::dictionaryWithObjectsAndKeys({{text, ResultStringKey}})));
    else if (!text.isNil())
        output.write(wholeText(text, output) + "\n");
    if (!text.isNil())
        return ExitStatus::answered;
    session.complain(subjectOf(file) + ": has no text");
    return ExitStatus::noAnswer;
}

} // namespace

ExitStatus runHTMLToText(Session& session, const std::vector<std::string>& files) {
    return runEachFile(session, files,
                       [&session](const std::string& file) { return runPage(session, file); });
}

} // namespace kelvo::cli
