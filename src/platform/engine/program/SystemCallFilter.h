#pragma once

namespace kelvo {

struct SystemCallAllowances {
    /// Sockets of the machine itself may be made, bound and listened at, not connected.
    bool servesUnixSockets = false;
    /// Processes may be made, and programs executed in them.
    bool startsPrograms = false;
    /// Files are truncated only by descriptors that can be written to: for where Landlock has no say in that.
    bool refusesTruncation = false;
};

/// Lets all threads of this process, and what it starts from now on, make only the system calls of programs that
/// compute, read and write files and run threads. Whatever is not known answers ENOSYS; what libraries try in
/// good faith answers an error that they understand; what only an attack does ends the process by SIGSYS. False
/// when the kernel has no filters.
///
/// What a file's descriptor or path lets one do besides reading and writing (its mode, owner, times, attributes,
/// leases, whom it signals) is refused as well: no rule about paths covers it, and files that are handed over
/// belong to the user.
bool filterSystemCalls(const SystemCallAllowances& allowances);

} // namespace kelvo
