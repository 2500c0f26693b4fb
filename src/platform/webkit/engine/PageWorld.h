#pragma once

namespace kelvo {

/// The world of our own scripts in a page: its objects, and what it makes of theirs, are out of reach of the
/// page's.
inline constexpr char isolatedWorld[] = "plumwick";

// What the engine program asks the extension in the web process. Each is answered with a byte string, or with
// nothing when there is no page.

/// How far the page has come: its "readyState", or "loaded" once all of it has.
inline constexpr char stateMessage[] = "state";
/// With the bounds of the walk through the page (a script): what it wrote down.
inline constexpr char walkMessage[] = "walk";

} // namespace kelvo
