#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"

#include <string>
#include <string_view>

namespace kelvo {

struct RTFToken;

/// The place of an attachment in the text of a package: the name of its file, and how large it is shown.
class RTFPackageMark {
public:
    /// UTF-8, up to the first word.
    void appendName(std::string_view bytes);
    void apply(const RTFToken& word);

    NSString name() const;
    /// In points; 0 where nothing is said.
    NSSize displaySize() const { return displaySize_; }

private:
    std::string name_;
    bool isNameEnded_ = false;
    NSSize displaySize_;
};

} // namespace kelvo
