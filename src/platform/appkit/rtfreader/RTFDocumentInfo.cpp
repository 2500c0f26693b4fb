#include "platform/appkit/rtfreader/RTFDocumentInfo.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace kelvo {
namespace {

/// Writers that know of no date state this year, the first one of file times.
constexpr std::int32_t firstFileTimeYear = 1601;

/// What documents of other writers count as.
constexpr std::int32_t versionOfOthers = 80;

Value points(std::int32_t twips) {
    return NSNumber::numberWithDouble(twips / 20.0);
}

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && text.front() <= u' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() <= u' ')
        text.remove_suffix(1);
    return text;
}

NSArray keywords(std::u16string_view text) {
    std::vector<Value> words;
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(u','), text.size());
        const std::u16string_view word = trimmed(text.substr(0, comma));
        if (!word.empty())
            words.push_back(NSString(word));
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return NSArray::arrayWithValues(std::move(words));
}

struct Text {
    std::string_view word;
    const char16_t* key;
    /// Another word states the same and is made for it: that one wins.
    bool isSecondChoice = false;
};

constexpr Text texts[] = {
    {"title", NSTitleDocumentAttribute},           {"subject", NSSubjectDocumentAttribute},
    {"author", NSAuthorDocumentAttribute},         {"manager", NSManagerDocumentAttribute},
    {"company", NSCompanyDocumentAttribute},       {"copyright", NSCopyrightDocumentAttribute},
    {"category", NSCategoryDocumentAttribute},     {"editor", NSEditorDocumentAttribute},
    {"operator", NSEditorDocumentAttribute, true}, {"doccomm", NSCommentDocumentAttribute},
    {"comment", NSCommentDocumentAttribute, true},
};

template <auto member>
void setNumber(RTFDocumentInfo& info, const RTFToken& token) {
    info.*member = token.parameter;
}

} // namespace

void RTFTime::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFTime> words[] = {
        {"yr", [](RTFTime& time, const RTFToken& word) { time.year_ = word.parameter; }},
        {"mo", [](RTFTime& time, const RTFToken& word) { time.month_ = word.parameter; }},
        {"dy", [](RTFTime& time, const RTFToken& word) { time.day_ = word.parameter; }},
        {"hr", [](RTFTime& time, const RTFToken& word) { time.hour_ = word.parameter; }},
        {"min", [](RTFTime& time, const RTFToken& word) { time.minute_ = word.parameter; }},
        {"sec", [](RTFTime& time, const RTFToken& word) { time.second_ = word.parameter; }},
        {"timesinceref",
         [](RTFTime& time, const RTFToken& word) { time.sinceReferenceDate_ = word.parameter; }},
    };
    applyRTFWord<RTFTime>(words, *this, token);
}

std::optional<NSDate> RTFTime::date() const {
    if (sinceReferenceDate_)
        return NSDate::dateWithTimeIntervalSinceReferenceDate(*sinceReferenceDate_);
    if (year_ <= firstFileTimeYear || year_ > 9999)
        return std::nullopt;
    std::tm parts{};
    parts.tm_year = year_ - 1900;
    parts.tm_mon = std::clamp(month_, 1, 12) - 1;
    parts.tm_mday = std::clamp(day_, 1, 31);
    parts.tm_hour = std::clamp(hour_, 0, 23);
    parts.tm_min = std::clamp(minute_, 0, 59);
    parts.tm_sec = std::clamp(second_, 0, 60);
    parts.tm_isdst = -1;
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(std::mktime(&parts)));
}

std::span<const RTFWord<RTFDocumentInfo>> RTFDocumentInfo::words() {
    using Info = RTFDocumentInfo;
    static constexpr RTFWord<Info> words[] = {
        {"cocoartf", [](Info& info, const RTFToken& token) { info.version_ = token.parameter; }},
        {"cocoatextscaling", setNumber<&Info::textScaling_>},
        {"paperw", setNumber<&Info::paperWidth_>},
        {"paperh", setNumber<&Info::paperHeight_>},
        {"margl", setNumber<&Info::leftMargin_>},
        {"margr", setNumber<&Info::rightMargin_>},
        {"margt", setNumber<&Info::topMargin_>},
        {"margb", setNumber<&Info::bottomMargin_>},
        {"vieww", setNumber<&Info::viewWidth_>},
        {"viewh", setNumber<&Info::viewHeight_>},
        {"deftab", setNumber<&Info::tabInterval_>},
        {"hyphauto",
         [](Info& info, const RTFToken& token) {
             info.isHyphenated_ = !token.hasParameter || token.parameter != 0;
         }},
        {"hyphfactor",
         [](Info& info, const RTFToken& token) {
             info.hyphenationPercent_ = std::clamp(token.parameter, 0, 100);
         }},
        {"viewkind",
         [](Info& info, const RTFToken& token) {
             info.stated_.setObject_forKey(NSNumber::numberWithInt(token.parameter == 1 ? 1 : 0),
                                           NSViewModeDocumentAttribute);
         }},
        {"viewscale",
         [](Info& info, const RTFToken& token) {
             info.stated_.setObject_forKey(NSNumber::numberWithDouble(token.parameter),
                                           NSViewZoomDocumentAttribute);
         }},
    };
    return words;
}

void RTFDocumentInfo::setText(std::string_view word, std::u16string_view text) {
    if (trimmed(text).empty())
        return;
    if (word == "keywords") {
        const NSArray words = keywords(text);
        if (words.count() > 0)
            stated_.setObject_forKey(words, NSKeywordsDocumentAttribute);
        return;
    }
    const auto row = std::ranges::find(texts, word, &Text::word);
    if (row != std::end(texts) && (!row->isSecondChoice || stated_.objectForKey(row->key).isNil()))
        stated_.setObject_forKey(NSString(text), row->key);
}

void RTFDocumentInfo::setGenerator(std::u16string_view name) {
    leavesOutInherited_ = name.starts_with(u"LibreOffice");
}

void RTFDocumentInfo::setTime(std::string_view word, const RTFTime& time) {
    if (const std::optional<NSDate> date = time.date())
        stated_.setObject_forKey(*date, word == "creatim" ? NSCreationTimeDocumentAttribute
                                                          : NSModificationTimeDocumentAttribute);
}

NSDictionary RTFDocumentInfo::documentAttributes(bool isPackage) const {
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    result.setObject_forKey(isPackage ? NSRTFDTextDocumentType : NSRTFTextDocumentType,
                            NSDocumentTypeDocumentAttribute);
    result.setObject_forKey(isPackage ? u"com.apple.rtfd" : u"public.rtf", NSUTIDocumentAttribute);
    result.setObject_forKey(NSNumber::numberWithInt(version_.value_or(versionOfOthers)),
                            NSCocoaVersionDocumentAttribute);
    const auto size = [](std::int32_t width, std::int32_t height) {
        return NSSize{static_cast<float>(width) / 20, static_cast<float>(height) / 20};
    };
    result.setObject_forKey(size(paperWidth_, paperHeight_), NSPaperSizeDocumentAttribute);
    result.setObject_forKey(points(leftMargin_), NSLeftMarginDocumentAttribute);
    result.setObject_forKey(points(rightMargin_), NSRightMarginDocumentAttribute);
    result.setObject_forKey(points(topMargin_), NSTopMarginDocumentAttribute);
    result.setObject_forKey(points(bottomMargin_), NSBottomMarginDocumentAttribute);
    if (viewWidth_ > 0 && viewHeight_ > 0)
        result.setObject_forKey(size(viewWidth_, viewHeight_), NSViewSizeDocumentAttribute);
    result.setObject_forKey(points(tabInterval_), NSDefaultTabIntervalDocumentAttribute);
    result.setObject_forKey(NSNumber::numberWithDouble(isHyphenated_ ? hyphenationPercent_ / 100.0 : 0),
                            NSHyphenationFactorDocumentAttribute);
    result.setObject_forKey(NSNumber::numberWithInt(textScaling_), NSTextScalingDocumentAttribute);
    for (const auto& [key, value] : stated_)
        result.setObject_forKey(value, key);
    return result;
}

} // namespace kelvo
