#pragma once

#include <webkit2/webkit-web-extension.h>

namespace kelvo {

/// Has the page of this web process described, that is, all the frames of it: the walk (Walk.js) runs in each
/// frame by itself, with what its own origin may see, in a world of its own that no page reaches into. The
/// engine asks with the message "walk".
///
/// To be called once, when the extension starts.
void answerWalks(WebKitWebExtension* extension);

} // namespace kelvo
