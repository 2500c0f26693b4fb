#include "platform/appkit/NSAttributedString.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/NSException.h"

#include <algorithm>

namespace kelvo {
namespace {

bool areEqual(const NSAttributedString::Attributes& left, const NSAttributedString::Attributes& right) {
    return left == right || *left == *right;
}

/// Whether the paragraphs are in the same tables and lists, not just in ones that look alike.
bool areInSamePlace(const NSTextAttributes& left, const NSTextAttributes& right) {
    if (left.paragraphStyle == right.paragraphStyle)
        return true;
    const NSParagraphStyle& one = left.style();
    const NSParagraphStyle& other = right.style();
    const auto tableOf = [](const auto& block) { return block->table; };
    return one.textLists == other.textLists &&
           std::ranges::equal(one.textBlocks, other.textBlocks, {}, tableOf, tableOf);
}

/// The first run that ends after the unit.
template <typename Runs>
auto runHolding(Runs& runs, std::size_t index) {
    return std::ranges::upper_bound(runs, index, {}, [](const NSAttributedString::Run& run) {
        return run.range.location + run.range.length;
    });
}

void requireRange(NSRange range, std::size_t length) {
    if (!rangeFits(range, length))
        throw NSException(NSRangeException, u"The range passes the end of the attributed text.");
}

} // namespace

bool operator==(const NSTextAttachment& left, const NSTextAttachment& right) {
    return left.displaySize == right.displaySize &&
           (left.fileWrapper == right.fileWrapper ||
            (left.fileWrapper && right.fileWrapper && *left.fileWrapper == *right.fileWrapper));
}

bool operator==(const NSTextAttributes& left, const NSTextAttributes& right) {
    return left.font == right.font && left.foregroundColor == right.foregroundColor &&
           left.backgroundColor == right.backgroundColor && left.underlineStyle == right.underlineStyle &&
           left.strikethroughStyle == right.strikethroughStyle && left.superscript == right.superscript &&
           left.baselineOffset == right.baselineOffset && left.kern == right.kern &&
           left.link == right.link &&
           (left.attachment == right.attachment ||
            (left.attachment && right.attachment && *left.attachment == *right.attachment)) &&
           (left.paragraphStyle == right.paragraphStyle || left.style() == right.style());
}

NSAttributedString::NSAttributedString(const NSString& string, const NSTextAttributes& attributes) {
    if (string.isNil())
        return;
    auto rep = std::make_shared<Rep>();
    rep->string = string;
    if (!string.isEmpty())
        rep->runs.push_back({{0, string.length()}, std::make_shared<const NSTextAttributes>(attributes)});
    rep_ = std::move(rep);
}

const NSAttributedString::Run& NSAttributedString::runAtIndex(std::size_t index) const {
    requireRange({index, 1}, length());
    return *runHolding(rep_->runs, index);
}

NSAttributedString NSAttributedString::attributedSubstringFromRange(NSRange range) const {
    requireRange(range, length());
    if (isNil() || range == NSRange{0, length()})
        return *this;
    auto rep = std::make_shared<Rep>();
    rep->string = rep_->string.substringWithRange(range);
    const std::size_t end = range.location + range.length;
    for (auto run = runHolding(rep_->runs, range.location);
         run != rep_->runs.end() && run->range.location < end; ++run) {
        const std::size_t first = std::max(run->range.location, range.location);
        const std::size_t last = std::min(run->range.location + run->range.length, end);
        rep->runs.push_back({{first - range.location, last - first}, run->attributes});
    }
    NSAttributedString result;
    result.rep_ = std::move(rep);
    return result;
}

NSAttributedString NSAttributedString::withValue(const Value& value) {
    NSAttributedString result;
    // Nothing else is ever attributed text.
    result.rep_ = std::static_pointer_cast<const Rep>(value.attributedText());
    return result;
}

bool NSAttributedString::Rep::isEqualToText(const AttributedText& other) const {
    const Rep& right = static_cast<const Rep&>(other);
    return string == right.string && std::ranges::equal(runs, right.runs, [](const Run& one, const Run& two) {
               return one.range == two.range && areEqual(one.attributes, two.attributes);
           });
}

bool operator==(const NSAttributedString& left, const NSAttributedString& right) {
    if (left.rep_ == right.rep_)
        return true;
    return left.rep_ && right.rep_ && left.rep_->isEqualToText(*right.rep_);
}

NSMutableAttributedString::NSMutableAttributedString(const NSAttributedString& text)
    : units_(NSMutableString::stringWithCharacters(text.string())),
      runs_(text.runs().begin(), text.runs().end()) {}

void NSMutableAttributedString::appendRun(NSRange range, const Attributes& attributes) {
    if (range.length == 0)
        return;
    if (!runs_.empty() && areEqual(runs_.back().attributes, attributes) &&
        areInSamePlace(*runs_.back().attributes, *attributes))
        runs_.back().range.length += range.length;
    else
        runs_.push_back({range, attributes});
}

void NSMutableAttributedString::append(std::u16string_view units, const Attributes& attributes) {
    // What was moved away left nil.
    if (units_.isNil())
        units_ = NSMutableString::string();
    const NSRange range{units_.length(), units.size()};
    units_.appendString(units);
    appendRun(range, attributes);
}

void NSMutableAttributedString::append(const NSAttributedString& text) {
    const std::u16string_view units = text.string().characters();
    for (const Run& run : text.runs())
        append(units.substr(run.range.location, run.range.length), run.attributes);
}

void NSMutableAttributedString::truncate(std::size_t length) {
    if (length >= units_.length())
        return;
    units_.setLength(length);
    runs_.erase(runHolding(runs_, length) + 1, runs_.end());
    runs_.back().range.length = length - runs_.back().range.location;
    if (runs_.back().range.length == 0)
        runs_.pop_back();
}

void NSMutableAttributedString::setAttributes_range(const Attributes& attributes, NSRange range) {
    requireRange(range, units_.length());
    if (range.length == 0)
        return;
    const std::size_t end = range.location + range.length;
    std::vector<Run> old;
    const auto first = runHolding(runs_, range.location);
    old.assign(std::make_move_iterator(first), std::make_move_iterator(runs_.end()));
    runs_.erase(first, runs_.end());
    const Run& head = old.front();
    if (head.range.location < range.location)
        appendRun({head.range.location, range.location - head.range.location}, head.attributes);
    appendRun(range, attributes);
    for (const Run& run : old) {
        const std::size_t runEnd = run.range.location + run.range.length;
        if (runEnd <= end)
            continue;
        const std::size_t start = std::max(run.range.location, end);
        appendRun({start, runEnd - start}, run.attributes);
    }
}

NSAttributedString NSMutableAttributedString::copy() const& {
    NSMutableAttributedString twin(*this);
    return std::move(twin).copy();
}

NSAttributedString NSMutableAttributedString::copy() && {
    auto rep = std::make_shared<NSAttributedString::Rep>();
    const bool isFull = units_.capacity() - units_.length() <= units_.length() / 8;
    rep->string = isFull ? units_.takeString() : units_.copy();
    rep->runs = std::move(runs_);
    units_ = NSMutableString::string();
    runs_.clear();
    NSAttributedString result;
    result.rep_ = std::move(rep);
    return result;
}

} // namespace kelvo
