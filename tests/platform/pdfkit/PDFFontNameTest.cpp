#include "platform/pdfkit/PDFFontName.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

TEST(PDFFontNameTest, FamilyAndStyle) {
    struct Row {
        std::u16string name;
        const char* font;
    };
    const Row rows[] = {
        {u"Helvetica", "Helvetica"},
        {u"Helvetica-BoldOblique", "Helvetica bold italic"},
        {u"ABCDEF+Arial-ItalicMT", "Arial italic"},
        {u"ABCDE+Arial", "ABCDE+Arial"},
        {u"ArialMT", "Arial"},
        {u"Arial,Bold", "Arial bold"},
        {u"TimesNewRomanPS-BoldMT", "Times New Roman bold"},
        {u"TimesNewRomanPSMT", "Times New Roman"},
        {u"MyriadPro-Semibold", "Myriad Pro bold"},
        {u"MyriadPro-It", "Myriad Pro italic"},
        {u"Didot-Italian", "Didot"},
        {u"CalibriBold", "Calibri bold"},
        {u"DejaVuSansMono", "DejaVu Sans Mono fixed"},
        {u"CourierNewPSMT", "Courier New fixed"},
        {u"Monotype", "Monotype"},
        {u"Kobold-Regular", "Kobold"},
        {u"", "Helvetica"},
        {u"-Bold", "Helvetica bold"},
        {std::u16string(1000, u'x'), "xxx"},
    };
    for (const Row& row : rows) {
        const NSFont font = fontWithPDFName(row.name, 9);
        std::string facts = font.familyName.UTF8String() + (font.isBold ? " bold" : "") +
                            (font.isItalic ? " italic" : "") + (font.isFixedPitch ? " fixed" : "");
        if (facts == std::string(256, 'x'))
            facts = "xxx";
        EXPECT_EQ(facts, row.font) << NSString(row.name).UTF8String();
        EXPECT_EQ(font.pointSize, 9);
    }
}

} // namespace
} // namespace kelvo
