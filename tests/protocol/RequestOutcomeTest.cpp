#include "protocol/RequestOutcome.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "protocol/ResultKeys.h"
#include "support/TemporaryFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>

namespace kelvo {
namespace {

TEST(RequestOutcome, OfAResultAndWhatWasNoted) {
    constexpr auto reading = Operation::attributedStringWithContentsOfFile;
    const tests::TemporaryFolder folder;
    const auto pathOf = [](const std::string& path) {
        return NSFileManager::defaultManager().stringWithFileSystemRepresentation(path);
    };
    const NSString there = pathOf(folder.write("caf\xE9", ""));
    const NSString missing = pathOf(folder.path("missing"));
    const struct {
        const char* name;
        Operation operation;
        bool isAnswered;
        NSString file;
        std::optional<Outcome> noted;
        Outcome outcome;
        const char16_t* sentence;
    } rows[] = {
        {"answer", reading, true, there, {}, Outcome::answered, nullptr},
        {"answer with something to say", reading, true, there, Outcome::answered, Outcome::answered,
         u"noted"},
        {"answer at the second try", reading, true, there, Outcome::crashed, Outcome::answered, nullptr},
        {"answer of a file that is gone", reading, true, missing, {}, Outcome::answered, nullptr},
        {"nothing", reading, false, there, {}, Outcome::nothing, u"it is no document that can be read"},
        {"nothing, and why", reading, false, there, Outcome::nothing, Outcome::nothing, u"noted"},
        {"part of nothing", reading, false, there, Outcome::answered, Outcome::nothing,
         u"it is no document that can be read"},
        {"locked", reading, false, there, Outcome::locked, Outcome::locked, u"noted"},
        {"bytes", Operation::RTFDWithHTML, false, nullptr, Outcome::crashed, Outcome::crashed, u"noted"},
        {"missing", reading, false, missing, {}, Outcome::nothing, u"there is no such file"},
        {"missing, so broken", reading, false, missing, Outcome::broken, Outcome::nothing,
         u"there is no such file"},
        {"crashed, then removed", reading, false, missing, Outcome::crashed, Outcome::crashed, u"noted"},
        {"below a file",
         reading,
         false,
         there.stringByAppendingString(u"/x"),
         {},
         Outcome::nothing,
         u"there is no such file"},
        {"no path",
         reading,
         false,
         NSString(std::u16string_view(u"/\0", 2)),
         {},
         Outcome::nothing,
         u"there is no such file"},
        {"no name",
         reading,
         false,
         pathOf("/" + std::string(300, 'n')),
         {},
         Outcome::broken,
         u"it cannot be used: File name too long"},
        {"written nowhere",
         Operation::writeRTFDData,
         false,
         missing.stringByAppendingString(u"/x"),
         {},
         Outcome::nothing,
         u"there is no such folder"},
        {"not written",
         Operation::writeRTFDData,
         false,
         missing,
         {},
         Outcome::nothing,
         u"it could not be written"},
    };
    for (const auto& row : rows) {
        RequestNotes notes;
        if (row.noted)
            notes.note(*row.noted, u"noted");
        const RequestOutcome found = outcomeOfResult(row.operation, row.isAnswered, notes, row.file);
        EXPECT_EQ(found.outcome, row.outcome) << row.name;
        EXPECT_EQ(found.sentence, NSString(row.sentence)) << row.name << ": " << found.sentence.UTF8String();
    }
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(folder.path("caf\xE9").c_str(), 0), 0);
        EXPECT_EQ(outcomeOfResult(reading, false, RequestNotes(), there).outcome, Outcome::locked);
    }
}

TEST(RequestOutcome, OfAFailure) {
    RequestNotes notes;
    notes.note(Outcome::nothing, u"an empty page");
    const NSException exception(NSGenericException, u"The table is cut off.");
    EXPECT_EQ(outcomeOfFailure(exception, notes).outcome, Outcome::broken);
    EXPECT_EQ(outcomeOfFailure(exception, notes).sentence, u"the table is cut off");
    EXPECT_EQ(outcomeOfFailure(NSException(NSInvalidArgumentException, u"Nil."), notes).sentence,
              u"an empty page");
    EXPECT_EQ(outcomeOfFailure(NSException(NSInvalidArgumentException, u"Nil."), RequestNotes()).sentence,
              u"nil");
    EXPECT_EQ(sentenceOfReason(u"XML is cut off."), u"XML is cut off");
    EXPECT_EQ(outcomeOfFailure(std::bad_alloc(), notes).outcome, Outcome::outOfMemory);
    EXPECT_EQ(outcomeOfFailure(NSException(NSMallocException, u"too large"), notes).outcome,
              Outcome::outOfMemory);
    notes.note(Outcome::timedOut, u"it took longer than 12 seconds");
    EXPECT_EQ(outcomeOfFailure(exception, notes).outcome, Outcome::timedOut);
    EXPECT_EQ(outcomeOfFailure(exception, notes).sentence, u"it took longer than 12 seconds");
}

TEST(RequestOutcome, ResultsWithoutWhatWasAskedForAreNoAnswers) {
    const NSDictionary text = NSMutableDictionary::dictionaryWithObjectsAndKeys({{u"t", ResultStringKey}});
    const NSDictionary source = NSMutableDictionary::dictionaryWithObjectsAndKeys({{u"s", ResultSourceKey}});
    EXPECT_TRUE(isAnswer(Operation::searchableTextOfWebArchive, text));
    EXPECT_FALSE(isAnswer(Operation::searchableTextOfWebArchive, source));
    EXPECT_TRUE(isAnswer(Operation::metaDataForFile, text));
    EXPECT_FALSE(isAnswer(Operation::metaDataForFile, NSDictionary::dictionary()));
}

} // namespace
} // namespace kelvo
