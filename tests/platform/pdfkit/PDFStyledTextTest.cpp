#include "platform/pdfkit/PDFStyledText.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/pdfkit/PDFEngineMessages.h"
#include "support/AttributedText.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace kelvo {
namespace {

using namespace pdfengine;
using namespace std::string_literals;

NSMutableDictionary styledText(const std::string& runs, double size = 12) {
    const auto style = [size](int color) {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{u"Times-Roman", fontNameKey},
             {NSNumber::numberWithDouble(size), fontSizeKey},
             {NSNumber::numberWithInt(color), colorKey},
             {NSNumber::numberWithBool(color == 0), underlinedKey}});
    };
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{u"text", textKey},
         {NSArray::arrayWithObjects({style(0x0000FF), style(0)}), stylesKey},
         {NSData::dataWithBytes(runs), runsKey}});
}

/// "nonsense" when it is not taken.
std::string read(const NSDictionary& page) {
    try {
        return tests::describe(attributedStringOfStyledText(page));
    } catch (const NSException&) {
        return "nonsense";
    }
}

TEST(PDFStyledTextTest, OnlyWholeAnswersAreTaken) {
    const std::string whole = "\1\0\0\0\0\0\0\0\3\0\0\0\1\0\0\0"s;
    EXPECT_EQ(read(styledText(whole)), "{#0000ff:t}{under:ext}");
    EXPECT_EQ(read(styledText(whole, 11.9996)), "{#0000ff:t}{under:ext}");
    EXPECT_EQ(read(styledText(whole, -1)), "{#0000ff:t}{under:ext}");
    for (const char16_t* key : {textKey, stylesKey, runsKey}) {
        NSMutableDictionary page = styledText(whole);
        page.removeObjectForKey(key);
        EXPECT_EQ(read(page), "nonsense") << NSString(key).UTF8String();
    }
    struct Row {
        const char* name;
        std::string runs;
    };
    const Row rows[] = {
        {"none", ""},
        {"half a run", "\4\0\0\0"s},
        {"too short", "\3\0\0\0\0\0\0\0"s},
        {"too long", "\1\0\0\0\0\0\0\0\4\0\0\0\1\0\0\0"s},
        {"beyond all numbers", "\1\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\0\0\0\0"s},
        {"no such style", "\4\0\0\0\2\0\0\0"s},
    };
    for (const Row& row : rows)
        EXPECT_EQ(read(styledText(row.runs)), "nonsense") << row.name;
    NSMutableDictionary empty = styledText("");
    empty.setObject_forKey(u"", textKey);
    EXPECT_EQ(read(empty), "(nil)");
}

} // namespace
} // namespace kelvo
