#include "importers/compound/CompoundDocument.h"

#include "importers/office/Gsf.h"

#include <gsf/gsf-meta-names.h>
#include <gsf/gsf-msole-utils.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostRecordsBeforeTheLock = 64;
constexpr std::uint32_t lockRecordOfWorkbook = 0x2F;
constexpr std::uint32_t lockFlagOfWord = 0x100;
constexpr std::uint32_t markOfLockedSlides = 0xF3D1C4DF;

/// What libgsf makes of no date, a moment of 1601, in 32 bits.
constexpr auto noDate = static_cast<std::uint32_t>(-11'644'473'600LL);

struct Row {
    const char* name;
    std::string OfficeFacts::*fact;
};

constexpr std::array rows{
    Row{GSF_META_NAME_TITLE, &OfficeFacts::title},
    Row{GSF_META_NAME_CREATOR, &OfficeFacts::authors},
    Row{GSF_META_NAME_LAST_SAVED_BY, &OfficeFacts::lastAuthor},
    Row{GSF_META_NAME_KEYWORDS, &OfficeFacts::keywords},
    Row{GSF_META_NAME_DESCRIPTION, &OfficeFacts::comment},
    Row{GSF_META_NAME_SUBJECT, &OfficeFacts::subject},
    Row{GSF_META_NAME_DATE_CREATED, &OfficeFacts::created},
    Row{GSF_META_NAME_DATE_MODIFIED, &OfficeFacts::modified},
    Row{GSF_META_NAME_LANGUAGE, &OfficeFacts::language},
    Row{GSF_META_NAME_GENERATOR, &OfficeFacts::application},
    Row{GSF_META_NAME_COMPANY, &OfficeFacts::company},
    Row{GSF_META_NAME_PAGE_COUNT, &OfficeFacts::pages},
    Row{GSF_META_NAME_SLIDE_COUNT, &OfficeFacts::slides},
    Row{GSF_META_NAME_WORD_COUNT, &OfficeFacts::words},
};

std::string textOf(const GValue* value) {
    if (!value)
        return {};
    if (G_VALUE_HOLDS_STRING(value)) {
        const char* const text = g_value_get_string(value);
        return text ? text : "";
    }
    if (G_VALUE_HOLDS_INT(value))
        return std::to_string(g_value_get_int(value));
    if (VAL_IS_GSF_TIMESTAMP(value)) {
        const auto* const moment = static_cast<const GsfTimestamp*>(g_value_get_boxed(value));
        if (moment->timet == noDate)
            return {};
        const std::unique_ptr<char, decltype(&g_free)> text(gsf_timestamp_as_string(moment), g_free);
        return text ? text.get() : "";
    }
    return {};
}

/// Little-endian; 0 where there is nothing.
std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 |
                (place + index < bytes.size() ? static_cast<unsigned char>(bytes[place + index]) : 0U);
    return value;
}

bool hasLockRecord(std::string_view workbook) {
    for (std::size_t count = 0; count < mostRecordsBeforeTheLock && workbook.size() >= 4; ++count) {
        if (number(workbook, 0, 2) == lockRecordOfWorkbook)
            return true;
        workbook.remove_prefix(std::min(workbook.size(), std::size_t{4} + number(workbook, 2, 2)));
    }
    return false;
}

} // namespace

struct CompoundDocument::File {
    HeldByGLib<GsfInfile> streams;
};

CompoundDocument::CompoundDocument(std::string_view file) : file_(std::make_unique<File>()) {
    prepareGsf();
    const HeldByGLib<GsfInput> input(gsf_input_memory_new(reinterpret_cast<const guint8*>(file.data()),
                                                          static_cast<gsf_off_t>(file.size()), FALSE));
    file_->streams.reset(input ? gsf_infile_msole_new(input.get(), nullptr) : nullptr);
}

CompoundDocument::~CompoundDocument() = default;

bool CompoundDocument::isOpen() const {
    return file_->streams != nullptr;
}

bool CompoundDocument::isEncrypted() const {
    constexpr std::size_t mostBytes = 16 << 10;
    return (number(stream("WordDocument", mostBytes), 10, 2) & lockFlagOfWord) != 0 ||
           number(stream("Current User", mostBytes), 12, 4) == markOfLockedSlides ||
           hasLockRecord(stream("Workbook", mostBytes)) || hasLockRecord(stream("Book", mostBytes));
}

OfficeFacts CompoundDocument::facts() const {
    OfficeFacts facts;
    if (!isOpen())
        return facts;
    for (const char* const name : {"\05SummaryInformation", "\05DocumentSummaryInformation"}) {
        const HeldByGLib<GsfInput> input(gsf_infile_child_by_name(file_->streams.get(), name));
        const HeldByGLib<GsfDocMetaData> properties(gsf_doc_meta_data_new());
        if (!input)
            continue;
        // What was read before a fault is there.
        if (GError* const fault = gsf_doc_meta_data_read_from_msole(properties.get(), input.get()))
            g_error_free(fault);
        for (const Row& row : rows) {
            const GsfDocProp* const property = gsf_doc_meta_data_lookup(properties.get(), row.name);
            if (std::string text = property ? textOf(gsf_doc_prop_get_val(property)) : ""; !text.empty())
                facts.*row.fact = std::move(text);
        }
    }
    return facts;
}

std::string CompoundDocument::stream(const char* name, std::size_t mostBytes) const {
    const HeldByGLib<GsfInput> input(isOpen() ? gsf_infile_child_by_name(file_->streams.get(), name)
                                              : nullptr);
    if (!input)
        return {};
    const auto length = std::min(
        static_cast<std::size_t>(std::max<gsf_off_t>(gsf_input_remaining(input.get()), 0)), mostBytes);
    const guint8* const bytes = length > 0 ? gsf_input_read(input.get(), length, nullptr) : nullptr;
    return bytes ? std::string(reinterpret_cast<const char*>(bytes), length) : std::string();
}

} // namespace kelvo::importers
