#pragma once

#include "platform/foundation/NSData.h"

namespace kelvo {

/// The tool that lists the importers, where a system has one.
inline constexpr const char16_t* mdimportPath = u"/usr/bin/mdimport";

/// What the tool, run for the list ("-L"), writes to its standard error. Nil when there is none. One that still runs
/// after that many seconds, or has written more than a megabyte by then, is ended, and what it wrote until then, up to
/// the last whole character, counts; its exit status never does.
///
/// Throws NSException when the tool cannot be launched.
NSData listingOfImporterTool(double seconds = 10);

} // namespace kelvo
