#pragma once

#include "platform/appkit/NSTextAttributes.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/Visibility.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KELVO_PUBLIC kelvo {

/// Immutable text with attributes, shared by reference. Default-constructed it is nil; nil is not the empty
/// text, but both have length 0.
///
/// The attributes form runs: consecutive, not empty, covering the whole text. Neighbours are never equal, but
/// for those in two tables or lists that are alike. Within one text runs with equal attributes as a rule
/// share one object.
class NSAttributedString {
public:
    using Attributes = std::shared_ptr<const NSTextAttributes>;
    struct Run {
        /// In UTF-16 units of the text.
        NSRange range;
        /// Never null.
        Attributes attributes;
    };

    NSAttributedString() noexcept = default;
    NSAttributedString(std::nullptr_t) noexcept {}
    /// One run over the whole text. Nil text gives nil.
    explicit NSAttributedString(const NSString& string, const NSTextAttributes& attributes = {});

    bool isNil() const noexcept { return !rep_; }
    std::size_t length() const noexcept { return rep_ ? rep_->string.length() : 0; }
    /// Nil for nil.
    NSString string() const { return rep_ ? rep_->string : NSString(); }
    /// In the order of the text; valid as long as any handle on it.
    std::span<const Run> runs() const noexcept {
        return rep_ ? std::span<const Run>(rep_->runs) : std::span<const Run>();
    }
    /// The run that holds the unit. Throws NSException (NSRangeException) at or past the end.
    const Run& runAtIndex(std::size_t index) const;
    /// Throws NSException (NSRangeException) when the range passes the end. The whole range gives the
    /// receiver.
    NSAttributedString attributedSubstringFromRange(NSRange range) const;
    bool isIdenticalTo(const NSAttributedString& other) const noexcept { return rep_ == other.rep_; }

    /// Nil for nil.
    operator Value() const { return Value(std::shared_ptr<const AttributedText>(rep_)); }
    /// Nil when the value is none.
    static NSAttributedString withValue(const Value& value);

    /// Equal text in equal runs. Nil equals nil alone.
    KELVO_PUBLIC_FRIEND bool operator==(const NSAttributedString& left, const NSAttributedString& right);

private:
    friend class NSMutableAttributedString;
    struct Rep final : AttributedText {
        NSString plainString() const override { return string; }
        bool isEqualToText(const AttributedText& other) const override;

        NSString string;
        std::vector<Run> runs;
    };
    std::shared_ptr<const Rep> rep_;
};

/// Attributed text under construction: readers append to it.
class NSMutableAttributedString {
public:
    using Attributes = NSAttributedString::Attributes;
    using Run = NSAttributedString::Run;

    NSMutableAttributedString() = default;
    /// A mutable copy; nil gives the empty text.
    explicit NSMutableAttributedString(const NSAttributedString& text);

    std::size_t length() const noexcept { return units_.length(); }
    std::u16string_view characters() const noexcept { return units_; }
    std::span<const Run> runs() const noexcept { return runs_; }

    /// Room for so many units in all.
    void reserve(std::size_t length) { units_.reserve(length); }
    /// `attributes` must not be null. Throws NSException (NSMallocException) when the text would pass
    /// maximumSizeInBytes.
    void append(std::u16string_view units, const Attributes& attributes);
    void append(const NSAttributedString& text);
    /// Cuts the text off there; nothing happens at or past its end.
    void truncate(std::size_t length);
    /// Gives the range these attributes in place of what it had. Throws NSException (NSRangeException) when
    /// the range passes the end.
    void setAttributes_range(const Attributes& attributes, NSRange range);

    /// The present text, never nil.
    NSAttributedString copy() const&;
    /// The same without a copy of the runs, nor of text that fills its room; the receiver is empty afterwards.
    NSAttributedString copy() &&;

private:
    void appendRun(NSRange range, const Attributes& attributes);

    NSMutableString units_ = NSMutableString::string();
    std::vector<Run> runs_;
};

} // namespace kelvo
