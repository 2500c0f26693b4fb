#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

/// What an engine needs of the system. All else is refused. Paths are absolute, in file-system bytes; those
/// that do not exist are passed over.
///
/// What every program needs that only computes is not named: the system's own libraries, its locales and time
/// zones, the few devices without a state, and what the kernel says of the machine and of the process itself.
struct ConfinementProfile {
    /// Files, and folders with all below them, that may be read and mapped as libraries.
    std::vector<std::string> readable;
    /// Folders in which files, folders, sockets (where these are allowed) and links to files may be made,
    /// changed and removed. Symbolic links, pipes and devices may be made nowhere.
    std::vector<std::string> writable;
    /// Sockets of the machine itself may be made and offered to others; never connected to those of others.
    /// Pairs of connected sockets may be made in any case.
    bool mayServeUnixSockets = false;
    /// Programs that are readable may be started, shut in as this process is. Otherwise no process at all.
    bool mayStartPrograms = false;
    /// So that the network, and names of sockets, are the machine's own. Which of them may be reached is left to
    /// the other layers.
    bool keepsNetwork = false;
    /// Landlock keeps it from files, and leaves TCP, sockets without a path and signals alone.
    bool landlockIsOfFilesAlone = false;
    /// No limit when 0, and in programs with sanitizers, which take a great deal of addresses for themselves.
    std::uint64_t addressSpaceBytes = 0;
    /// Who writes more into one file is ended by SIGXFSZ.
    std::uint64_t largestFileBytes = std::uint64_t{1} << 30;
};

/// So that tests see which layer holds.
struct ConfinementSwitches {
    bool network = true;
    bool landlock = true;
    bool systemCalls = true;
};

/// What shuts this process in.
struct ConfinementLayers {
    /// Memory, size of files, no core file, no privileges.
    bool limits = false;
    /// A network of its own, in which there is nothing.
    bool noNetwork = false;
    /// Which version of Landlock keeps it from files; 0 for none. What the versions lack: 1 moving files between
    /// folders of its own, 1 and 2 a say in truncation (which the filter has instead), 1 to 3 one in TCP, 1 to 5
    /// one in signals and in sockets without a path.
    int landlock = 0;
    /// The filter of system calls.
    bool systemCalls = false;
    /// Why a layer is not there, in one sentence; empty when all are that were asked for.
    std::string missing;

    /// "limits, no network, landlock 6, seccomp"; "none".
    std::string names() const;
};

/// Shuts this process in for good, with all processes that it will start. To be called when all libraries are
/// loaded that are not readable afterwards, and before the first byte of a stranger is looked at.
///
/// To be called while there is one thread: Landlock holds only the calling thread and those that it starts
/// later, and a process with several threads cannot leave the network. The filter and the limits hold all
/// threads. The process must have its place among the processes already: it can neither leave its group or
/// session afterwards nor signal any other process than itself, and, when it leads its group, that group.
///
/// Layers that the system does not have are left out. Calls that only an attack makes end the process by SIGSYS;
/// all others that are refused answer an error.
ConfinementLayers confine(const ConfinementProfile& profile, const ConfinementSwitches& switches = {});

/// The part of confine() that cannot wait until there are several threads, for a program that learns its profile
/// late; confine() then finds it done. False when the system does not let a process leave the network by itself,
/// as in many containers.
bool leaveNetwork();

} // namespace kelvo
