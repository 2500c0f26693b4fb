#include "importers/compound/CompoundImport.h"

#include "platform/foundation/Value.h"
#include "support/Importing.h"
#include "support/OfficeDocuments.h"

#include <gsf/gsf.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

using namespace std::string_literals;
using Attributed = std::map<std::string, std::string>;
using Streams = std::vector<std::pair<std::string, std::string>>;

std::string littleEndian(std::uint64_t value, int count) {
    std::string bytes;
    for (int index = 0; index < count; ++index)
        bytes += static_cast<char>(value >> (8 * index) & 0xFF);
    return bytes;
}

std::string text(const std::string& bytes) {
    std::string padded = bytes + '\0';
    padded.resize((padded.size() + 3) / 4 * 4);
    return littleEndian(30, 4) + littleEndian(bytes.size() + 1, 4) + padded;
}

/// Of a moment in seconds since 1970; 0: none.
std::string fileTime(std::uint64_t seconds) {
    return littleEndian(64, 4) +
           littleEndian(seconds == 0 ? 0 : (seconds + 11'644'473'600ULL) * 10'000'000ULL, 8);
}

std::string number(std::uint32_t value) {
    return littleEndian(3, 4) + littleEndian(value, 4);
}

/// A stream of properties with their numbers, of the kind with that identifier.
std::string propertySet(const std::string& identifier,
                        const std::vector<std::pair<int, std::string>>& properties) {
    std::string table;
    std::string values;
    const std::size_t start = 8 + 8 * properties.size();
    for (const auto& [place, value] : properties) {
        table += littleEndian(static_cast<std::uint64_t>(place), 4) + littleEndian(start + values.size(), 4);
        values += value;
    }
    const std::string section =
        littleEndian(start + values.size(), 4) + littleEndian(properties.size(), 4) + table + values;
    return "\xFE\xFF\0\0\5\1\2\0"s + std::string(16, '\0') + littleEndian(1, 4) + identifier +
           littleEndian(48, 4) + section;
}

const std::string summary = "\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08\x00\x2B\x27\xB3\xD9"s;
const std::string documentSummary = "\x02\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE"s;

std::string compoundFile(const Streams& streams) {
    gsf_init();
    GsfOutput* const memory = gsf_output_memory_new();
    GsfOutfile* const file = gsf_outfile_msole_new(memory);
    for (const auto& [name, bytes] : streams) {
        GsfOutput* const stream = gsf_outfile_new_child(file, name.c_str(), FALSE);
        gsf_output_write(stream, bytes.size(), reinterpret_cast<const guint8*>(bytes.data()));
        gsf_output_close(stream);
        g_object_unref(stream);
    }
    gsf_output_close(GSF_OUTPUT(file));
    g_object_unref(file);
    const std::string bytes(
        reinterpret_cast<const char*>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory))),
        static_cast<std::size_t>(gsf_output_size(memory)));
    g_object_unref(memory);
    return bytes;
}

/// By their names without what is common to these; "note": what else there is to say. The office suite makes `converted`
/// of the file, or nothing.
Attributed attributesOf(const std::string& file, const std::string& converted) {
    Attributed result;
    const NSDictionary attributes = attributesByImporter(
        importCompound, NSData::dataWithBytes(file), "com.microsoft.word.doc",
        [&](Outcome outcome, const NSString& why) {
            result["note"] = wordOfOutcome(outcome).UTF8String() + ": " + why.UTF8String();
        },
        [&](const NSDictionary&) { return converted.empty() ? NSData() : NSData::dataWithBytes(converted); });
    for (const Value& key : attributes.allKeys()) {
        const Value& value = attributes.objectForKey(key);
        const NSDate* const date = value.dateIfAny();
        std::string shown = value.isArray() ? ""
                            : date          ? date->description().UTF8String()
                                            : value.description().UTF8String();
        for (const Value& each : value.array())
            shown += '<' + each.string().UTF8String() + '>';
        const std::string name = key.string().UTF8String();
        result[name.starts_with("kMDItem") ? name.substr(7) : name] = shown;
    }
    return result;
}

TEST(CompoundImport, SetsWhatDocumentsSay) {
    const std::string file = compoundFile(
        {{"\5SummaryInformation", propertySet(summary, {{1, littleEndian(2, 4) + littleEndian(1250, 4)},
                                                        {2, text("P\xF8\xEDliv")},
                                                        {3, text("Voda")},
                                                        {4, text("Ada Lindqvist;Per Ek")},
                                                        {5, text("tide, harbour")},
                                                        {6, text("S p\xE9\xE8\xED")},
                                                        {8, text("Mia Sund")},
                                                        {12, fileTime(1'582'979'696)},
                                                        {13, fileTime(0)},
                                                        {14, number(3)},
                                                        {15, number(12)},
                                                        {18, text("Pen")}})},
         {"\5DocumentSummaryInformation",
          propertySet(documentSummary,
                      {{1, littleEndian(2, 4) + littleEndian(1252, 4)}, {15, text("Caf\xE9 Quay")}})}});
    const Attributed expected{{"Title", "P\u0159\u00EDliv"},
                              {"Subject", "Voda"},
                              {"Authors", "<Ada Lindqvist><Per Ek>"},
                              {"Keywords", "<tide><harbour>"},
                              {"Comment", "S p\u00E9\u010D\u00ED"},
                              {"Editors", "<Mia Sund>"},
                              {"ContentCreationDate", "2020-02-29 12:34:56 +0000"},
                              {"NumberOfPages", "3"},
                              {"plumwick_wordCount", "12"},
                              {"Creator", "Pen"},
                              {"Organizations", "<Caf\u00E9 Quay>"},
                              {"TextContent", "one\ntwo"}};
    EXPECT_EQ(attributesOf(file, tests::flatOpenDocument("<text:p>one</text:p><text:p>two</text:p>")),
              expected);
}

TEST(CompoundImport, SaysWhatKeepsItFromReading) {
    const std::string flat = tests::flatOpenDocument("<text:p>text</text:p>");
    const Attributed whole{{"TextContent", "text"}};
    const Attributed locked{{"SecurityMethod", "Password Encrypted"},
                            {"note", "locked: the document is encrypted"}};
    const Attributed unread{{"note", "broken: the office suite does not read it"}};
    const auto record = [](int type, int length) {
        return littleEndian(static_cast<std::uint64_t>(type), 2) +
               littleEndian(static_cast<std::uint64_t>(length), 2) +
               std::string(static_cast<std::size_t>(length), 'x');
    };
    const struct {
        const char* name;
        std::string file;
        std::string converted;
        Attributed expected;
    } rows[] = {
        {"nothing at all", "", "", unread},
        {"older than compound files", "\x09\x04\x06\0"s, flat, whole},
        {"read by nobody", compoundFile({{"WordDocument", std::string(64, '\0')}}), "", unread},
        {"text of Word",
         compoundFile({{"WordDocument", std::string(10, '\0') + "\0\2"s + std::string(9, '\0')}}), flat,
         whole},
        {"locked text",
         compoundFile({{"WordDocument", std::string(10, '\0') + "\0\1"s + std::string(9, '\0')}}), flat,
         locked},
        {"workbook", compoundFile({{"Workbook", record(0x809, 16) + record(0x2E, 4)}}), flat, whole},
        {"locked workbook", compoundFile({{"Workbook", record(0x809, 16) + record(0x2F, 4)}}), flat, locked},
        {"locked slides", compoundFile({{"Current User", std::string(12, '\0') + "\xDF\xC4\xD1\xF3"s}}), flat,
         locked},
        {"a package by that name",
         tests::officeOpenXML("packed", ""),
         "",
         {{"Authors", "<Ann Author>"}, {"Keywords", "<one><two>"}, {"TextContent", "packed"}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(attributesOf(row.file, row.converted), row.expected) << row.name;
}

} // namespace
} // namespace kelvo::importers
