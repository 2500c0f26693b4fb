#include "importers/structured/JSONStrings.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo::importers {
namespace {

constexpr std::string_view blanks = " \t\r\n";
/// How often the time is looked at.
constexpr std::size_t stringsAtOnce = 1024;

class Reading {
public:
    Reading(std::string_view JSON, StringLines& lines, const Deadline& deadline)
        : rest_(JSON), lines_(lines), deadline_(deadline) {}

    const char* read() {
        std::size_t count = 0;
        while (skipToString()) {
            const auto text = takeString();
            if (!text)
                return "it ends within a string";
            rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
            if (rest_.starts_with(':'))
                lines_.addKey(*text);
            else
                lines_.addString(*text);
            if (++count % stringsAtOnce == 0 && deadline_.isOver())
                return "there was no time for all of it";
            if (lines_.isFull())
                return nullptr;
        }
        return depth_ == 0 ? nullptr : "its brackets do not match";
    }

private:
    bool skipToString() {
        while (!rest_.empty()) {
            const std::size_t at = std::min(rest_.find_first_of("\"/[]{}"), rest_.size());
            rest_.remove_prefix(at);
            if (rest_.starts_with('"'))
                return true;
            if (rest_.starts_with("//")) {
                rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size()));
            } else if (rest_.starts_with("/*")) {
                rest_.remove_prefix(std::min(rest_.find("*/"), rest_.size()));
            } else if (!rest_.empty()) {
                const char bracket = rest_[0];
                depth_ += bracket == '[' || bracket == '{' ? 1 : bracket == '/' ? 0 : -1;
                rest_.remove_prefix(1);
            }
        }
        return false;
    }

    std::optional<std::string> takeString() {
        std::string text;
        for (rest_.remove_prefix(1); !rest_.empty();) {
            const std::size_t plain = std::min(rest_.find_first_of("\"\\"), rest_.size());
            text += rest_.substr(0, plain);
            rest_.remove_prefix(plain);
            if (rest_.starts_with('"')) {
                rest_.remove_prefix(1);
                return text;
            }
            takeEscape(text);
        }
        return std::nullopt;
    }

    void takeEscape(std::string& text) {
        rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
        if (rest_.empty())
            return;
        const char code = rest_[0];
        rest_.remove_prefix(1);
        switch (code) {
        case 'n':
        case 'r':
            text += '\n';
            break;
        case 't':
        case 'b':
        case 'f':
            text += ' ';
            break;
        case 'u':
            appendCharacter(text);
            break;
        default:
            text += code;
        }
    }

    std::optional<char16_t> takeUnit() {
        unsigned unit = 0;
        for (std::size_t at = 0; at < 4; ++at) {
            const int digit = at < rest_.size() ? hexDigitValue(rest_[at]) : -1;
            if (digit < 0)
                return std::nullopt;
            unit = unit * 16 + static_cast<unsigned>(digit);
        }
        rest_.remove_prefix(4);
        return static_cast<char16_t>(unit);
    }

    void appendCharacter(std::string& text) {
        const auto unit = takeUnit();
        if (!unit)
            return;
        std::u16string units(1, *unit);
        const bool isLead = (*unit & 0xFC00) == 0xD800;
        if (isLead && rest_.starts_with("\\u")) {
            rest_.remove_prefix(2);
            if (const auto trail = takeUnit())
                units += *trail;
        }
        text += NSString(std::u16string_view(units)).UTF8String();
    }

    std::string_view rest_;
    StringLines& lines_;
    const Deadline& deadline_;
    std::int64_t depth_ = 0;
};

} // namespace

const char* addStringsOfJSON(std::string_view JSON, StringLines& lines, const Deadline& deadline) {
    return Reading(JSON, lines, deadline).read();
}

bool beginsLikeJSON(std::string_view text) {
    const std::size_t start = text.find_first_not_of(blanks);
    return start != text.npos && (std::string_view("{[\"-/tfn").find(text[start]) != std::string_view::npos ||
                                  isASCIIDigit(text[start]));
}

} // namespace kelvo::importers
