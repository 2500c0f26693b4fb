#include "platform/foundation/units/UTF8.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <random>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

// ICU is the slow reference.

std::u16string referenceUnits(std::string_view bytes, bool* hasErrors) {
    std::u16string units(bytes.size() + 1, u'\0');
    std::int32_t length = 0, errors = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(units.data(), static_cast<std::int32_t>(units.size()), &length, bytes.data(),
                         static_cast<std::int32_t>(bytes.size()), 0xFFFD, &errors, &status);
    units.resize(static_cast<std::size_t>(length));
    *hasErrors = errors > 0;
    return units;
}

std::string referenceBytes(std::u16string_view units) {
    std::string bytes(units.size() * 3 + 1, '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(bytes.data(), static_cast<std::int32_t>(bytes.size()), &length, units.data(),
                static_cast<std::int32_t>(units.size()), &status);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

/// In one piece, and in pieces of `room` units, which must join to the same.
void expectDecodedAsTheReference(std::string_view text, std::size_t room) {
    // Blocks of just that size, so that the sanitizers see what passes them.
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[text.size()]);
    std::copy(text.begin(), text.end(), bytes.get());
    bool hasErrors = false;
    const std::u16string expected = referenceUnits(text, &hasErrors);
    const std::unique_ptr<char16_t[]> units(new char16_t[text.size()]);
    const UTF8Decoding whole = decodeUTF8({bytes.get(), text.size()}, units.get(), text.size());
    ASSERT_EQ(std::u16string(units.get(), whole.unitsWritten), expected);
    ASSERT_EQ(whole.bytesRead, text.size());
    ASSERT_EQ(whole.hadErrors, hasErrors);

    const std::unique_ptr<char16_t[]> piece(new char16_t[room]);
    std::u16string joined;
    for (std::size_t read = 0; read < text.size();) {
        const UTF8Decoding part = decodeUTF8({bytes.get() + read, text.size() - read}, piece.get(), room);
        ASSERT_GT(part.bytesRead, 0u);
        read += part.bytesRead;
        joined.append(piece.get(), part.unitsWritten);
        ASSERT_FALSE(isLeadSurrogate(joined.back()));
    }
    ASSERT_EQ(joined, expected);
}

TEST(UTF8, EveryCharacterAsTheReference) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        std::uint8_t expected[4];
        char16_t expectedUnits[2];
        std::size_t length = 0, unitCount = 0;
        ASSERT_EQ(isSurrogate(character), U_IS_SURROGATE(character));
        if (isSurrogate(character))
            continue;
        U8_APPEND_UNSAFE(expected, length, character);
        U16_APPEND_UNSAFE(expectedUnits, unitCount, character);
        const std::string_view bytes(reinterpret_cast<const char*>(expected), length);
        std::string appended = "<";
        appendUTF8Character(appended, character);
        ASSERT_EQ(appended.substr(1), bytes) << std::hex << std::uint32_t(character);
        std::size_t index = 0;
        ASSERT_EQ(nextUTF8Character({expected, length}, index), character);
        ASSERT_EQ(index, length);
        char16_t units[2];
        ASSERT_EQ(writeCharacter(character, units), units + unitCount);
        ASSERT_EQ(std::u16string_view(units, unitCount), std::u16string_view(expectedUnits, unitCount));
        index = 0;
        ASSERT_EQ(nextCharacter({units, unitCount}, index), character);
        ASSERT_EQ(index, unitCount);
    }
}

TEST(UTF8, LongTextOfEveryCharacter) {
    std::u16string units;
    for (char32_t character = 1; character <= 0x10FFFF; ++character) {
        char16_t pair[2];
        if (!isSurrogate(character))
            units.append(pair, writeCharacter(character, pair));
    }
    const std::string expected = referenceBytes(units);
    std::string bytes(units.size() * 3, '\0');
    const UTF8Encoding encoding = encodeUTF8(units, reinterpret_cast<std::uint8_t*>(bytes.data()));
    EXPECT_EQ(encoding.unitsRead, units.size());
    bytes.resize(encoding.bytesWritten);
    ASSERT_TRUE(bytes == expected);
    expectDecodedAsTheReference(bytes, 4099);
}

TEST(UTF8, BrokenSequencesAtEveryPlaceOfABlock) {
    // Every first byte, with second bytes on both sides of each bound, and sequences cut off after each byte.
    constexpr std::string_view seconds = "A\x7F\x80\x8F\x90\x9F\xA0\xBF\xC2\xFF"sv;
    std::vector<std::string> broken = {"\xE4\xB8", "\xF0\x9F\x98", "\xF0\x9F\x98x", "\xE4\xB8\xC3",
                                       "\xEF\xBF\xBF"};
    for (unsigned first = 0x80; first <= 0xFF; ++first)
        for (const char second : seconds)
            for (const std::string_view rest : {""sv, "\x80"sv, "\xBF\xBF"sv})
                broken.push_back(std::string{static_cast<char>(first), second}.append(rest));
    std::mt19937 random(7);
    for (const std::string& sequence : broken)
        for (const std::string_view filler : {"x"sv, "\xC3\xA9"sv, "\xE4\xB8\xAD"sv, "\xF0\x9F\x98\x80"sv}) {
            // All places of a vector of 32 in turn, and runs that are long enough for one.
            const std::size_t before = random() % 70, after = random() % 40;
            std::string text;
            for (std::size_t count = before; count > 0; --count)
                text += filler;
            text += sequence;
            for (std::size_t count = after; count > 0; --count)
                text += filler;
            ASSERT_NO_FATAL_FAILURE(expectDecodedAsTheReference(text, 2 + random() % 40))
                << testing::PrintToString(sequence) << " between " << before << " and " << after;
        }
    for (std::size_t before = 0; before < 70; ++before)
        for (std::size_t after = 0; after < 20; ++after)
            for (const std::string_view sequence : {"\xFF"sv, "\xC3"sv, "\xE4\xB8"sv, "\xF0\x9F\x98\x80"sv})
                ASSERT_NO_FATAL_FAILURE(expectDecodedAsTheReference(
                    std::string(before, 'x').append(sequence).append(after, 'y'), 2 + before % 30));
}

TEST(UTF8, EncodingStopsAtASurrogateWithoutItsOtherHalf) {
    for (std::size_t before = 0; before < 70; ++before)
        for (const std::u16string_view filler : {u"x"sv, u"\u00E9"sv, u"\u4E2D"sv, u"\U0001F600"sv})
            for (const std::u16string_view half : {u"\xD800"sv, u"\xDBFF"sv, u"\xDC00"sv, u"\xDFFF"sv})
                for (const std::u16string_view after : {u""sv, u"y"sv, u"\xD83D\xDE00"sv}) {
                    std::u16string units;
                    for (std::size_t count = before; count > 0; --count)
                        units += filler;
                    const std::size_t whole = units.size();
                    const std::string expected = referenceBytes(units);
                    units.append(half).append(after);
                    std::string bytes(units.size() * 3, '\0');
                    const UTF8Encoding encoding =
                        encodeUTF8(units, reinterpret_cast<std::uint8_t*>(bytes.data()));
                    ASSERT_EQ(encoding.unitsRead, whole);
                    ASSERT_EQ(bytes.substr(0, encoding.bytesWritten), expected);
                }
}

} // namespace
} // namespace kelvo
