#include "importers/richtext/RichTextImport.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo::importers {
namespace {

using namespace std::string_view_literals;

/// What stands for a picture, and what separates the lines of a paragraph.
constexpr char16_t attachmentUnit = u'\uFFFC';
constexpr char16_t lineSeparator = u'\u2028';

/// The titles and names in it are short.
constexpr std::size_t longestInformation = 16 << 10;

/// Packages that have been on other disks may have it in other cases.
constexpr const char* namesOfText[] = {"TXT.rtf", "txt.rtf", "TXT.RTF"};

NSData dataOf(std::string_view bytes) {
    return NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
}

std::string_view textInPackage(const Attributes& attributes) {
    for (const char* const name : namesOfText) {
        if (const std::string_view text = attributes.fileInPackage(name); !text.empty())
            return text;
    }
    return {};
}

NSAttributedString read(std::string_view file, NSDictionary& facts) {
    using namespace NSAttributedStringKitAdditions;
    return file.starts_with("rtfd\0\0\0\0"sv) ? initWithRTFD_documentAttributes(dataOf(file), &facts)
                                              : initWithRTF_documentAttributes(dataOf(file), &facts);
}

/// Sets what a word of the document's information counts, which the platform has no document attribute for.
void setCount(Attributes& attributes, const char* name, std::string_view file, std::string_view word) {
    std::string_view information =
        file.substr(std::min(file.find("{\\info"), file.size()), longestInformation);
    const std::size_t place = information.find(word);
    // A backslash before it makes the word text.
    if (place == std::string_view::npos || place == 0 || information[place - 1] == '\\')
        return;
    information.remove_prefix(place + word.size());
    std::int32_t count = 0;
    std::from_chars(information.data(), information.data() + information.size(), count);
    if (count > 0)
        attributes.setInteger(name, count);
}

/// Several names have semicolons between them.
NSArray namesIn(const NSString& text) {
    NSMutableArray names = NSMutableArray::array();
    std::u16string_view rest = text.isNil() ? std::u16string_view() : text.characters();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(u';'), rest.size());
        names.addObject(NSString(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return names;
}

void setFacts(Attributes& attributes, const NSDictionary& facts) {
    const auto text = [&](const char16_t* key) { return facts.objectForKey(key).string(); };
    const auto setDate = [&](const char* name, const char16_t* key) {
        if (const NSDate* const date = facts.objectForKey(key).dateIfAny())
            attributes.setDate(name, *date);
    };
    attributes.set("kMDItemTitle", text(NSTitleDocumentAttribute));
    attributes.set("kMDItemAuthors", namesIn(text(NSAuthorDocumentAttribute)));
    attributes.set("kMDItemEditors", namesIn(text(NSEditorDocumentAttribute)));
    if (const NSArray keywords = facts.objectForKey(NSKeywordsDocumentAttribute).array(); !keywords.isNil())
        attributes.set("kMDItemKeywords", keywords);
    attributes.set("kMDItemSubject", text(NSSubjectDocumentAttribute));
    attributes.set("kMDItemComment", text(NSCommentDocumentAttribute));
    attributes.set("kMDItemCopyright", text(NSCopyrightDocumentAttribute));
    attributes.set("kMDItemOrganizations", namesIn(text(NSCompanyDocumentAttribute)));
    setDate("kMDItemContentCreationDate", NSCreationTimeDocumentAttribute);
    setDate("kMDItemContentModificationDate", NSModificationTimeDocumentAttribute);
}

} // namespace

void importRichText(Attributes& attributes) {
    const RequestNotes notes;
    NSDictionary facts;
    std::string_view file = attributes.file();
    if (attributes.contentType() == "com.apple.rtfd" && file.empty())
        file = textInPackage(attributes);
    const NSAttributedString text = read(file, facts);
    if (text.isNil()) {
        attributes.note(MDNoteBroken, notes.sentence().isNil() ? "it is no rich text"
                                                               : notes.sentence().UTF8String().c_str());
        return;
    }
    setFacts(attributes, facts);
    setCount(attributes, "kMDItemNumberOfPages", file, "\\nofpages");
    setCount(attributes, "plumwick_wordCount", file, "\\nofwords");
    std::u16string units(text.string().characters());
    std::erase(units, attachmentUnit);
    std::ranges::replace(units, lineSeparator, u'\n');
    attributes.setText(units);
}

} // namespace kelvo::importers
