#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace kelvo {

/// The folder of the program that this process runs, in file-system bytes and without a slash at its end;
/// empty when the kernel does not tell.
std::string folderOfThisProgram();

/// Children of this process that have not been collected.
std::vector<pid_t> childProcesses();
/// Those of that name; the kernel keeps the first 15 bytes of it.
std::vector<pid_t> childProcessesNamed(std::string_view name);

/// What a process holds in memory; 0 when there is no such process.
std::uint64_t residentBytesOfProcess(pid_t process);

} // namespace kelvo
