#include "markup/CharsetLabels.h"
#include "markup/MarkupCharset.h"
#include "markup/MarkupDecoding.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using namespace kelvo;

namespace {

const NSString labels[] = {nullptr,        u"utf-8",   u"latin1",       u"us-ascii", u"windows-1251",
                           u"big5",        u"x-sjis",  u"gbk",          u"utf-16",   u"mac-hebrew",
                           u"iso-2022-jp", u"kam-cs",  u"windows-1255", u"euc-cn",   u"iso-2022-jp-3",
                           u"martian",     u"koi8-cs2"};
constexpr NSStringEncoding defaults[] = {NSISOLatin1StringEncoding, NSUTF8StringEncoding,
                                         NSUnicodeStringEncoding, NSWindowsCP1251StringEncoding,
                                         kCFStringEncodingInvalidId};

NSString decoded(const std::string& bytes, NSStringEncoding encoding) {
    const auto codec = makeTextCodec(CFStringConvertNSStringEncodingToEncoding(encoding));
    if (!codec)
        return nullptr;
    // The letter "ch" is not cut off.
    const std::size_t most = bytes.size() * (encoding == NSKOI8CS2StringEncoding ? 2 : 1);
    std::vector<char16_t> units(std::max<std::size_t>(most, 32));
    const auto length = codec
                            ->decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                                     units.data(), units.size())
                            .unitsWritten;
    return length == 0 ? NSString() : NSString(std::u16string_view(units.data(), length));
}

// Both texts made whole and compared as the rules say, for what they say without their last resorts.
bool isRight(const std::string& bytes, const NSString& label, NSStringEncoding defaultEncoding,
             const NSString& result) {
    const NSStringEncoding named = NSEncodingFromName(label);
    const bool isNamed = named != kCFStringEncodingInvalidId;
    const NSStringEncoding asked = isNamed ? named : defaultEncoding;
    const NSString first = decoded(bytes, asked);
    const NSStringEncoding declared = markupEncoding(first);
    if (declared == asked || declared == NSASCIIStringEncoding || declared == kCFStringEncodingInvalidId)
        return result == first;
    const NSString second = decoded(bytes, declared);
    if (second.isNil())
        return !result.isNil();
    const auto losses = [](const NSString& text) {
        return std::count(text.characters().begin(), text.characters().end(), u'\uFFFD');
    };
    const bool isUTF8 = isNamed && asked == NSUTF8StringEncoding;
    const bool isRussian = declared == NSWindowsCP1251StringEncoding;
    const bool isDiscarded =
        !isNamed || (isRussian && !isUTF8) || declared == (0x80000000 | kCFStringEncodingBig5);
    if (isDiscarded)
        return result == second;
    const bool isCzech = declared == NSKamenickyStringEncoding || declared == NSKOI8CS2StringEncoding;
    if (!isCzech && losses(second) > 0)
        return result == (losses(second) > losses(first) ? first : second);
    const bool keepsFirst = losses(first) == 0 && isUTF8 &&
                            (isRussian || declared == NSISOLatin1StringEncoding) &&
                            second.length() > first.length();
    return result == (keepsFirst ? first : second);
}

} // namespace

// The first byte chooses the label, the second the default and whether the page is a long one; the rest is
// the page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 8192)
        return 0;
    const NSLogCapture quiet;
    const NSString& label = labels[data[0] % std::size(labels)];
    const NSStringEncoding defaultEncoding = defaults[(data[1] & 0x7F) % std::size(defaults)];
    std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
    if (data[1] & 0x80)
        bytes.append(20000, 'x').append(bytes, 0, size - 2);
    const NSData page = NSData::dataWithBytes(bytes);
    const NSString text = XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
        page, label, defaultEncoding, {});
    if (page.isEmpty() ? text != u"" : !isRight(bytes, label, defaultEncoding, text))
        std::abort();

    if (markupData(text).isNil() && markupEncoding(text) == kCFStringEncodingInvalidId)
        std::abort();
    const NSString beginning = markupCharsetOfBeginning(text.substringToIndex(text.length() / 2));
    if (!text.isNil() && !beginning.isNil() && beginning != markupCharset(text))
        std::abort();
    XmlExtensions::stringWithMarkupData_contentType_defaultEncoding(page, text, defaultEncoding);
    return 0;
}
