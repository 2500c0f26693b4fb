#include "platform/foundation/encodings/TextEncodingConverter.h"

#include "platform/foundation/encodings/EncodingTable.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace kelvo {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

struct Converted {
    OSStatus status = noErr;
    std::size_t read = 0;
    std::string bytes;
};

class Converter {
public:
    Converter(TextEncoding source, TextEncoding destination) {
        EXPECT_EQ(TECCreateConverter(&reference_, source, destination), noErr);
    }
    Converter(const Converter&) = delete;
    ~Converter() { EXPECT_EQ(TECDisposeConverter(reference_), noErr); }

    Converted convert(std::string_view input, std::size_t capacity) {
        Converted result;
        // A block of just that size, so that a write past it is seen.
        const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[capacity]);
        std::size_t written = 0;
        result.status = TECConvertText(reference_, reinterpret_cast<const std::uint8_t*>(input.data()),
                                       input.size(), &result.read, output.get(), capacity, &written);
        EXPECT_LE(written, capacity);
        result.bytes.assign(reinterpret_cast<const char*>(output.get()), written);
        return result;
    }
    void clear() { EXPECT_EQ(TECClearConverterContextInfo(reference_), noErr); }

private:
    TECObjectRef reference_ = nullptr;
};

std::string unitsAsBytes(std::u16string_view units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

const TextEncoding ucs2 = CreateTextEncoding(kTextEncodingUnicodeDefault, 0, kUnicode16BitFormat);
const TextEncoding utf8 = CreateTextEncoding(kTextEncodingUnicodeDefault, 0, kUnicodeUTF8Format);

TEST(TextEncodingConverter, Create) {
    EXPECT_EQ(ucs2, kCFStringEncodingUTF16);
    EXPECT_EQ(utf8, kCFStringEncodingUTF8);
    TECObjectRef converter = nullptr;
    EXPECT_NE(TECCreateConverter(&converter, 0x8, ucs2), noErr);
    EXPECT_EQ(converter, nullptr);
    EXPECT_NE(TECCreateConverter(&converter, ucs2, kCFStringEncodingMacKhmer), noErr);
    EXPECT_NE(TECCreateConverter(nullptr, utf8, ucs2), noErr);
    EXPECT_NE(TECClearConverterContextInfo(nullptr), noErr);
    EXPECT_NE(TECDisposeConverter(nullptr), noErr);
    std::size_t read = 7;
    EXPECT_NE(TECConvertText(nullptr, nullptr, 0, &read, nullptr, 0, nullptr), noErr);
    EXPECT_EQ(read, 0u);
}

TEST(TextEncodingConverter, AsMuchAsFits) {
    using Row = std::tuple<const char*, TextEncoding, TextEncoding, std::string, std::size_t, OSStatus,
                           std::size_t, std::string>;
    const Row rows[] = {
        {"fits", utf8, ucs2, "a\xC3\xA4", 4, noErr, 3, unitsAsBytes(u"a\u00E4")},
        {"odd room", utf8, ucs2, "ab", 3, kTECOutputBufferFullStatus, 1, unitsAsBytes(u"a")},
        {"no room for a pair", utf8, ucs2, "a\xF0\x9F\x98\x80", 4, kTECOutputBufferFullStatus, 1,
         unitsAsBytes(u"a")},
        {"nothing into nothing", utf8, ucs2, "", 0, noErr, 0, ""},
        {"cut off", utf8, ucs2, "a\xC3", 8, noErr, 2, unitsAsBytes(u"a\uFFFD")},
        {"file of 16-bit units", ucs2, ucs2, "\xFF\376a\0"s, 8, noErr, 4, unitsAsBytes(u"a")},
        {"units of this machine", ucs2, utf8, unitsAsBytes(u"\uFEFFa\u00E4\U0001F600"), 16, noErr, 10,
         "\xEF\xBB\277a\xC3\xA4\xF0\x9F\x98\x80"},
        {"unpaired surrogate", ucs2, utf8, unitsAsBytes(u"\xD800z"), 16, noErr, 4, "\xEF\xBF\xBDz"},
        {"Latin to Cyrillic", 0x201, 0x502, "a\xE9\xDF", 3, noErr, 3, "ae?"},
        {"closing escape", utf8, 0x820, "\xE4\xBA\x9C", 16, noErr, 3, "\x1B$B0!\x1B(B"},
    };
    for (const auto& [name, source, destination, input, capacity, status, read, output] : rows) {
        SCOPED_TRACE(name);
        Converter converter(source, destination);
        for (int time = 0; time < 2; ++time) {
            converter.clear();
            const Converted result = converter.convert(input, capacity);
            EXPECT_EQ(result.status, status);
            EXPECT_EQ(result.read, read);
            EXPECT_EQ(result.bytes, output);
        }
    }
    // No room for the next character: what fits is whole.
    Converter converter(ucs2, utf8);
    EXPECT_EQ(converter.convert(unitsAsBytes(u"a\u20AC"), 3).bytes, "a");
}

TEST(TextEncodingConverter, OutputNeedNotBeAligned) {
    TECObjectRef converter = nullptr;
    ASSERT_EQ(TECCreateConverter(&converter, utf8, ucs2), noErr);
    alignas(2) std::uint8_t output[9] = {};
    std::size_t written = 0;
    EXPECT_EQ(TECConvertText(converter, reinterpret_cast<const std::uint8_t*>("abc"), 3, nullptr, output + 1,
                             8, &written),
              noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(output) + 1, written), unitsAsBytes(u"abc"));
    TECDisposeConverter(converter);
}

// One byte stands for two characters, which reached the encoder apart when the room was nearly used up.
TEST(TextEncodingConverter, SequencesStayTogether) {
    const std::string input = "\x81\xC0\xEC\x81\x9A\xC0\xC0";
    Converter atOnce(kCFStringEncodingMacHebrew, kCFStringEncodingMacHebrew);
    EXPECT_EQ(atOnce.convert(input, 256).bytes, input);
    Converter piecewise(kCFStringEncodingMacHebrew, kCFStringEncodingMacHebrew);
    std::string joined;
    for (std::size_t position = 0, step = 0; step < 64 && joined.size() < input.size(); ++step) {
        const Converted piece = piecewise.convert(std::string_view(input).substr(position), 1);
        joined += piece.bytes;
        position += piece.read;
    }
    EXPECT_EQ(joined, input);
    // The beginning of a sequence alone, which the encoding does not have.
    Converter alone(ucs2, kCFStringEncodingMacHebrew);
    EXPECT_EQ(alone.convert(unitsAsBytes(u"\u05F2"), 8).bytes, "?");
}

// Piece by piece gives the same text as at once, whatever the encoding and the bytes.
TEST(TextEncodingConverter, SmallOutputsLoseNothing) {
    std::istringstream words(
        "\x1B$B \x1B(B \x1B$(D \x1B$)C \x0E \x0F ~{ ~} + - &AOQ- \\u20ac \xF0\x9F\x98\x80 \xD8\x3D\xDE\x01 "
        "\x95\x32\x82\x36 0! \xB0\xA1 \x88\x9F \x82\xF5 \x88\x62 a");
    const std::vector<std::string> parts{std::istream_iterator<std::string>(words), {}};
    std::mt19937 random(11);
    for (const EncodingRow& row : encodingTable()) {
        if (row.kind == EncodingRow::Kind::None)
            continue;
        SCOPED_TRACE(row.name);
        for (int round = 0; round < 60; ++round) {
            std::string input;
            for (std::size_t count = random() % 24; count > 0; --count)
                if (random() % 3 == 0)
                    input.push_back(static_cast<char>(random()));
                else
                    input += parts[random() % parts.size()];
            for (TextEncoding destination : {ucs2, utf8, TextEncoding(kCFStringEncodingISO_2022_JP)}) {
                Converter atOnce(row.encoding, destination);
                const Converted whole = atOnce.convert(input, input.size() * 16 + 64);
                ASSERT_EQ(whole.status, noErr);
                ASSERT_EQ(whole.read, input.size());
                Converter piecewise(row.encoding, destination);
                std::string joined;
                std::size_t position = 0;
                for (int step = 0;; ++step) {
                    ASSERT_LT(step, 4000);
                    const Converted piece =
                        piecewise.convert(std::string_view(input).substr(position), random() % 14);
                    joined += piece.bytes;
                    position += piece.read;
                    if (piece.status == noErr)
                        break;
                    ASSERT_EQ(piece.status, kTECOutputBufferFullStatus);
                }
                ASSERT_EQ(position, input.size());
                ASSERT_EQ(joined, whole.bytes);
            }
        }
    }
}

} // namespace
} // namespace kelvo
