#include "platform/appkit/documents/engine/FrozenWordFields.h"

#include "platform/appkit/documents/engine/CompoundFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo::documentengine {
namespace {

using namespace std::string_view_literals;

// In the first stream: of which version it is, which of two streams has the tables, and where in it are those of the fields in the text, headers, footnotes, comments, endnotes, and text boxes of both kinds.
constexpr std::uint32_t firstKnownVersion = 105;
constexpr std::uint32_t secondTableFlag = 0x200;
constexpr std::array fieldTables{0x11A, 0x122, 0x12A, 0x132, 0x21A, 0x262, 0x272};

constexpr std::uint32_t beginOfField = 0x13;
constexpr std::uint32_t fileNameField = 29;
/// Which nobody computes.
constexpr char quoteField = 35;

} // namespace

void freezeWordFields(std::string& document) {
    const CompoundFile file(document);
    const auto text = file.streamNamed(nameOfWordText);
    if (!text || file.number(*text, 0, 2) != signatureOfWordText ||
        file.number(*text, 2, 2).value_or(0) < firstKnownVersion)
        return;
    const bool isSecond = (file.number(*text, 10, 2).value_or(0) & secondTableFlag) != 0;
    const auto tables = file.streamNamed(isSecond ? "1\0T\0a\0b\0l\0e\0"sv : "0\0T\0a\0b\0l\0e\0"sv);
    if (!tables)
        return;
    for (const int table : fieldTables) {
        const auto start = file.number(*text, static_cast<std::size_t>(table), 4);
        const auto length = file.number(*text, static_cast<std::size_t>(table) + 4, 4);
        if (!start || !length || *length < 4)
            continue;
        // Positions of four bytes, one more than there are marks of two.
        const std::size_t count = std::min<std::size_t>(*length, tables->length) / 6;
        const std::size_t marks = std::size_t{*start} + 4 * (count + 1);
        for (std::size_t index = 0; index < count; ++index) {
            const auto mark = file.number(*tables, marks + 2 * index, 2);
            if (mark && (*mark & 0x1F) == beginOfField && *mark >> 8 == fileNameField)
                document[*tables->place(marks + 2 * index + 1)] = quoteField;
        }
    }
}

} // namespace kelvo::documentengine
