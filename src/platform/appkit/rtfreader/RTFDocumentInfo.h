#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

struct RTFToken;
template <typename State>
struct RTFWord;

/// A point in time as RTF states it, by the parts of a date.
class RTFTime {
public:
    void apply(const RTFToken& token);
    /// Absent when there is no year that documents are from. Without the seconds since the reference date the
    /// parts are taken for local time.
    std::optional<NSDate> date() const;

private:
    std::optional<std::int32_t> sinceReferenceDate_;
    std::int32_t year_ = 0;
    std::int32_t month_ = 1;
    std::int32_t day_ = 1;
    std::int32_t hour_ = 0;
    std::int32_t minute_ = 0;
    std::int32_t second_ = 0;
};

/// What a document says of itself.
class RTFDocumentInfo {
public:
    static std::span<const RTFWord<RTFDocumentInfo>> words();
    /// The text of a group, such as "title".
    void setText(std::string_view word, std::u16string_view text);
    /// "creatim" or "revtim".
    void setTime(std::string_view word, const RTFTime& time);

    /// The name and version of the writer.
    void setGenerator(std::u16string_view name);

    /// The writer leaves out of the text what its style inherits. Others repeat all of it, and with them what
    /// is not there is not meant.
    bool leavesOutInherited() const { return leavesOutInherited_; }
    /// The writer is one of the platform, or says so.
    bool isOfPlatform() const { return version_.has_value(); }
    /// Under the keys of NSDocumentAttributes.h.
    NSDictionary documentAttributes(bool isPackage) const;

private:
    NSMutableDictionary stated_ = NSMutableDictionary::dictionary();
    std::optional<std::int32_t> version_;
    bool leavesOutInherited_ = false;
    std::int32_t paperWidth_ = 12240;
    std::int32_t paperHeight_ = 15840;
    std::int32_t leftMargin_ = 1800;
    std::int32_t rightMargin_ = 1800;
    std::int32_t topMargin_ = 1440;
    std::int32_t bottomMargin_ = 1440;
    std::int32_t viewWidth_ = 0;
    std::int32_t viewHeight_ = 0;
    std::int32_t tabInterval_ = 720;
    std::int32_t textScaling_ = 0;
    bool isHyphenated_ = false;
    std::int32_t hyphenationPercent_ = 0;
};

} // namespace kelvo
