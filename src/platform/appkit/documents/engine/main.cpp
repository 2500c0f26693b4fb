#include "platform/appkit/documents/DocumentEngineMessages.h"
#include "platform/appkit/documents/engine/Confinement.h"
#include "platform/appkit/documents/engine/OfficeLibrary.h"
#include "platform/engine/EngineChannel.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/files/Leftovers.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <system_error>
#include <thread>

namespace kelvo::documentengine {
namespace {

namespace fs = std::filesystem;

/// Less than what EngineChannel gives a child that is stuck.
constexpr std::chrono::seconds timeToExit{1};

void removeFolder(const fs::path& folder) {
    std::error_code ignored;
    if (!folder.empty())
        fs::remove_all(folder, ignored);
}

/// The folder goes with the other side even when a document keeps the main thread busy for ever.
void removeFolderWithOtherSide(int descriptor, const fs::path& folder) {
    pollfd other{descriptor, POLLRDHUP, 0};
    while (::poll(&other, 1, -1) <= 0) {
    }
    std::this_thread::sleep_for(timeToExit);
    removeFolder(folder);
    ::_exit(0);
}

/// What becomes part of a path has to be a plain extension.
bool isExtension(std::string_view text) {
    return !text.empty() && text.size() <= 8 &&
           std::ranges::all_of(text, [](char letter) { return letter >= 'a' && letter <= 'z'; });
}

class Engine {
public:
    explicit Engine(const EngineChannel& channel) : channel_(channel) {}

    Value answerTo(const NSDictionary& message) {
        NSMutableDictionary answer = NSMutableDictionary::dictionary();
        const NSString complaint = loadOffice(message.objectForKey(folderKey).string());
        if (!complaint.isNil()) {
            answer.setObject_forKey(complaint, complaintKey);
            return answer;
        }
        const NSData document = message.objectForKey(documentKey).data();
        const std::string extension = message.objectForKey(extensionKey).string().UTF8String();
        if (!document.isNil() && isExtension(extension)) {
            if (auto rtf = office_->RTFOfDocument(document.characters(), extension))
                answer.setObject_forKey(NSData::dataWithBytesNoCopy(std::move(*rtf)), rtfKey);
        }
        return answer;
    }

    /// What is there for the next document and for nobody else.
    void removeTraces() const { removeFolder(folder_); }

private:
    /// Nil when the office suite is there.
    NSString loadOffice(const NSString& folderPath) {
        if (office_)
            return nullptr;
        const auto path = NSFileManager::defaultManager().fileSystemRepresentationWithPath(folderPath);
        if (!path || !fs::path(*path).is_absolute())
            return u"Word-processor documents cannot be read: no temporary folder.";
        if (folder_.empty()) {
            folder_ = *path;
            folderUse_ = openFolderInUse(AT_FDCWD, folder_);
            std::thread(removeFolderWithOtherSide, channel_.descriptor(), folder_).detach();
        }
        const auto program = officeProgramFolder();
        if (!program)
            return u"Word-processor documents cannot be read: LibreOffice Writer is not installed.";
        moveInto(folder_);
        office_ = OfficeLibrary::load(*program, folder_);
        return office_ ? NSString() : u"Word-processor documents cannot be read: LibreOffice does not start.";
    }

    const EngineChannel& channel_;
    fs::path folder_;
    FileDescriptor folderUse_;
    std::unique_ptr<OfficeLibrary> office_;
};

} // namespace
} // namespace kelvo::documentengine

int main() {
    using namespace kelvo;
    documentengine::leaveNetwork();
    documentengine::boundResources();
    EngineChannel channel;
    documentengine::Engine engine(channel);
    while (const auto message = channel.nextMessage()) {
        if (!channel.answer(engine.answerTo(message->dictionary())))
            break;
    }
    engine.removeTraces();
    // Without the destructors of the office suite, which has threads that still use what they would destroy.
    ::_exit(0);
}
