#include "cli/MetadataValues.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ctime>

namespace kelvo::cli {
namespace {

using Entries = std::vector<std::pair<const char16_t*, Value>>;

/// "Label: text", a row a line, with "/" for line ends within.
std::string seen(const Entries& entries,
                 std::vector<MetadataRow> rowsOf(const NSDictionary&) = rowsOfMetadata) {
    NSMutableDictionary attributes = NSMutableDictionary::dictionary();
    for (const auto& [name, value] : entries)
        attributes.setObject_forKey(value, name);
    std::string rows;
    for (MetadataRow& row : rowsOf(attributes)) {
        std::ranges::replace(row.text, '\n', '/');
        rows += (rows.empty() ? "" : "; ") + row.label + ": " + row.text;
    }
    return rows;
}

Value real(double number) {
    return NSNumber::numberWithDouble(number);
}
Value whole(std::int64_t number) {
    return NSNumber::numberWithLongLong(number);
}
NSString many(char16_t unit, std::size_t count) {
    return NSString(std::u16string_view(std::u16string(count, unit)));
}

TEST(MetadataValues, OfPDFs) {
    const Value yes = NSNumber::numberWithBool(true);
    EXPECT_EQ(seen({{u"PageCount", whole(0)}, {u"Locked", yes}, {u"x", u"y"}}, rowsOfPDF),
              "Pages: not known; Locked: yes; x: y");
    EXPECT_EQ(seen({{u"PageCount", whole(0)}, {u"String", u""}, {u"Rtfd", u"x"}}, rowsOfPDF), "Pages: 0");
}

TEST(MetadataValues, InTheUnitsOfPeople) {
    const tests::ScopedVariable zone("TZ", "XYZ-5:30");
    tzset();
    const NSArray inner = NSArray::arrayWithObjects({u"b", whole(2)});
    const NSDictionary pair = NSMutableDictionary::dictionaryWithObjectsAndKeys({{inner, u"key"}});
    const double nan = std::nan("");
    const std::pair<Entries, const char*> rows[] = {
        // Exposures, as cameras write them.
        {{{u"kMDItemExposureTimeSeconds", real(0.004)}}, "Exposure: 1/250 s"},
        {{{u"kMDItemExposureTimeSeconds", real(10 / 601.0)}}, "Exposure: 1/60 s"},
        {{{u"kMDItemExposureTimeSeconds", real(0.25)}}, "Exposure: 1/4 s"},
        {{{u"kMDItemExposureTimeSeconds", real(1 / 3.0)}}, "Exposure: 1/3 s"},
        {{{u"kMDItemExposureTimeSeconds", real(0.4)}}, "Exposure: 0.4 s"},
        {{{u"kMDItemExposureTimeSeconds", whole(1)}}, "Exposure: 1 s"},
        {{{u"kMDItemExposureTimeSeconds", real(2.5)}}, "Exposure: 2.5 s"},
        {{{u"kMDItemExposureTimeSeconds", whole(0)}}, "Exposure: 0"},
        {{{u"kMDItemExposureTimeSeconds", real(1e-300)}}, "Exposure: 1e-300"},
        {{{u"kMDItemExposureTimeSeconds", real(nan)}}, "Exposure: nan"},
        {{{u"kMDItemExposureTimeSeconds", u"soon"}}, "Exposure: soon"},
        {{{u"kMDItemFNumber", real(2.8)}}, "F-number: f/2.8"},
        {{{u"kMDItemFNumber", whole(2)}}, "F-number: f/2"},
        {{{u"kMDItemAperture", real(2.97085)}}, "Aperture: f/2.8"},
        {{{u"kMDItemAperture", real(1e6)}}, "Aperture: 1000000"},
        {{{u"kMDItemFocalLength", whole(50)}}, "Focal length: 50 mm"},
        {{{u"kMDItemExposureTimeSeconds", real(0.004)}, {u"kMDItemExposureTimeString", u"1/250"}},
         "Exposure: 1/250 s"},
        {{{u"kMDItemExposureTimeString", u"1/250"}}, "Exposure (text): 1/250"},
        {{{u"plumwick_frameRate", real(29.97)}}, "Frames: 29.97 a second"},
        {{{u"plumwick_rotation", whole(90)}}, "Turned: 90°"},
        {{{u"kMDItemFlashOnOff", whole(1)}}, "Flash: yes"},
        {{{u"kMDItemFlashOnOff", whole(7)}}, "Flash: 7"},
        {{{u"kMDItemOrientation", whole(0)}}, "Orientation: landscape"},
        {{{u"kMDItemPixelWidth", whole(4000)}, {u"kMDItemPixelHeight", whole(3000)}},
         "Size: 4000 × 3000 pixels"},
        {{{u"kMDItemPixelHeight", whole(3000)}}, "Height: 3000 pixels"},
        {{{u"kMDItemResolutionHeightDPI", whole(72)}, {u"kMDItemResolutionWidthDPI", whole(72)}},
         "Resolution: 72 dpi"},
        // Places, also from importers that set them as text.
        {{{u"kMDItemLatitude", real(-33.856784)}, {u"kMDItemLongitude", real(151.2153)}},
         "Position: 33.85678° S, 151.2153° E"},
        {{{u"kMDItemLatitude", u"48.5"}, {u"kMDItemLongitude", u"-0.25"}}, "Position: 48.5° N, 0.25° W"},
        {{{u"kMDItemLongitude", real(-180)}}, "Longitude: 180° W"},
        {{{u"kMDItemLatitude", real(-0.0)}}, "Latitude: 0° N"},
        {{{u"kMDItemLatitude", real(91)}, {u"kMDItemLongitude", u"7 E"}}, "Latitude: 91; Longitude: 7 E"},
        {{{u"kMDItemAltitude", real(-3.25)}}, "Altitude: -3.25 m"},
        // Pages and papers.
        {{{u"kMDItemPageHeight", real(841.89)}, {u"kMDItemPageWidth", real(595.276)}},
         "Page size: 595.3 × 841.9 points (A4)"},
        {{{u"kMDItemPageHeight", whole(612)}, {u"kMDItemPageWidth", whole(792)}},
         "Page size: 792 × 612 points (Letter, landscape)"},
        {{{u"kMDItemPageHeight", whole(100)}, {u"kMDItemPageWidth", whole(100)}},
         "Page size: 100 × 100 points"},
        {{{u"kMDItemPageHeight", u"tall"}, {u"kMDItemPageWidth", whole(612)}},
         "Page width: 612 points; Page height: tall"},
        // Lengths and rates.
        {{{u"kMDItemDurationSeconds", real(3725.4)}}, "Duration: 1:02:05"},
        {{{u"kMDItemDurationSeconds", real(59.6)}}, "Duration: 0:01:00"},
        {{{u"kMDItemDurationSeconds", whole(0)}}, "Duration: 0:00:00"},
        {{{u"kMDItemDurationSeconds", real(0.04)}}, "Duration: 0.04 s"},
        {{{u"kMDItemDurationSeconds", whole(-1)}}, "Duration: -1"},
        {{{u"kMDItemDurationSeconds", real(INFINITY)}}, "Duration: inf"},
        {{{u"kMDItemAudioSampleRate", whole(44100)}}, "Sample rate: 44.1 kHz"},
        {{{u"kMDItemAudioBitRate", whole(128000)}}, "Audio bit rate: 128 kbit/s"},
        {{{u"kMDItemFSSize", whole(1234567)}}, "File size: 1.2 MB"},
        {{{u"kMDItemFSSize", whole(-1)}}, "File size: -1"},
        // Kinds of values.
        {{{u"kMDItemContentCreationDate", NSDate::dateWithTimeIntervalSince1970(-0.5)}},
         "Created: 1970-01-01 05:29:59"},
        {{{u"kMDItemDueDate", NSDate::dateWithTimeIntervalSinceReferenceDate(1e300)}}, "Due: 1e+300"},
        {{{u"kMDItemStreamable", NSNumber::numberWithBool(false)}}, "Streamable: no"},
        {{{u"kMDItemKeywords", NSArray::arrayWithObjects({u"a", inner, pair})}},
         "Keywords: a, (b, 2), (key: (b, 2))"},
        {{{u"kMDItemKeywords", NSArray::array()}, {u"kMDItemTitle", u""}}, "Title: none; Keywords: none"},
        {{{u"kMDItemStarRating", real(0.1 + 0.2)}}, "Stars: 0.3"},
        {{{u"kMDItemStarRating", real(5e20)}}, "Stars: 5e+20"},
        {{{u"com_example_blob", NSData::dataWithBytes("\x1B[")},
          {u"com\x1B"
           u"[2J",
           u"x\x1B[31m\ny\n"},
          {u"kMDItemAuthors", NSArray::arrayWithObjects({u"A\n\x7F"})}},
         "Authors: A\\x0A\\x7F; com_example_blob: 2 bytes; com\\x1B[2J: x\\x1B[31m/y"},
        // The text comes behind what is known, and only its beginning.
        {{{u"com_example", u"x"}, {u"kMDItemTextContent", u"\n one\n\ntwo\r\n"}, {u"kMDItemPages", u"y"}},
         "Text: one/two; com_example: x; kMDItemPages: y"},
        {{{u"kMDItemTextContent", u"1\n2\n3\n\U0001F600"}}, "Text: 1/2/3 … (7 characters)"},
        {{{u"kMDItemTextContent", u"\n\t\n"}}, "Text: … (3 characters)"},
        {{{u"kMDItemTextContent", u""}}, "Text: none"},
    };
    for (const auto& [entries, expected] : rows)
        EXPECT_EQ(seen(entries), expected);

    EXPECT_EQ(seen({{u"kMDItemTextContent", many(u'x', 100)}}),
              "Text: " + std::string(72, 'x') + "… (100 characters)");
    EXPECT_EQ(seen({{u"kMDItemComment", many(u'x', 2001)}}),
              "Comment: " + std::string(2000, 'x') + "… (2001 characters)");
    EXPECT_EQ(seen({{u"kMDItemComment", many(u'x', 1999).stringByAppendingString(u"\U0001F600")}}),
              "Comment: " + std::string(1999, 'x') + "… (2000 characters)");
    std::string ones;
    NSMutableArray numbers = NSMutableArray::array();
    for (int number = 0; number < 101; ++number) {
        numbers.addObject(whole(1));
        ones += number < 100 ? "1, " : "… (101 in all)";
    }
    EXPECT_EQ(seen({{u"kMDItemKeywords", numbers}}), "Keywords: " + ones);
}

} // namespace
} // namespace kelvo::cli
