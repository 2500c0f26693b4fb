#include "markup/MarkupDecoding.h"

#include "markup/CharsetLabels.h"
#include "markup/CzechCodePages.h"
#include "markup/Entities.h"
#include "markup/MarkupCharset.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/EncodingConverters.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>

namespace kelvo {

namespace {

// Encodings without a small number.
constexpr NSStringEncoding numberedAs(CFStringEncoding encoding) {
    return 0x80000000 | encoding;
}
constexpr NSStringEncoding big5Encoding = numberedAs(kCFStringEncodingBig5);
constexpr NSStringEncoding big5HKSCSEncoding = numberedAs(kCFStringEncodingBig5_HKSCS_1999);
constexpr NSStringEncoding simplifiedChineseEncoding = numberedAs(kCFStringEncodingEUC_CN);

constexpr CFStringEncoding otherJapaneseEncodings[] = {
    kCFStringEncodingShiftJIS,      kCFStringEncodingShiftJIS_X0213, kCFStringEncodingMacJapanese,
    kCFStringEncodingDOSJapanese,   kCFStringEncodingJIS_X0201_76,   kCFStringEncodingJIS_X0208_83,
    kCFStringEncodingJIS_X0208_90,  kCFStringEncodingJIS_X0212_90,   kCFStringEncodingJIS_C6226_78,
    kCFStringEncodingEUC_JP,        kCFStringEncodingISO_2022_JP,    kCFStringEncodingISO_2022_JP_1,
    kCFStringEncodingISO_2022_JP_2, kCFStringEncodingISO_2022_JP_3,
};
constexpr CFStringEncoding otherChineseEncodings[] = {
    kCFStringEncodingEUC_TW, kCFStringEncodingGB_2312_80, kCFStringEncodingHZ_GB_2312,
    kCFStringEncodingGBK_95, kCFStringEncodingBig5,       kCFStringEncodingBig5_HKSCS_1999,
    kCFStringEncodingBig5_E,
};

// A pass for which there is no memory has no result; another may need less.
template <typename Make>
NSString nilWithoutMemory(Make make) {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const NSException&) {
        return nullptr;
    }
}

// The first units of the text, as many as fit into `capacity`; nil when there are none.
NSString decoded(const NSData& data, CFStringEncoding encoding, std::size_t capacity) {
    return nilWithoutMemory([&] {
        NSMutableString text = NSMutableString::stringWithCapacity(capacity);
        std::size_t length = 0;
        convertEncodingToUnicode(data.bytes().data(), data.length(), encoding, text.mutableCharacters(),
                                 capacity, &length);
        text.setLength(length);
        return length == 0 ? NSString() : text.takeString();
    });
}

NSString decoded(const NSData& data, CFStringEncoding encoding) {
    constexpr std::size_t smallestCapacity = 32;
    return decoded(data, encoding, std::max(data.length(), smallestCapacity));
}

NSString decodedIn(const NSData& data, NSStringEncoding encoding) {
    switch (encoding) {
    case NSKamenickyStringEncoding:
        return nilWithoutMemory([&] { return XmlExtensions::initWithKamenickyData(data); });
    case NSKOI8CS2StringEncoding:
        // Not cut off where it passes the bytes, as it does with every "ch".
        return nilWithoutMemory([&] { return XmlExtensions::initWithKoi8cs2Data(data); });
    default:
        return decoded(data, CFStringConvertNSStringEncodingToEncoding(encoding));
    }
}

// What a document declares when it is read in an encoding that nobody asked for. Such a text is of no use
// when the document declares another, and most say so at their beginning: browsers look for it in the first
// 1,024 bytes. Nil when the beginning cannot tell.
NSString charsetOfBeginning(const NSData& data, NSStringEncoding encoding) {
    constexpr std::size_t beginningLength = 1024;
    if (data.length() < 4 * beginningLength)
        return nullptr;
    return markupCharsetOfBeginning(
        decoded(data, CFStringConvertNSStringEncodingToEncoding(encoding), beginningLength));
}

bool isCzech(NSStringEncoding encoding) {
    return encoding == NSKamenickyStringEncoding || encoding == NSKOI8CS2StringEncoding;
}

std::size_t countOfReplacements(const NSString& text) {
    constexpr UnitsToFind replacement{{u'\uFFFD', u'\uFFFD', u'\uFFFD', u'\uFFFD'}, 1};
    return countUnitsEqualTo(text.characters().data(), text.length(), replacement);
}

// Between the text in the encoding that was asked for and the one in the declared encoding. Nothing is
// counted before it matters, as the counts pass the whole text.
NSString betterText(const NSString& asked, NSStringEncoding askedEncoding, const NSString& declared,
                    NSStringEncoding declaredEncoding) {
    const std::size_t lost = isCzech(declaredEncoding) ? 0 : countOfReplacements(declared);
    if (lost > 0)
        return lost > countOfReplacements(asked) ? asked : declared;
    // Single bytes always decode. Where the protocol said UTF-8 and it is UTF-8, a meta tag that says
    // otherwise was left behind by an editor.
    const bool isSingleByte =
        declaredEncoding == NSISOLatin1StringEncoding || declaredEncoding == NSWindowsCP1251StringEncoding;
    const bool isUTF8 = askedEncoding == NSUTF8StringEncoding && isSingleByte &&
                        declared.length() > asked.length() && countOfReplacements(asked) == 0;
    return isUTF8 ? asked : declared;
}

NSString firstDecoded(const NSData& data, std::span<const CFStringEncoding> encodings) {
    for (CFStringEncoding encoding : encodings)
        if (NSString text = decoded(data, encoding); !text.isNil())
            return text;
    return nullptr;
}

} // namespace

namespace XmlExtensions {

NSString stringWithMarkupData_encodingName_defaultEncoding_URL(const NSData& data,
                                                               const NSString& encodingName,
                                                               NSStringEncoding defaultEncoding,
                                                               const NSURL&) {
    if (data.isEmpty())
        return NSString::string();
    const NSStringEncoding named =
        encodingName.isEmpty() ? kCFStringEncodingInvalidId : NSEncodingFromName(encodingName);
    const bool isExplicit = named != 0 && named != kCFStringEncodingInvalidId;
    NSStringEncoding asked = isExplicit ? named : defaultEncoding;
    const NSString charset = isExplicit ? NSString() : charsetOfBeginning(data, asked);
    NSString first = charset.isNil() ? decodedIn(data, asked) : NSString();
    const NSStringEncoding declared =
        charset.isNil() ? markupEncoding(first) : charset2NSStringEncoding(charset);
    const auto firstText = [&] { return first.isNil() ? decodedIn(data, asked) : first; };
    if (declared == asked || declared == NSASCIIStringEncoding || declared == kCFStringEncodingInvalidId)
        return firstText();

    bool mayBeFirst = true;
    if (declared == NSWindowsCP1251StringEncoding && !(isExplicit && asked == NSUTF8StringEncoding)) {
        mayBeFirst = false;
        asked = NSWindowsCP1250StringEncoding;
    } else if (declared == big5Encoding) {
        mayBeFirst = false;
        asked = big5HKSCSEncoding;
    }
    // What nobody asked for loses to any other text, so that its storage can serve the next decoding; only
    // when that gives nothing is it made again.
    if (!mayBeFirst || !isExplicit)
        first = nullptr;
    if (const NSString second = decodedIn(data, declared); !second.isNil())
        return first.isNil() ? second : betterText(first, asked, second, declared);

    NSString other;
    if (declared == NSShiftJISStringEncoding)
        other = firstDecoded(data, otherJapaneseEncodings);
    else if (declared == simplifiedChineseEncoding)
        other = firstDecoded(data, otherChineseEncodings);
    else if (mayBeFirst)
        other = firstText();
    if (other.isNil() && asked != declared)
        other = nilWithoutMemory([&] { return stringWithData_encoding(data, asked); });
    if (other.isNil() && defaultEncoding != declared && defaultEncoding != asked)
        other = nilWithoutMemory([&] { return stringWithData_encoding(data, defaultEncoding); });
    return other;
}

NSString stringWithMarkupData_defaultEncoding(const NSData& data, NSStringEncoding defaultEncoding) {
    return stringWithMarkupData_encodingName_defaultEncoding_URL(data, nullptr, defaultEncoding, NSURL());
}

NSString stringWithMarkupData_contentType_defaultEncoding(const NSData& data, const NSString& contentType,
                                                          NSStringEncoding defaultEncoding) {
    return stringWithMarkupData_encodingName_defaultEncoding_URL(data, headerCharset(contentType),
                                                                 defaultEncoding, NSURL());
}

} // namespace XmlExtensions

NSData markupData(const NSString& markup, NSStringEncoding* usedEncoding) {
    NSStringEncoding encoding = NSASCIIStringEncoding;
    NSData data = NSData::data();
    if (!markup.isEmpty()) {
        const NSStringEncoding declared = markupEncoding(markup);
        if (declared != kCFStringEncodingInvalidId)
            encoding = declared;
        data = dataUsingEncoding(
            declared != kCFStringEncodingInvalidId ? markup : stringByConvertingCharactersToEntities(markup),
            encoding);
    }
    if (usedEncoding)
        *usedEncoding = encoding;
    return data;
}

NSData markupData(const NSString& markup) {
    return markupData(markup, nullptr);
}

} // namespace kelvo
