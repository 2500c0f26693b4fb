#include "cli/HTMLToTextCommand.h"

#include "cli/Files.h"
#include "cli/JSONView.h"
#include "cli/Printable.h"
#include "cli/Session.h"
#include "markup/Html2Text.h"
#include "markup/MarkupDecoding.h"
#include "markup/TagScanner.h"
#include "protocol/ResultKeys.h"

#include <string_view>

namespace kelvo::cli {
namespace {

bool stopAtMarkup(const NSString&, char16_t*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t,
                  TagKind kind, void* hasMarkup) {
    const bool isMarkup = kind != TagKind::text;
    *static_cast<bool*>(hasMarkup) = isMarkup;
    return isMarkup;
}

/// A byte-order mark says for sure what follows it, and the markup cannot be read without heeding it. Nil
/// when there is none.
NSString charsetOfByteOrderMark(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return u"utf-16";
    return bytes.starts_with("\xEF\xBB\xBF") ? NSString(u"utf-8") : NSString();
}

/// Nil when the page has no text.
NSString textOfPage(const NSData& page, const Options& options) {
    const NSString charset =
        options.charset.isNil() ? charsetOfByteOrderMark(page.characters()) : options.charset;
    const NSString markup = XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
        page, charset, NSISOLatin1StringEncoding, nullptr);
    const NSString text = stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        markup, options.foldsAccents, options.reformats, options.takesOnlyBody, options.removesJunk, nullptr,
        options.honoursMarkers);
    // A page without text comes back as it is, and so does text without markup; only the latter is an answer.
    bool hasMarkup = false;
    if (text.isIdenticalTo(markup))
        GetTagsOfString(markup, stopAtMarkup, &hasMarkup, false);
    return text.isEmpty() || hasMarkup ? NSString() : text;
}

ExitStatus runPage(Session& session, const std::string& file) {
    const NSString text = textOfPage(readInput(file), session.options());
    Output& output = session.output();
    if (session.options().printsJSON)
        output.write(lineOfJSON(
            text.isNil() ? Value()
                         : NSMutableDictionary::dictionaryWithObjectsAndKeys({{text, ResultStringKey}})));
    else if (!text.isNil())
        output.write((output.isTerminal() ? printable(text, LineEnds::kept) : text.UTF8String()) + "\n");
    if (!text.isNil())
        return ExitStatus::answered;
    session.complain((file == standardStream ? "standard input" : printableFileName(file)) + ": has no text");
    return ExitStatus::noAnswer;
}

} // namespace

ExitStatus runHTMLToText(Session& session, const std::vector<std::string>& files) {
    return runEachFile(session, files,
                       [&session](const std::string& file) { return runPage(session, file); });
}

} // namespace kelvo::cli
