#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace kelvo {

/// The folder of the program that this process runs, in file-system bytes and without a slash at its end;
/// empty when the kernel does not tell.
std::string folderOfThisProgram();

/// What a process holds in memory; 0 when there is no such process.
std::uint64_t residentBytesOfProcess(pid_t process);

} // namespace kelvo
