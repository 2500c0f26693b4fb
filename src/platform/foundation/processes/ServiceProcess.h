#pragma once

namespace kelvo {

/// Makes the calling process a good citizen as a service: closes every descriptor above 2 that it inherited,
/// gives standard input, output and error something to point to, raises its limit of descriptors (a client
/// takes one; see DescriptorLimit.h), renounces new privileges and core files for itself and what it starts,
/// ignores SIGPIPE, unblocks signals that its parent had blocked, and goes to the root folder, so that it keeps
/// nobody's file or volume busy. To be called first, before anything is opened.
void becomeServiceProcess();

} // namespace kelvo
