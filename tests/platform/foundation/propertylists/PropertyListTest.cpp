#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <limits>

namespace kelvo {
namespace {

using Serialization = NSPropertyListSerialization;
constexpr auto text = NSPropertyListOpenStepFormat;
constexpr auto xml = NSPropertyListXMLFormat_v1_0;
constexpr auto binary = NSPropertyListBinaryFormat_v1_0;

struct Outcome {
    Value value;
    NSPropertyListFormat format{};
    NSString reason;
};

Outcome readData(const NSData& data) {
    Outcome outcome;
    outcome.value = Serialization::propertyListFromData_mutabilityOption_format_errorDescription(
        data, NSPropertyListMutabilityOptions::mutableContainers, &outcome.format, &outcome.reason);
    EXPECT_EQ(outcome.value.isNil(), !outcome.reason.isNil());
    return outcome;
}

Value read(std::string_view bytes) {
    return readData(NSData::dataWithBytes(bytes)).value;
}

/// Reading gives nil, for a reason that holds the part.
void expectReason(std::string_view bytes, std::string_view part, const std::string& name = "") {
    const Outcome outcome = readData(NSData::dataWithBytes(bytes));
    EXPECT_TRUE(outcome.value.isNil()) << name;
    const std::string reason = outcome.reason.UTF8String();
    EXPECT_NE(reason.find(part), std::string::npos) << name << ": " << reason;
}

NSData write(const Value& value, NSPropertyListFormat format, NSString* reason = nullptr) {
    return Serialization::dataFromPropertyList_format_errorDescription(value, format, reason);
}

const Value yes = NSNumber::numberWithBool(true), no = NSNumber::numberWithBool(false);

Value integer(std::int64_t value) {
    return NSNumber::numberWithLongLong(value);
}

Value real(double value) {
    return NSNumber::numberWithDouble(value);
}

Value date(double seconds) {
    return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds);
}

Value list(std::vector<Value> values) {
    return NSArray::arrayWithValues(std::move(values));
}

Value bytes(std::string_view contents) {
    return NSData::dataWithBytes(contents);
}

Value pairs(std::initializer_list<NSMutableDictionary::Pair> entries) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(entries);
}

std::string bigEndian(std::uint64_t value, std::size_t size) {
    std::string result;
    while (size-- > 0)
        result += static_cast<char>(value >> (8 * size));
    return result;
}

/// A binary list of these objects, byte by byte, whose references take two bytes; the first is the root.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(file.size(), 4);
        file += object;
    }
    const std::size_t tableOffset = file.size();
    return file + table + std::string(6, '\0') + "\4\2" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(tableOffset, 8);
}

std::string references(std::initializer_list<unsigned> objects) {
    std::string result;
    for (const unsigned object : objects)
        result += bigEndian(object, 2);
    return result;
}

Value nested(std::size_t levels) {
    Value value = u"x";
    for (std::size_t level = 0; level < levels; ++level)
        value = list({value});
    return value;
}

Value sample() {
    return pairs({{u"ASCII \\ \"quoted\"", u"string"},
                  {u"\u20AC \xD83D\xDE00 <&>\r\n\t", u"text"},
                  {NSString::string(), u""},
                  {bytes(std::string("\0\1\xFF", 3)), u"data"},
                  {bytes({}), u"no data"},
                  {yes, u"yes"},
                  {no, u"no"},
                  {list({integer(0), integer(255), integer(65536), integer(0xFFFFFFFF), integer(0x100000000),
                         integer(-1), integer(std::numeric_limits<std::int64_t>::min())}),
                   u"integers"},
                  {list({NSNumber::numberWithFloat(0.1f), real(0.1), real(-1e300)}), u"reals"},
                  {date(-3600.0 * 24 * 365 * 1500), u"long ago"},
                  {date(63113904000), u"distant future"},
                  {list({list({}), pairs({})}), u"empty"}});
}

struct Row {
    const char* name;
    std::string input;
    Value expected;
};

template <NSPropertyListFormat format>
void expectRows(const std::vector<Row>& rows) {
    for (const auto& [name, input, expected] : rows) {
        const Outcome outcome =
            readData(NSData::dataWithBytes(format == binary ? binaryList({input}) : input));
        EXPECT_EQ(outcome.value, expected) << name << ": " << outcome.reason.UTF8String();
        EXPECT_EQ(outcome.format, format) << name;
    }
}

TEST(PropertyList, ReadsOldStyleText) {
    expectRows<text>({
        {"blank", " \n/* nothing */ // here", NSDictionary::dictionary()},
        {"bare string", "/usr/lib:a_b-$c.d", u"/usr/lib:a_b-$c.d"},
        {"address is no comment", "(http://x/y, //c\n z)", list({u"http://x/y", u"z"})},
        {"scalars stay strings", "(1, YES, 1.5)", list({u"1", u"YES", u"1.5"})},
        {"trailing comma", "( a , )", list({u"a"})},
        {"data", "<0aB\nc>", bytes("\x0A\xBC")},
        {"no data", "<>", bytes({})},
        {"key alone", "{key; 'a b'=\"\";}", pairs({{u"key", u"key"}, {u"", u"a b"}})},
        {"nested", "{a={b=(({}));};}", pairs({{pairs({{list({list({pairs({})})}), u"b"}}), u"a"}})},
        {"last of equal keys", "{a=1;b=2;a=3;}", pairs({{u"3", u"a"}, {u"2", u"b"}})},
        {"strings file", "\"a\"=\"b\";\nc = {d;};", pairs({{u"b", u"a"}, {pairs({{u"d", u"d"}}), u"c"}})},
        {"escapes", R"("\a\b\f\n\r\t\v\"\'\\\q\
")",
         u"\a\b\f\n\r\t\v\"'\\q\n"},
        {"octal NEXTSTEP", R"("\101\344\0001\777")", NSString(std::u16string_view(u"A\u00EE\0001\uFFFD", 5))},
        {"units", R"("\U20ac\Ud83D\ude00\U41g\Ux")", u"\u20AC\xD83Dude00AgUx"},
        {"UTF-8", "\"\xE2\x82\xAC\"", u"\u20AC"},
        {"byte order mark", "\xEF\xBB\xBF(a)", list({u"a"})},
        {"UTF-16", std::string("\xFE\xFF\0\"\x20\xAC\0\"", 8), u"\u20AC"},
        {"NEXTSTEP", "\"\xE4\"", u"\u00EE"},
    });
}

TEST(PropertyList, ReadsXML) {
    const std::string doctype =
        "<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"a\" \"http://localhost/x.dtd\">";
    expectRows<xml>({
        {"document type",
         doctype + "<plist version=\"1.0\"><string> a&amp;&#x20AC;<![CDATA[<]]></string></plist>",
         u" a&\u20AC<"},
        {"no plist element", " <?xml version=\"1.0\"?>", nullptr},
        {"integers",
         "<plist><array><integer> -0x7F "
         "</integer><integer>+9223372036854775807</integer><integer>18446744073709551615</integer></array></"
         "plist>",
         list({integer(-127), integer(std::numeric_limits<std::int64_t>::max()),
               real(18446744073709551616.0)})},
        {"reals", "<plist><array><real>+infinity</real><real>1.5e3</real></array></plist>",
         list({real(std::numeric_limits<double>::infinity()), integer(1500)})},
        {"date", "<plist><date>2001-01-02T00:00:01Z</date></plist>", date(86401)},
        {"data", "<plist><data>\n\tAA\tH/\n\t/w==</data></plist>", bytes(std::string("\0\1\xFF\xFF", 4))},
        {"dictionary", "<!-- c --><plist><dict><key>b</key><true/><key>a</key><false></false></dict></plist>",
         pairs({{yes, u"b"}, {no, u"a"}})},
        {"UTF-16",
         std::string("\xFF\xFE<\0p\0l\0i\0s\0t\0>\0<\0t\0r\0u\0e\0/\0>\0<\0/\0p\0l\0i\0s\0t\0>\0", 46), yes},
    });
}

TEST(PropertyList, ReadsBinaryObjects) {
    expectRows<binary>({
        {"byte is unsigned", "\x10\xFF", integer(255)},
        {"two bytes are unsigned", "\x11\xFF\xFE", integer(65534)},
        {"four bytes are unsigned", "\x12\xFF\xFF\xFF\xFF", integer(0xFFFFFFFF)},
        {"eight bytes are signed", "\x13" + std::string(8, '\xFF'), integer(-1)},
        {"sixteen bytes", "\x14" + bigEndian(0, 8) + bigEndian(7, 8), integer(7)},
        {"sixteen bytes are signed", "\x14" + std::string(15, '\xFF') + '\xFE', integer(-2)},
        {"least of 64 bits", "\x14" + std::string(8, '\xFF') + bigEndian(1ull << 63, 8),
         integer(std::numeric_limits<std::int64_t>::min())},
        {"below 64 bits", "\x14" + std::string(8, '\xFF') + bigEndian((1ull << 63) - 2048, 8),
         real(-9223372036854777856.0)},
        {"past 64 bits", "\x14" + bigEndian(1, 8) + bigEndian(0, 8), real(18446744073709551616.0)},
        {"past signed 64", "\x14" + bigEndian(0, 8) + bigEndian(1ull << 63, 8), real(9223372036854775808.0)},
        {"float", "\x22\x3F\xC0" + std::string(2, '\0'), NSNumber::numberWithFloat(1.5f)},
        {"length of four bytes", "\x5F\x12" + bigEndian(1, 4) + "a", u"a"},
        {"archive reference", "\x81\x01\x02", pairs({{integer(258), u"CF$UID"}})},
    });
    const Value set = read(binaryList({"\xC2" + references({1, 1}), "\121a"}));
    EXPECT_EQ(set, list({u"a", u"a"}));
    const NSDictionary ordered =
        read(binaryList({"\xD2" + references({2, 1, 1, 2}), "\121a", "\121b"})).dictionary();
    EXPECT_EQ(ordered.allKeys(), list({u"b", u"a"}).array());
}

TEST(PropertyList, DataObjectsShareTheBytesOfTheFile) {
    const NSData file =
        NSData::dataWithBytes(binaryList({"\x4F\x11\x10" + std::string(1, '\0') + std::string(4096, 'x')}));
    const NSData data = readData(file).value.data();
    ASSERT_EQ(data.length(), 4096u);
    EXPECT_EQ(data.bytes().data(), file.bytes().data() + 12);
}

TEST(PropertyList, BrokenInputGivesAReason) {
    const auto listWithOffset = [](std::uint64_t offset) {
        std::string file = binaryList({"\121a"});
        return file.replace(10, 4, bigEndian(offset, 4));
    };
    std::string manyObjects = binaryList({"\x09"});
    manyObjects[manyObjects.size() - 24] = '\x10';
    std::string shared = binaryList({"\xA2" + references({1, 1}), "\xA2" + references({2, 2}), "\x09"});
    shared[20] = shared[21] = '\0';
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"missing semicolon", "{a=1;b=2}", "semicolon"},
        {"two values", "(a)\n(b)", "more than one value (line 2)."},
        {"two strings", "a b", "more than one value"},
        {"missing comma", "(a b)", "comma"},
        {"odd digits", "<abc>", "odd"},
        {"no digits", "<xy>", "hexadecimal"},
        {"open comment", "(a /* )", "comment"},
        {"brace behind a strings file", "a=b;}", "neither a value nor a key"},
        {"container as key", "{(a)=b;}", "neither a value nor a key"},
        {"odd UTF-16", std::string("\xFE\xFF\0a\0", 5), "UTF-16"},
        {"XML not closed", "<plist><array>\n</dict>", "(line 2)"},
        {"unknown element", "<plist><set/></plist>", "element"},
        {"element in a scalar", "<plist><string><true/></string></plist>", "inside of a scalar"},
        {"text in a container", "<plist><array>a</array></plist>", "text outside"},
        {"two roots", "<plist><true/><true/></plist>", "more than one value"},
        {"no root", "<plist></plist>", "no value"},
        {"value without key", "<plist><dict><true/></dict></plist>", "no key"},
        {"key without value", "<plist><dict><key>a</key></dict></plist>", "no value"},
        {"key in an array", "<plist><array><key>a</key></array></plist>", "outside of a dictionary"},
        {"bad integer", "<plist><integer>1x</integer></plist>", "integer"},
        {"bad real", "<plist><real>1,5</real></plist>", "real"},
        {"real of two signs", "<plist><real>+-1</real></plist>", "real"},
        {"bad base 64", "<plist><data>A*==</data></plist>", "base 64"},
        {"short base 64", "<plist><data>A</data></plist>", "base 64"},
        {"entity", "<!DOCTYPE p [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>", "entity"},
        {"offset outside", listWithOffset(0x7F00000A), "offset"},
        {"offset of the first byte", listWithOffset(0), "offset"},
        {"offset of the last byte of the header", listWithOffset(7), "offset"},
        {"offset of the offset table", listWithOffset(10), "offset"},
        {"string into the offset table", binaryList({"\122a"}), "passes its end"},
        {"integer into the offset table", binaryList({"\x11\x01"}), "passes its end"},
        {"array into the offset table", binaryList({"\xA1"}), "passes its end"},
        {"length into the offset table", binaryList({"\x5F\x11\x01"}), "passes its end"},
        {"more objects than bytes", manyObjects, "trailer"},
        {"unknown version", "bplist15" + binaryList({"\x09"}).substr(8), "version"},
        {"unknown kind", binaryList({"\xF0"}), "unknown kind"},
        {"reference to nothing", binaryList({"\xA1" + references({1})}), "names no object"},
        {"string past the end", binaryList({"\x5F\x13" + bigEndian(~0ull, 8)}), "passes its end"},
        {"array past the end", binaryList({"\xAF\x13" + bigEndian(1ull << 63, 8)}), "passes its end"},
        {"dictionary past the end", binaryList({"\xDF\x13" + bigEndian(1ull << 62, 8)}), "passes its end"},
        {"length is no integer", binaryList({"\x5F\121a"}), "length"},
        {"length of 16 bytes", binaryList({"\x5F\x14" + bigEndian(0, 8) + bigEndian(1, 8) + "a"}), "length"},
        {"key is no string", binaryList({"\xD1" + references({1, 1}), "\x09"}), "not a string"},
        {"date is no number", binaryList({"\x33" + std::string(8, '\xFF')}), "not a number"},
        {"contains itself", binaryList({"\xA1" + references({0})}), "contains itself"},
        {"contains itself below", binaryList({"\xA2" + references({2, 1}), "\xA1" + references({0}), "\x09"}),
         "contains itself"},
    };
    for (const auto& [name, input, reason] : rows)
        expectReason(input, reason, name);
    for (const std::string time : {"02-29T00:00:00Z", "01-01T24:00:00Z", "01-01T00:60:00Z", "01-01T00:00:60Z",
                                   "01-01T00:00:-1Z", "257-01T00:00:00Z"})
        expectReason("<plist><date>2001-" + time + "</date></plist>", "date", time);
    EXPECT_NE(readData(nullptr).reason, nullptr);
}

TEST(PropertyList, OverlappingObjectsAreRefused) {
    // Each offset names the same long string: decoding all of them would take 1,000 times the file.
    std::vector<std::string> objects = {"\xAF\x11\x03\xE8"};
    for (unsigned object = 1; object <= 1000; ++object)
        objects[0] += bigEndian(object, 2);
    objects.resize(1001);
    objects.back() = "\x5F\x11\x27\x10" + std::string(10000, 'x');
    expectReason(binaryList(objects), "overlap");
}

TEST(PropertyList, EveryCutIsNoticed) {
    for (const NSPropertyListFormat format : {text, xml, binary}) {
        const NSData whole = write(sample(), format);
        // The last bytes of XML are the line end.
        const std::size_t last = whole.length() - (format == xml ? 1 : 0);
        // Fewer letters of the binary mark are a bare string.
        for (std::size_t length = format == binary ? 6 : 1; length < last; ++length)
            ASSERT_TRUE(readData(whole.subdataWithRange({0, length})).value.isNil())
                << static_cast<int>(format) << " cut at " << length;
    }
}

std::string repeated(std::string_view part, std::size_t count) {
    std::string result;
    while (count-- > 0)
        result += part;
    return result;
}

std::string nestedList(NSPropertyListFormat format, std::size_t levels) {
    if (format == text)
        return repeated("(", levels) + "x" + repeated(")", levels);
    if (format == xml)
        return "<plist>" + repeated("<array>", levels) + "<string>x</string>" + repeated("</array>", levels) +
               "</plist>";
    std::string file = "bplist00";
    for (std::size_t level = 1; level <= levels; ++level)
        file += "\xA1" + bigEndian(level, 4);
    file += "\x51x";
    const std::size_t table = file.size();
    for (std::size_t level = 0; level <= levels; ++level)
        file += bigEndian(8 + 5 * level, 4);
    return file + std::string(6, '\0') + "\4\4" + bigEndian(levels + 1, 8) + bigEndian(0, 8) +
           bigEndian(table, 8);
}

TEST(PropertyList, DepthIsBounded) {
    for (const NSPropertyListFormat format : {text, xml, binary}) {
        EXPECT_EQ(read(nestedList(format, 512)), nested(512)) << static_cast<int>(format);
        for (const std::size_t levels : {513u, 100000u})
            expectReason(nestedList(format, levels), "levels deep");
        NSString reason;
        EXPECT_EQ(readData(write(nested(512), format)).value, nested(512)) << static_cast<int>(format);
        EXPECT_TRUE(write(nested(513), format, &reason).isNil());
        EXPECT_FALSE(reason.isNil());
    }
    expectReason(repeated("{a=", 100000), "levels deep");
    // A shared container that is reached first on a short way, then on one that is too long.
    std::vector<std::string> objects = {"\xA2" + references({400, 1})};
    for (unsigned object = 1; object < 700; ++object)
        objects.push_back("\xA1" + references({object + 1}));
    objects.emplace_back("\x09");
    expectReason(binaryList(objects), "levels deep");
}

TEST(PropertyList, SharedReferencesMayNotExpand) {
    // Ten levels of ten references each to the level below: ten thousand million values in 300 bytes.
    std::vector<std::string> levels;
    for (unsigned level = 1; level <= 10; ++level) {
        levels.emplace_back("\xAA");
        for (int reference = 0; reference < 10; ++reference)
            levels.back() += bigEndian(level, 2);
    }
    levels.emplace_back("\x09");
    expectReason(binaryList(levels), "far more than its size");

    // A long string a thousand times, and a short key as often.
    const auto timesThousand = [](const std::string& object) {
        std::string array = "\xAF\x11\x03\xE8";
        for (int reference = 0; reference < 1000; ++reference)
            array += bigEndian(1, 2);
        return binaryList({array, object});
    };
    expectReason(timesThousand("\x5F\x11\x07\xD0" + std::string(2000, 'x')), "far more than its size");
    EXPECT_EQ(read(timesThousand("\x5EWebResourceURL")).array().count(), 1000u);

    // What is written is never taken for such a list, however often a string occurs.
    const Value honest = list(std::vector<Value>(1000, NSString(std::u16string(2000, u'x'))));
    EXPECT_EQ(readData(write(honest, binary)).value, honest);
}

/// Through the library in one direction; the result is read by our reader of the other format.
Value throughPeer(const NSData& data, NSPropertyListFormat to) {
    plist_t root = nullptr;
    plist_from_memory(data.characters().data(), static_cast<std::uint32_t>(data.length()), &root);
    char* written = nullptr;
    std::uint32_t length = 0;
    if (to == xml)
        plist_to_xml(root, &written, &length);
    else
        plist_to_bin(root, &written, &length);
    const Value value = read({written, length});
    plist_free(root);
    (to == xml ? plist_to_xml_free : plist_to_bin_free)(written);
    return value;
}

TEST(PropertyList, WhatIsWrittenIsReadBackEqualHereAndByThePeer) {
    for (const NSPropertyListFormat format : {xml, binary})
        EXPECT_EQ(readData(write(sample(), format)).value, sample());
    EXPECT_EQ(readData(write(sample(), binary)).value.dictionary().allKeys(),
              sample().dictionary().allKeys());
    EXPECT_EQ(throughPeer(write(sample(), xml), binary), sample());
    NSMutableDictionary withoutReturn(sample().dictionary());
    withoutReturn.removeObjectForKey(u"text");
    EXPECT_EQ(throughPeer(write(withoutReturn, binary), xml), withoutReturn);

    const Value onlyBinary = list({date(1e15 + 0.125), NSString(std::u16string_view(u"\0\xDC00", 2)),
                                   real(std::numeric_limits<double>::quiet_NaN())});
    EXPECT_EQ(readData(write(onlyBinary, binary)).value, onlyBinary);
}

TEST(PropertyList, WritesOldStyleText) {
    const Value value = pairs({{list({}), u"empty"},
                               {list({real(1.5), u"a b"}), u"com.kelvo"},
                               {pairs({{bytes("\x01\x02\x03\x04\x05"), u"data"}}), u"z_9"},
                               {date(0), u"\u20AC\"\x01\n"}});
    const NSData written = write(value, text);
    EXPECT_EQ(written.characters(), R"({
    empty = (
    );
    "com.kelvo" = (
        "1.5",
        "a b"
    );
    z_9 = {
        data = <01020304 05>;
    };
    "\U20ac\"\001\n" = "2001-01-01 00:00:00 +0000";
})");
    for (const char16_t* string : {u"", u"bplist00", u"//", u"\uFFFF\x7F\\'"})
        EXPECT_EQ(readData(write(string, text)).value, Value(string));
}

TEST(PropertyList, WritesXML) {
    const Value value = pairs({{list({}), u"empty <&>\r"},
                               {list({integer(-7), real(0.1), real(-std::numeric_limits<double>::infinity()),
                                      yes, no, pairs({}), date(-0.5), bytes({})}),
                                u"kinds"},
                               {pairs({{bytes(std::string(58, '\xFF')), u"two lines"}}), u"\U0001F600\t"}});
    EXPECT_EQ(write(value, xml).characters(),
              R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>empty &lt;&amp;&gt;&#13;</key>
	<array/>
	<key>kinds</key>
	<array>
		<integer>-7</integer>
		<real>0.1</real>
		<real>-infinity</real>
		<true/>
		<false/>
		<dict/>
		<date>2000-12-31T23:59:59Z</date>
		<data>
		</data>
	</array>
	<key>😀	</key>
	<dict>
		<key>two lines</key>
		<data>
		////////////////////////////////////////////////////////////////////////////
		/w==
		</data>
	</dict>
</dict>
</plist>
)");
}

TEST(PropertyList, RefusesWhatAFormatCannotHold) {
    const std::tuple<const char*, Value, bool, bool> rows[] = {
        {"nil", nullptr, false, false},
        {"null inside", list({NSNull()}), false, false},
        {"size inside", list({NSSize{1, 2}}), false, false},
        {"number as key", pairs({{u"a", integer(1)}}), false, false},
        {"NUL", NSString(std::u16string_view(u"\0", 1)), true, false},
        {"unpaired surrogate", u"\xD800", true, false},
        {"pair", u"\xD800\xDC00", true, true},
        {"year 10000", date(252423993600.0), true, false},
        {"year 9999", date(252423993599.0), true, true},
        {"year 0", date(-63113904001.0), true, false},
    };
    for (const auto& [name, value, inOthers, inXML] : rows)
        for (const NSPropertyListFormat format : {text, xml, binary}) {
            const bool isHeld = format == xml ? inXML : inOthers;
            NSString reason;
            EXPECT_EQ(!write(value, format, &reason).isNil(), isHeld)
                << name << " in " << static_cast<int>(format);
            EXPECT_EQ(reason.isNil(), isHeld) << name;
        }
}

TEST(PropertyList, DescriptionsShowEveryKindAndEnd) {
    const std::tuple<Value, const char16_t*> rows[] = {
        {nullptr, u"(null)"},
        {NSNull(), u"<null>"},
        {yes, u"1"},
        {u"as it \"is\"", u"as it \"is\""},
        {bytes("ab"), u"<6162>"},
        {NSURL::URLWithString(u"http://a/b"), u"http://a/b"},
        {NSSize{612, 792}, u"{612, 792}"},
        {NSColor{1, 0.5f, 0, 1}, u"sRGB 1 0.5 0 1"},
        {list({NSNull(), u"x"}), u"(\n    \"<null>\",\n    x\n)"},
        {pairs({{integer(2), integer(1)}}), u"{\n    1 = 2;\n}"},
    };
    for (const auto& [value, expected] : rows)
        EXPECT_EQ(value.description(), expected);

    EXPECT_NE(nested(600).description().characters().find(u"..."), std::u16string_view::npos);
    Value doubling = u"x";
    for (int level = 0; level < 500; ++level)
        doubling = list({doubling, doubling});
    EXPECT_TRUE(doubling.description().characters().find(u"...") != std::u16string_view::npos);
}

TEST(PropertyList, ValuesAreCounted) {
    // Shared containers in memory count each time they occur, as each time they are written.
    const Value table = list(std::vector<Value>(2100, list(std::vector<Value>(2000, integer(1)))));
    EXPECT_TRUE(write(table, binary).isNil());
#ifndef KELVO_SANITIZED // Four million small allocations take the sanitizers a minute.
    EXPECT_TRUE(write(table, text).isNil());
    expectReason("(" + repeated("a,", 4'194'304) + ")", "4194304 values");
#endif
}

} // namespace
} // namespace kelvo
