#include "platform/foundation/processes/NSPipe.h"

#include "platform/foundation/NSException.h"

#include <fcntl.h>
#include <unistd.h>

namespace kelvo {

std::shared_ptr<NSPipe> NSPipe::pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw NSException(NSFileHandleOperationException, u"The system has no pipe left.");
    FileDescriptor readingEnd(ends[0]);
    FileDescriptor writingEnd(ends[1]);
    std::shared_ptr<NSPipe> pipe(new NSPipe);
    pipe->reading_ = std::make_shared<NSFileHandle>(std::move(readingEnd));
    pipe->writing_ = std::make_shared<NSFileHandle>(std::move(writingEnd));
    return pipe;
}

} // namespace kelvo
