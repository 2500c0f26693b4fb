#pragma once

#include <webkit2/webkit2.h>

namespace kelvo {

/// Settings of a view that reads pages as rich text would show them: Times 12 for what says nothing, all
/// images at once, nothing stored, nothing played, and no connection that the request gate is not asked
/// about.
WebKitSettings* newPageSettings();

/// Has the view show, ask, download and open nothing.
void keepToThePage(WebKitWebView* view);

} // namespace kelvo
