#include "platform/postscript/PostScriptFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::string_view binaryHead = "\xC5\xD0\xD3\xC6";
constexpr std::size_t binaryHeadLength = 30;
/// Comments at the beginning and at the end are looked for no farther in.
constexpr std::size_t longestComments = std::size_t{64} << 10;
/// Where readers of PDFs look for their beginning.
constexpr std::size_t longestPDFPreamble = 1024;

/// The bytes of such a range, as far as they are there.
NSData part(const NSData& data, std::size_t location, std::size_t most) {
    const std::size_t begin = std::min(location, data.length());
    return data.subdataWithRange({begin, std::min(most, data.length() - begin)});
}

std::size_t littleEndian32(std::string_view bytes, std::size_t at) {
    std::size_t value = 0;
    for (std::size_t index = 4; index > 0; --index)
        value = value << 8 | static_cast<unsigned char>(bytes[at + index - 1]);
    return value;
}

/// The next line of what is left, without its end: CR or LF. Between the two, where both end a line, is an empty one.
std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end);
    if (!rest.empty())
        rest.remove_prefix(1);
    return line;
}

/// The word at the beginning, and what comes after it.
std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

/// As many numbers as the array has, whatever comes after them.
template <std::size_t count>
std::optional<std::array<double, count>> numbersIn(std::string_view text) {
    std::array<double, count> numbers{};
    for (double& number : numbers) {
        std::string_view word = takeWord(text);
        if (word.starts_with('+'))
            word.remove_prefix(1);
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(number))
            return std::nullopt;
    }
    return numbers;
}

bool isSide(double length) {
    return length >= PostScriptFile::shortestSide && length <= PostScriptFile::longestSide;
}

std::optional<NSRect> boxIn(std::string_view text) {
    const auto corners = numbersIn<4>(text);
    if (!corners)
        return std::nullopt;
    const auto [left, bottom, right, top] = *corners;
    if (!isSide(right - left) || !isSide(top - bottom) ||
        std::max(std::abs(left), std::abs(bottom)) > PostScriptFile::longestSide)
        return std::nullopt;
    return NSRect{{static_cast<float>(left), static_cast<float>(bottom)},
                  {static_cast<float>(right - left), static_cast<float>(top - bottom)}};
}

/// What the comments say of sizes.
class Comments {
public:
    /// Of several of a kind at the beginning the first counts, and of several at the end the last.
    enum class Place : std::uint8_t { beginning, end };

    void read(std::string_view line, Place place) {
        if (!line.starts_with("%%"))
            return;
        const std::size_t colon = line.find(':');
        if (colon == line.npos)
            return;
        const std::string_view key = line.substr(2, colon - 2);
        std::string_view value = line.substr(colon + 1);
        if (key == "HiResBoundingBox")
            set(fineBox_, value, place);
        else if (key == "BoundingBox")
            set(box_, value, place);
        else if (key == "PageBoundingBox")
            set(pageBox_, value, place);
        else if (key == "DocumentMedia" && !media_)
            readMedia(value);
    }

    bool continueAtEnd() const { return continueAtEnd_; }
    std::optional<NSRect> box() const { return fineBox_ ? fineBox_ : box_; }
    std::optional<NSRect> pageBox() const { return pageBox_; }
    std::optional<NSSize> media() const { return media_; }

private:
    void set(std::optional<NSRect>& box, std::string_view value, Place place) {
        std::string_view rest = value;
        if (takeWord(rest) == "(atend)") {
            continueAtEnd_ = true;
            return;
        }
        if (place == Place::end || !box) {
            if (const auto found = boxIn(value))
                box = found;
        }
    }

    /// Its name, which may be a string in parentheses, then its size.
    void readMedia(std::string_view value) {
        takeWord(value);
        if (const auto sides = numbersIn<2>(value); sides && isSide((*sides)[0]) && isSide((*sides)[1]))
            media_ = NSSize{static_cast<float>((*sides)[0]), static_cast<float>((*sides)[1])};
    }

    std::optional<NSRect> fineBox_;
    std::optional<NSRect> box_;
    std::optional<NSRect> pageBox_;
    std::optional<NSSize> media_;
    bool continueAtEnd_ = false;
};

/// Where the program begins; npos when there is none.
std::size_t beginOfProgram(std::string_view bytes) {
    if (bytes.starts_with("%!"))
        return 0;
    constexpr std::string_view mark = "%!PS";
    constexpr std::string_view leavingJobLanguage = "\x1B%-12345X";
    const std::string_view searched = bytes.substr(0, PostScriptFile::longestPreamble + mark.size());
    for (std::size_t at = searched.find(mark); at != searched.npos; at = searched.find(mark, at + 1)) {
        const std::string_view before = searched.substr(0, at);
        constexpr std::string_view separators = "\r\n\f\x04";
        if (separators.find(before.back()) != separators.npos || before.ends_with(leavingJobLanguage))
            return at;
    }
    return bytes.npos;
}

bool isPDF(std::string_view bytes, std::size_t program) {
    constexpr std::string_view mark = "%PDF-";
    const std::string_view firstLine = bytes.substr(program, bytes.find_first_of("\r\n", program) - program);
    return std::min(program, bytes.substr(0, longestPDFPreamble).find(mark)) < program ||
           firstLine.find(" PDF-") != firstLine.npos;
}

void readComments(std::string_view bytes, Comments& comments) {
    bool isInHead = true;
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::string_view line = takeLine(rest);
        if (line.starts_with("%%EndComments") || !(line.empty() || line.starts_with('%')))
            isInHead = false;
        // Of its pages each says it for itself, and all else there may be of a file within the file.
        if (isInHead || line.starts_with("%%PageBoundingBox:"))
            comments.read(line, Comments::Place::beginning);
    }
}

void readCommentsAtEnd(std::string_view bytes, Comments& comments) {
    const std::size_t trailer = bytes.rfind("%%Trailer");
    for (std::string_view rest = bytes.substr(trailer == bytes.npos ? 0 : trailer); !rest.empty();)
        comments.read(takeLine(rest), Comments::Place::end);
}

} // namespace

NSRect PostScriptFile::page() const noexcept {
    if (boundingBox)
        return *boundingBox;
    return mediaSize ? NSRect{{0, 0}, *mediaSize} : defaultPage;
}

std::optional<PostScriptFile> PostScriptFile::read(const NSData& data) {
    PostScriptFile file;
    file.program = {0, data.length()};
    const NSData head = part(data, 0, binaryHeadLength);
    if (head.length() == binaryHeadLength && head.characters().starts_with(binaryHead)) {
        file.isEncapsulated = true;
        file.program.location = std::min(littleEndian32(head.characters(), 4), data.length());
        file.program.length =
            std::min(littleEndian32(head.characters(), 8), data.length() - file.program.location);
    }
    const NSData beginning =
        part(data, file.program.location, std::min(file.program.length, longestPreamble + longestComments));
    const std::size_t begin = beginOfProgram(beginning.characters());
    if (begin == std::string_view::npos || isPDF(beginning.characters(), begin))
        return std::nullopt;
    const std::string_view program = beginning.characters().substr(begin);
    file.program.location += begin;
    file.program.length -= begin;
    const std::string_view firstLine = program.substr(0, program.find_first_of("\r\n"));
    file.isEncapsulated = file.isEncapsulated || firstLine.find(" EPSF-") != firstLine.npos;

    Comments comments;
    readComments(program, comments);
    if (comments.continueAtEnd()) {
        const std::size_t length = std::min(file.program.length, longestComments);
        const NSData end = part(data, file.program.location + file.program.length - length, length);
        readCommentsAtEnd(end.characters(), comments);
    }
    file.boundingBox = comments.box();
    file.mediaSize = comments.media();
    if (!file.boundingBox && !file.mediaSize)
        file.boundingBox = comments.pageBox();
    return file;
}

} // namespace kelvo
