#include "platform/appkit/rtfreader/RTFDocumentInfo.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfreader/RTFScanner.h"
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

const char16_t* keyOfText(RTFWord word) {
    switch (word) {
    case RTFWord::title:
        return NSTitleDocumentAttribute;
    case RTFWord::subject:
        return NSSubjectDocumentAttribute;
    case RTFWord::author:
        return NSAuthorDocumentAttribute;
    case RTFWord::manager:
        return NSManagerDocumentAttribute;
    case RTFWord::company:
        return NSCompanyDocumentAttribute;
    case RTFWord::copyright:
        return NSCopyrightDocumentAttribute;
    case RTFWord::category:
        return NSCategoryDocumentAttribute;
    case RTFWord::operator_:
    case RTFWord::editor:
        return NSEditorDocumentAttribute;
    default:
        return NSCommentDocumentAttribute;
    }
}

} // namespace

void RTFTime::apply(RTFWord word, const RTFToken& token) {
    switch (word) {
    case RTFWord::yr:
        year_ = token.parameter;
        break;
    case RTFWord::mo:
        month_ = token.parameter;
        break;
    case RTFWord::dy:
        day_ = token.parameter;
        break;
    case RTFWord::hr:
        hour_ = token.parameter;
        break;
    case RTFWord::min:
        minute_ = token.parameter;
        break;
    case RTFWord::sec:
        second_ = token.parameter;
        break;
    default:
        sinceReferenceDate_ = token.parameter;
        break;
    }
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

void RTFDocumentInfo::apply(RTFWord word, const RTFToken& token) {
    const std::int32_t number = token.parameter;
    switch (word) {
    case RTFWord::cocoartf:
        version_ = number;
        break;
    case RTFWord::cocoatextscaling:
        textScaling_ = number;
        break;
    case RTFWord::paperw:
        paperWidth_ = number;
        break;
    case RTFWord::paperh:
        paperHeight_ = number;
        break;
    case RTFWord::margl:
        leftMargin_ = number;
        break;
    case RTFWord::margr:
        rightMargin_ = number;
        break;
    case RTFWord::margt:
        topMargin_ = number;
        break;
    case RTFWord::margb:
        bottomMargin_ = number;
        break;
    case RTFWord::vieww:
        viewWidth_ = number;
        break;
    case RTFWord::viewh:
        viewHeight_ = number;
        break;
    case RTFWord::deftab:
        tabInterval_ = number;
        break;
    case RTFWord::hyphauto:
        isHyphenated_ = !token.hasParameter || number != 0;
        break;
    case RTFWord::hyphfactor:
        hyphenationPercent_ = std::clamp(number, 0, 100);
        break;
    case RTFWord::viewkind:
        stated_.setObject_forKey(NSNumber::numberWithInt(number == 1 ? 1 : 0), NSViewModeDocumentAttribute);
        break;
    case RTFWord::viewscale:
        stated_.setObject_forKey(NSNumber::numberWithDouble(number), NSViewZoomDocumentAttribute);
        break;
    default:
        break;
    }
}

void RTFDocumentInfo::setText(RTFWord word, std::u16string_view text) {
    if (trimmed(text).empty())
        return;
    if (word == RTFWord::keywords) {
        const NSArray words = keywords(text);
        if (words.count() > 0)
            stated_.setObject_forKey(words, NSKeywordsDocumentAttribute);
        return;
    }
    const char16_t* const key = keyOfText(word);
    // Two words can state the comment, and two the editor: the one made for it wins.
    const bool isSecondChoice = word == RTFWord::comment || word == RTFWord::operator_;
    if (!isSecondChoice || stated_.objectForKey(key).isNil())
        stated_.setObject_forKey(NSString(text), key);
}

void RTFDocumentInfo::setTime(RTFWord word, const RTFTime& time) {
    if (const std::optional<NSDate> date = time.date())
        stated_.setObject_forKey(*date, word == RTFWord::creatim ? NSCreationTimeDocumentAttribute
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
