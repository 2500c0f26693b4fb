#include "importers/subtitles/Subtitles.h"

#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/MIMELines.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace kelvo::importers {
namespace {

std::string_view trimmedOf(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

std::optional<double> takeNumber(std::string_view& text) {
    double number = 0;
    std::size_t length = 0;
    for (; length < text.size() && length < 9 && isASCIIDigit(text[length]); ++length)
        number = number * 10 + (text[length] - '0');
    text.remove_prefix(length);
    return length > 0 ? std::optional(number) : std::nullopt;
}

/// "1:02:03,4" in seconds, without the hours too.
std::optional<double> timeOfText(std::string_view text) {
    double seconds = 0;
    for (;;) {
        const auto number = takeNumber(text);
        if (!number)
            return std::nullopt;
        seconds = seconds * 60 + *number;
        if (!text.starts_with(':'))
            break;
        text.remove_prefix(1);
    }
    if (text.starts_with('.') || text.starts_with(',')) {
        text.remove_prefix(1);
        for (double worth = 0.1; !text.empty() && isASCIIDigit(text[0]); worth /= 10, text.remove_prefix(1))
            seconds += worth * (text[0] - '0');
    }
    return text.empty() || text[0] == ' ' || text[0] == '\t' ? std::optional(seconds) : std::nullopt;
}

/// Finds the ends of what brackets enclose, without looking again for one that is not there.
class Enclosure {
public:
    Enclosure(char open, char close) : open_(open), close_(close) {}

    /// How long what is enclosed at the beginning is, brackets and all; 0 when nothing is.
    std::size_t length(std::string_view text) {
        if (hasNoEnd_ || !text.starts_with(open_))
            return 0;
        const std::size_t end = text.find(close_);
        hasNoEnd_ = end == text.npos;
        return hasNoEnd_ ? 0 : end + 1;
    }

private:
    char open_;
    char close_;
    bool hasNoEnd_ = false;
};

/// Without what stands between "<" and ">" or "{" and "}", unless that has no end, and with the characters that
/// references of WebVTT stand for.
std::string withoutMarkup(std::string_view text) {
    constexpr std::pair<std::string_view, std::string_view> references[] = {
        {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&nbsp;", " "}, {"&lrm;", ""}, {"&rlm;", ""}};
    std::string result;
    Enclosure angles('<', '>');
    Enclosure braces('{', '}');
    while (!text.empty()) {
        if (const std::size_t length = std::max(angles.length(text), braces.length(text)); length > 0) {
            text.remove_prefix(length);
            continue;
        }
        const auto* const reference =
            std::ranges::find_if(references, [&](const auto& each) { return text.starts_with(each.first); });
        if (reference != std::end(references)) {
            result += reference->second;
            text.remove_prefix(reference->first.size());
            continue;
        }
        result += text[0];
        text.remove_prefix(1);
    }
    return result;
}

class Reading {
public:
    explicit Reading(std::string_view file) : rest_(file) {}

    std::optional<Subtitles> read() {
        std::string_view beginning = rest_;
        while (!beginning.empty() && (beginning[0] == '\r' || beginning[0] == '\n'))
            beginning.remove_prefix(1);
        if (beginning.starts_with('{'))
            readFrames();
        else if (beginning.starts_with("[Script Info]"))
            readSections();
        else
            readBlocks();
        const bool isEmptyFile = beginning.starts_with("WEBVTT") || beginning.starts_with("[Script Info]");
        return result_.cues > 0 || isEmptyFile ? std::optional(std::move(result_)) : std::nullopt;
    }

private:
    void write(std::string_view line) {
        line = trimmedOf(line);
        if (line.empty())
            return;
        if (!result_.text.empty())
            result_.text += '\n';
        result_.text += line;
    }

    void endAt(std::optional<double> time) {
        if (time)
            result_.end = std::max(result_.end.value_or(0), *time);
    }

    /// SubRip and WebVTT: a line with the times, what is said, and an empty line.
    void readBlocks() {
        bool isCue = false;
        while (!rest_.empty()) {
            const std::string_view line = takeMIMELine(rest_);
            const std::size_t arrow = line.find("-->");
            if (arrow != line.npos && timeOfText(trimmedOf(line.substr(0, arrow)))) {
                isCue = true;
                ++result_.cues;
                endAt(timeOfText(trimmedOf(line.substr(arrow + 3))));
            } else if (trimmedOf(line).empty()) {
                isCue = false;
            } else if (isCue) {
                write(withoutMarkup(line));
            }
        }
    }

    /// MicroDVD: {begin}{end}, in frames, and lines with "|" between them. The first may say how many there are a second.
    void readFrames() {
        std::optional<double> rate;
        double last = 0;
        while (!rest_.empty()) {
            std::string_view line = trimmedOf(takeMIMELine(rest_));
            const auto begin = takeFrame(line);
            const auto end = begin ? takeFrame(line) : std::nullopt;
            if (!end)
                continue;
            double number = 0;
            const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), number);
            if (result_.cues == 0 && !rate && *begin <= 1 && error == std::errc() &&
                stop == line.data() + line.size() && number >= 1 && number <= 1000) {
                rate = number;
                continue;
            }
            ++result_.cues;
            last = std::max({last, *begin, *end});
            while (!line.empty()) {
                const std::size_t bar = std::min(line.find('|'), line.size());
                write(withoutMarkup(line.substr(0, bar)));
                line.remove_prefix(std::min(bar + 1, line.size()));
            }
        }
        if (rate)
            result_.end = last / *rate;
    }

    static std::optional<double> takeFrame(std::string_view& line) {
        if (!line.starts_with('{'))
            return std::nullopt;
        line.remove_prefix(1);
        const auto number = takeNumber(line);
        if (!line.starts_with('}'))
            return std::nullopt;
        line.remove_prefix(1);
        return number.value_or(0);
    }

    /// SubStation Alpha: sections of lines with a name, and events whose fields have commas between them.
    void readSections() {
        std::size_t endField = 2;
        std::size_t textField = 9;
        while (!rest_.empty()) {
            const std::string_view line = takeMIMELine(rest_);
            const std::size_t colon = std::min(line.find(':'), line.size());
            const std::string_view name = line.substr(0, colon);
            const std::string_view value = trimmedOf(line.substr(std::min(colon + 1, line.size())));
            if (name == "Title")
                result_.title = value;
            else if (name == "Original Script")
                result_.author = value;
            else if (name == "Format" && value.ends_with("Text"))
                readFormat(value, endField, textField);
            else if (name == "Dialogue")
                readDialogue(value, endField, textField);
        }
    }

    static void readFormat(std::string_view fields, std::size_t& endField, std::size_t& textField) {
        for (std::size_t number = 0; !fields.empty(); ++number) {
            const std::size_t end = std::min(fields.find(','), fields.size());
            const std::string_view field = trimmedOf(fields.substr(0, end));
            if (field == "End")
                endField = number;
            else if (field == "Text")
                textField = number;
            fields.remove_prefix(std::min(end + 1, fields.size()));
        }
    }

    void readDialogue(std::string_view fields, std::size_t endField, std::size_t textField) {
        ++result_.cues;
        for (std::size_t number = 0; number < textField; ++number) {
            const std::size_t end = fields.find(',');
            if (end == fields.npos)
                return;
            if (number == endField)
                endAt(timeOfText(trimmedOf(fields.substr(0, end))));
            fields.remove_prefix(end + 1);
        }
        writeDialogue(fields);
    }

    void writeDialogue(std::string_view text) {
        std::string line;
        bool isDrawing = false;
        Enclosure braces('{', '}');
        while (!text.empty()) {
            if (const std::size_t length = braces.length(text); length > 0) {
                const std::string_view codes = text.substr(0, length);
                const std::size_t mode = codes.rfind("\\p");
                if (mode != codes.npos && isASCIIDigit(codes[mode + 2]))
                    isDrawing = codes[mode + 2] != '0';
                text.remove_prefix(length);
                continue;
            }
            const char code = text[0] == '\\' && text.size() > 1 ? text[1] : '\0';
            if (code == 'N' || code == 'n') {
                write(line);
                line.clear();
            } else if (code == 'h') {
                line += ' ';
            } else if (!isDrawing) {
                line += text[0];
            }
            text.remove_prefix(code == 'N' || code == 'n' || code == 'h' ? 2 : 1);
        }
        write(line);
    }

    std::string_view rest_;
    Subtitles result_;
};

} // namespace

std::optional<Subtitles> readSubtitles(std::string_view file) {
    return Reading(file).read();
}

} // namespace kelvo::importers
