#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <exception>
#include <string>

namespace KELVO_PUBLIC kelvo {

inline constexpr const char16_t* NSGenericException = u"NSGenericException";
inline constexpr const char16_t* NSInvalidArgumentException = u"NSInvalidArgumentException";
inline constexpr const char16_t* NSMallocException = u"NSMallocException";
inline constexpr const char16_t* NSRangeException = u"NSRangeException";
inline constexpr const char16_t* NSUndefinedKeyException = u"NSUnknownKeyException";

/// What platform readers throw when something is broken (what is merely absent is a nil result). It is caught
/// exactly where an operation's contract says so.
class NSException : public std::exception {
public:
    NSException(NSString name, NSString reason);

    const NSString& name() const noexcept { return name_; }
    const NSString& reason() const noexcept { return reason_; }
    /// "name: reason" in UTF-8.
    const char* what() const noexcept override { return text_.c_str(); }

private:
    NSString name_;
    NSString reason_;
    std::string text_;
};

} // namespace kelvo
