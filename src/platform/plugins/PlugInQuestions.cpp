#include "platform/plugins/PlugInQuestions.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/plugins/ImporterEngineMessages.h"

#include <fcntl.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using namespace importerengine;

/// What the plug-in needs to read the answer.
constexpr double secondsForPlugIn = 4;

OfficeDocumentReader& officeDocumentReader() {
    static OfficeDocumentReader reader;
    return reader;
}

/// No link is followed, because it may lead out of the package.
NSData fileInPackage(const NSString& package, const NSString& name) {
    const auto units = name.characters();
    if (name.isEmpty() || name == u"." || name == u".." || units.find(u'/') != units.npos)
        return nullptr;
    const auto path = NSFileManager::defaultManager().fileSystemRepresentationWithPath(
        stringByAppendingPathComponent(package, name));
    FileDescriptor file(path ? ::open(path->c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC) : -1);
    return file.get() < 0 ? NSData() : NSData::dataWithContentsOfDescriptorWhenNeeded(file.release());
}

NSData officeDocument(const ImportedFile& file, double seconds) {
    if (!officeDocumentReader() || file.contents.isNil() || seconds <= 0)
        return nullptr;
    // What becomes of the text alone is said of the attributes that there are.
    NSString sentence;
    std::optional<Outcome> outcome;
    std::vector<RequestNotes::EngineUse> engines;
    NSData document;
    {
        const RequestNotes notes;
        try {
            document = officeDocumentReader()(file.contents, file.contentType, seconds);
            sentence = document.isNil() ? notes.sentence() : notes.sentenceOfResult();
        } catch (const NSException& exception) {
            sentence = notes.sentence().isNil() ? sentenceOfReason(exception.reason()) : notes.sentence();
        }
        engines = notes.engines();
        outcome = notes.outcome();
    }
    if (RequestNotes* const notes = RequestNotes::current())
        std::ranges::for_each(engines, [&](const RequestNotes::EngineUse& use) { notes->noteEngine(use); });
    // Where the plug-in has nothing to set, that is why.
    if (document.isNil() && outcome)
        noteOutcome(*outcome, sentence);
    if (!sentence.isNil())
        noteOutcome(Outcome::answered,
                    document.isNil() ? stringWithFormat(u"the text is missing: %@", sentence) : sentence);
    return document;
}

} // namespace

void setOfficeDocumentReader(OfficeDocumentReader reader) {
    officeDocumentReader() = std::move(reader);
}

NSData answerToPlugIn(const NSDictionary& question, const ImportedFile& file, double secondsLeft) {
    const NSString kind = question.objectForKey(questionKey).string();
    if (kind == packageFileQuestion)
        return fileInPackage(file.path, question.objectForKey(nameKey).string());
    return kind == officeDocumentQuestion ? officeDocument(file, secondsLeft - secondsForPlugIn) : NSData();
}

} // namespace kelvo
