#pragma once

#include "platform/foundation/NSURL.h"

#include <string>

namespace kelvo {

/// Which files of this machine a page may load: what pages consist of, and nothing that hangs, never ends or
/// is none of its business.
class PageFiles {
public:
    /// `pageURL` (may be nil) is where the page stands. Only one that is a file has a folder with scripts of
    /// its own.
    explicit PageFiles(const NSURL& pageURL);

    /// Whether the file URL leads to a regular file, links followed, that is a picture, a style sheet, a font
    /// or markup, by its name or, where that says nothing, by its contents; or a script, by its name, in the
    /// page's folder or below.
    ///
    /// The file is looked at before it is loaded and may be another one by then: who can exchange it owns it.
    bool mayLoad(const NSURL& url) const;

private:
    /// With a slash at its end, links resolved; empty when there is none.
    std::string scriptFolder_;
};

} // namespace kelvo
