#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfwriter/RTFWriter.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/Value.h"

#include <cmath>
#include <ctime>
#include <optional>

namespace kelvo {
namespace {

class Attributes {
public:
    Attributes(const NSDictionary& attributes, RTFOutput& output)
        : attributes_(attributes), output_(output) {}

    void write() {
        writeInfo();
        writePage();
        output_.word("deftab", twips(NSDefaultTabIntervalDocumentAttribute).value_or(720));
        const std::optional<double> hyphenation = number(NSHyphenationFactorDocumentAttribute);
        if (hyphenation && *hyphenation > 0) {
            output_.word("hyphauto", 1);
            output_.word("hyphfactor", rtfNumber(*hyphenation, 100));
        }
        output_.raw("\n");
    }

private:
    std::optional<double> number(const char16_t* key) const {
        const NSNumber* const value = attributes_.objectForKey(key).numberIfAny();
        return value ? std::optional(value->doubleValue()) : std::nullopt;
    }
    std::optional<std::int32_t> twips(const char16_t* key) const {
        const std::optional<double> points = number(key);
        return points ? std::optional(rtfTwips(*points)) : std::nullopt;
    }

    void writeText(const char* source, const NSString& text) {
        if (text.isNil())
            return;
        output_.raw("\n{");
        output_.raw(source);
        output_.raw(" ");
        output_.string(text.characters());
        output_.raw("}");
    }

    void writeKeywords() {
        const Value& value = attributes_.objectForKey(NSKeywordsDocumentAttribute);
        if (value.isString())
            return writeText("\\keywords", value.string());
        std::u16string list;
        for (const Value& keyword : value.array()) {
            list += list.empty() ? u"" : u", ";
            list += keyword.string().characters();
        }
        if (!list.empty())
            writeText("\\keywords", NSString(std::u16string_view(list)));
    }

    void writeTime(const char* word, const char16_t* key) {
        const NSDate* const date = attributes_.objectForKey(key).dateIfAny();
        // What the platform counts in fits 32 bits, and no calendar is needed past them.
        if (!date || !(std::abs(date->timeIntervalSinceReferenceDate()) < 0x7FFFFFFF))
            return;
        const auto seconds = static_cast<std::int32_t>(std::lround(date->timeIntervalSinceReferenceDate()));
        const auto time =
            static_cast<std::time_t>(seconds + static_cast<std::int64_t>(NSTimeIntervalSince1970));
        std::tm parts = {};
        if (!::localtime_r(&time, &parts))
            return;
        output_.raw("\n{");
        output_.word(word);
        output_.word("yr", parts.tm_year + 1900);
        output_.word("mo", parts.tm_mon + 1);
        output_.word("dy", parts.tm_mday);
        output_.word("hr", parts.tm_hour);
        output_.word("min", parts.tm_min);
        output_.word("sec", parts.tm_sec);
        output_.word("timesinceref", seconds);
        output_.raw("}");
    }

    void writeInfo() {
        RTFOutput info;
        Attributes inner(attributes_, info);
        constexpr std::pair<const char16_t*, const char*> texts[] = {
            {NSTitleDocumentAttribute, "\\title"},           {NSSubjectDocumentAttribute, "\\subject"},
            {NSCommentDocumentAttribute, "\\doccomm"},       {NSAuthorDocumentAttribute, "\\author"},
            {NSEditorDocumentAttribute, "\\operator"},       {NSManagerDocumentAttribute, "\\manager"},
            {NSCategoryDocumentAttribute, "\\category"},     {NSCompanyDocumentAttribute, "\\*\\company"},
            {NSCopyrightDocumentAttribute, "\\*\\copyright"}};
        for (const auto& [key, source] : texts)
            inner.writeText(source, attributes_.objectForKey(key).string());
        inner.writeTime("creatim", NSCreationTimeDocumentAttribute);
        inner.writeTime("revtim", NSModificationTimeDocumentAttribute);
        inner.writeKeywords();
        if (info.size() == 0)
            return;
        output_.raw("{");
        output_.word("info");
        output_.words(info);
        output_.raw("}\n");
    }

    void writePage() {
        const std::size_t before = output_.size();
        const auto writeSize = [this](const char16_t* key, const char* width, const char* height) {
            if (const NSSize* const size = attributes_.objectForKey(key).sizeIfAny()) {
                output_.word(width, rtfTwips(size->width));
                output_.word(height, rtfTwips(size->height));
            }
        };
        writeSize(NSPaperSizeDocumentAttribute, "paperw", "paperh");
        constexpr std::pair<const char16_t*, const char*> margins[] = {
            {NSLeftMarginDocumentAttribute, "margl"},
            {NSRightMarginDocumentAttribute, "margr"},
            {NSTopMarginDocumentAttribute, "margt"},
            {NSBottomMarginDocumentAttribute, "margb"}};
        for (const auto& [key, word] : margins) {
            if (const auto margin = twips(key))
                output_.word(word, *margin);
        }
        writeSize(NSViewSizeDocumentAttribute, "vieww", "viewh");
        if (const auto mode = number(NSViewModeDocumentAttribute))
            output_.word("viewkind", rtfNumber(*mode, 1));
        if (const auto zoom = number(NSViewZoomDocumentAttribute))
            output_.word("viewscale", rtfNumber(*zoom, 1));
        if (output_.size() != before)
            output_.raw("\n");
    }

    const NSDictionary& attributes_;
    RTFOutput& output_;
};

} // namespace

void writeRTFDocumentAttributes(const NSDictionary& attributes, RTFOutput& output) {
    Attributes(attributes, output).write();
}

} // namespace kelvo
