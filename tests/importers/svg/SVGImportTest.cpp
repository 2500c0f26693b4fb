#include "importers/svg/SVGImport.h"

#include "support/Attributed.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;
using tests::one;

Attributed attributesOfSVG(const std::string& file) {
    return attributesOf(importSVG, file, "public.svg-image");
}

TEST(SVGImport, SetsWhatAPictureSays) {
    const std::string picture =
        "<?xml version='1.0' encoding='iso-8859-1'?>"
        "<svg xmlns='http://www.w3.org/2000/svg' width='1in' height='3pc'><title> A \n chart</title><desc>Of "
        "tides</desc>"
        "<metadata><rdf:RDF xmlns:rdf='r' xmlns:dc='d' xmlns:cc='c'><cc:Work><dc:title>other</dc:title>"
        "<dc:creator><cc:Agent><dc:title>Ada</dc:title></cc:Agent></dc:creator><dc:date>2020-02-29</dc:date>"
        "<dc:rights><cc:Agent><dc:title>Free</dc:title></cc:Agent></dc:rights>"
        "<dc:subject><rdf:Bag><rdf:li>sea</rdf:li><rdf:li>moon</rdf:li></rdf:Bag></dc:subject></cc:Work></"
        "rdf:RDF>"
        "</metadata><g><title>a tip</title><text>H\xF6"
        "he <tspan>in</tspan>  m<title>tip</title></text></g>"
        "<style>text{}</style><text>two<tspan x='1' dy='1'>lines</tspan></text></svg>";
    const Attributed expected{{"PixelWidth", "96"},
                              {"PixelHeight", "48"},
                              {"Title", "A chart"},
                              {"Description", "Of tides"},
                              {"Authors", "<Ada>"},
                              {"Rights", "Free"},
                              {"Keywords", "<sea><moon>"},
                              {"ContentCreationDate", "2020-02-29 05:00:00 +0000"},
                              {"TextContent", "Höhe in m\ntwo\nlines"}};
    const tests::ScopedVariable zone("TZ", "America/New_York");
    EXPECT_EQ(attributesOfSVG(picture), expected);
}

TEST(SVGImport, ReadsWhatPicturesComeAs) {
    const std::string bomb = [] {
        std::string declarations = "<!ENTITY a0 'haha'>";
        for (int level = 1; level < 12; ++level) {
            declarations += "<!ENTITY a" + std::to_string(level) + " '";
            for (int each = 0; each < 10; ++each)
                declarations += "&a" + std::to_string(level - 1) + ";";
            declarations += "'>";
        }
        return "<!DOCTYPE svg [" + declarations + "]><svg><text>&a11;</text></svg>";
    }();
    std::string deep = "<svg>";
    for (int depth = 0; depth < 200'000; ++depth)
        deep += "<g>";
    const std::string fault = "answered: not all of the picture is read: ";
    const struct {
        const char* name;
        std::string file;
        const char* attribute;
        std::string value;
    } rows[] = {
        {"title of a part", "<svg><g><title>tip</title></g></svg>", "Title", "absent"},
        {"view box alone", "<svg viewBox='0,0 12.5 30'/>", "PixelWidth", "12.5"},
        {"one side follows from the other", "<svg width='20' viewBox='0 0 10 30'/>", "PixelHeight", "60"},
        {"per cent", "<svg width='100%' height='100%'/>", "PixelWidth", "absent"},
        {"no size", "<svg width='-1' height='1e400'/>", "PixelHeight", "absent"},
        {"Windows charset", "<?xml version='1.0' encoding='windows-1251'?><svg><title>\xE4\xE0</title></svg>",
         "Title", "да"},
        {"prefix that nobody declared", "<svg><text xlink:href='#a'>x</text></svg>", "TextContent", "x"},
        {"entity of its own", "<!DOCTYPE svg [<!ENTITY t 'sea'>]><svg><text>&t;</text></svg>", "TextContent",
         "sea"},
        {"entity from outside",
         "<!DOCTYPE svg [<!ENTITY t SYSTEM '/etc/passwd'>]><svg><text>a&t;b</text></svg>", "TextContent",
         "ab"},
        {"entities that explode", bomb, "note", fault + "it is not well-formed XML"},
        {"deeper than any", deep, "note", fault + "its elements are nested too deeply"},
        {"cut short", "<svg><title>x</title><text>y", "note", fault + "it is not well-formed XML"},
        {"what is there of it", "<svg><title>x</title><text>y", "TextContent", "y"},
        {"a page", "<html><body/></html>", "note", "broken: the file is damaged, or no SVG"},
        {"empty", "", "note", "broken: the file is damaged, or no SVG"},
        {"no gzip", "\x1F\x8B\x08", "note", "broken: the file is damaged, or no SVG"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOfSVG(row.file), row.attribute), row.value) << row.name;
}

} // namespace
} // namespace kelvo::importers
