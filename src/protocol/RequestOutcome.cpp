#include "protocol/RequestOutcome.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "protocol/ResultKeys.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace kelvo {
namespace {

/// What a missing result says when nobody said more, in the order of Operation.
constexpr std::array<const char16_t*, operationCount> sentencesOfNothing{
    u"no importer found anything in it",
    u"no page could be made of it",
    u"it could not be written",
    u"it has no text, or is no web archive that can be read",
    u"it is no document that can be read",
    u"it is no movie that can be read",
    u"it is no PDF that can be read",
    u"it is no image that can be read",
    u"it is nothing that can be turned into PDF"};

RequestOutcome troubleOfError(int error, bool isWritten) {
    if (error == ENOENT || error == ENOTDIR)
        return {Outcome::nothing, isWritten ? u"there is no such folder" : u"there is no such file"};
    if (error == EACCES || error == EROFS)
        return {Outcome::locked, isWritten ? u"the folder may not be written" : u"it may not be read"};
    return {Outcome::broken, NSString::stringByRepairingUTF8String("it cannot be used: " +
                                                                   std::system_category().message(error))};
}

/// What keeps the file from being read, or the folder from taking what is to be written.
std::optional<RequestOutcome> troubleWithFile(Operation operation, const NSString& file) {
    if (file.isNil())
        return std::nullopt;
    const bool isWritten = operation == Operation::writeRTFDData;
    const auto path = NSFileManager::defaultManager().fileSystemRepresentationWithPath(file);
    if (!path)
        return troubleOfError(ENOENT, isWritten);
    const std::string touched = isWritten ? std::filesystem::path(*path).parent_path().string() : *path;
    if (access(touched.c_str(), isWritten ? W_OK | X_OK : R_OK) == 0)
        return std::nullopt;
    return troubleOfError(errno, isWritten);
}

/// What was noted as a reason against an answer.
std::optional<RequestOutcome> notedTrouble(const RequestNotes& notes) {
    if (!notes.outcome() || *notes.outcome() <= Outcome::nothing)
        return std::nullopt;
    return RequestOutcome{*notes.outcome(), notes.sentence()};
}

/// A file that is no movie is answered as well: with no length, no size and no picture.
bool isOfNoMovie(const NSDictionary& result) {
    const NSNumber* const duration = result.objectForKey(ResultDurationKey).numberIfAny();
    return duration && duration->floatValue() == 0 &&
           result.objectForKey(ResultSizeKey) == Value(NSStringFromSize({})) &&
           result.objectForKey(ResultThumbnailKey).isNil();
}

} // namespace

bool isAnswer(Operation operation, const NSDictionary& result) {
    if (operation == Operation::metaDataForFile)
        return result.count() > 0;
    if (operation == Operation::posterImageForMovieWithFile)
        return !result.isNil() && !isOfNoMovie(result);
    return operation == Operation::searchableTextOfWebArchive ? !result.objectForKey(ResultStringKey).isNil()
                                                              : !result.isNil();
}

bool isAnswer(Operation, const NSData& result) {
    return !result.isNil();
}

bool isAnswer(Operation, bool result) {
    return result;
}

RequestOutcome outcomeOfResult(Operation operation, bool isAnswered) {
    if (isAnswered)
        return {Outcome::answered, nullptr};
    return {Outcome::nothing, sentencesOfNothing[static_cast<std::size_t>(operation)]};
}

RequestOutcome outcomeOfFailure(const std::exception& failure) {
    const auto* const exception = dynamic_cast<const NSException*>(&failure);
    if (dynamic_cast<const std::bad_alloc*>(&failure) ||
        (exception && exception->name() == NSMallocException))
        return {Outcome::outOfMemory, u"it takes more memory than a request may"};
    return {Outcome::broken,
            sentenceOfReason(exception ? exception->reason()
                                       : NSString::stringByRepairingUTF8String(failure.what()))};
}

RequestOutcome outcomeOfResult(Operation operation, bool isAnswered, const RequestNotes& notes,
                               const NSString& file) {
    if (isAnswered)
        return {Outcome::answered, notes.sentenceOfResult()};
    const auto noted = notedTrouble(notes);
    if (!noted || noted->outcome <= Outcome::broken) {
        if (const auto trouble = troubleWithFile(operation, file))
            return *trouble;
    }
    if (noted)
        return *noted;
    const RequestOutcome nothing = outcomeOfResult(operation, false);
    return {nothing.outcome, notes.sentence().isNil() ? nothing.sentence : notes.sentence()};
}

RequestOutcome outcomeOfFailure(const std::exception& failure, const RequestNotes& notes) {
    if (const auto noted = notedTrouble(notes))
        return *noted;
    // Nothing that was found cannot be stored either; that blames an argument, and says nothing of the file.
    const auto* const exception = dynamic_cast<const NSException*>(&failure);
    if (exception && exception->name() == NSInvalidArgumentException && notes.outcome())
        return {*notes.outcome(), notes.sentence()};
    return outcomeOfFailure(failure);
}

} // namespace kelvo
