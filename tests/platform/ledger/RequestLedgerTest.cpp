#include "platform/ledger/RequestLedger.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/ledger/ByteHash.h"
#include "platform/ledger/EngineRegistry.h"
#include "platform/ledger/LedgerLayout.h"
#include "platform/ledger/LedgerReader.h"
#include "support/TemporaryFolder.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace kelvo {
namespace {

using tests::TemporaryFolder;

constexpr std::size_t places = 512;

NSString string(const std::string& text) {
    return NSString::stringWithUTF8String(text);
}

class RequestLedgerTest : public testing::Test {
protected:
    TemporaryFolder folder;
    const std::string path = folder.path("service.ledger");

    std::vector<RequestRecord> records(std::size_t most = places) const {
        const auto reader = LedgerReader::open(path);
        return reader ? reader->latestRecords(most) : std::vector<RequestRecord>();
    }
    RequestRecord latest() const {
        const auto found = records(1);
        return found.empty() ? RequestRecord() : found.front();
    }
};

/// A request from beginning to end.
RequestLedger::Entry add(RequestLedger& ledger, std::uint64_t token, const NSString& file,
                         const NSString& sentence = nullptr) {
    const RequestNotes notes;
    const auto entry = ledger.begin(token, 0, file, nullptr);
    ledger.complete(entry, Outcome::nothing, sentence, notes);
    return entry;
}

TEST(ByteHash, IsTheOneThatToolsPrint) {
    const struct {
        std::string bytes;
        std::uint64_t hash;
    } rows[] = {
        {"", 0xEF46DB3751D8E999},
        {"abc", 0x44BC2CF5AD770999},
        {"Nobody inspects the spammish repetition", 0xFBCEA83C8A378BF1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(hashOfBytes(NSData::dataWithBytes(row.bytes).bytes()), row.hash) << row.bytes;
}

TEST_F(RequestLedgerTest, TellsWhatBecameOfARequest) {
    RequestLedger ledger;
    EXPECT_TRUE(ledger.open(path).empty());
    RequestNotes notes;
    notes.noteEngine({"plumwick-web-engine", 12.5, 5000});
    notes.noteEngine({"plumwick-document-engine", 2, 9000});
    notes.noteRefusedLoad(u"http://a/");
    notes.noteRefusedLoad(u"http://\U0001F600/");
    notes.noteRefusedLoad(u"http://a/");
    const auto before = NSDate::date();
    const auto entry = ledger.begin(77, 2, u"/a/caf\xDCE9", NSData::dataWithBytes("abc"));

    RequestRecord record = latest();
    EXPECT_FALSE(record.isCompleted);
    EXPECT_EQ(record.sequence, 1u);
    EXPECT_EQ(record.token, 77u);
    EXPECT_EQ(record.operation, 2);
    EXPECT_EQ(record.path, u"/a/caf\xDCE9");
    EXPECT_TRUE(record.hasBytes);
    EXPECT_EQ(record.byteCount, 3u);
    EXPECT_EQ(record.byteHash, 0x44BC2CF5AD770999);
    EXPECT_NEAR(record.begun.timeIntervalSinceDate(before), 0, 5);

    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ledger.complete(entry, Outcome::locked, u"the document is encrypted", notes);
    record = latest();
    EXPECT_TRUE(record.isCompleted);
    EXPECT_EQ(record.outcome, Outcome::locked);
    EXPECT_EQ(record.sentence, u"the document is encrypted");
    EXPECT_EQ(record.engine, u"plumwick-web-engine, plumwick-document-engine");
    EXPECT_EQ(record.engineCPUMilliseconds, 14.5);
    EXPECT_EQ(record.enginePeakBytes, 9000u);
    EXPECT_EQ(record.refusedLoadCount, 3u);
    EXPECT_EQ(record.refusedAddresses, (std::vector<NSString>{u"http://a/", u"http://\U0001F600/"}));
    EXPECT_GE(record.milliseconds, 20);
    EXPECT_LT(record.cpuMilliseconds, 20) << "it slept";

    add(ledger, 78, nullptr);
    record = latest();
    EXPECT_TRUE(record.path.isNil() && record.sentence.isNil() && record.engine.isNil());
    EXPECT_FALSE(record.hasBytes);
    EXPECT_TRUE(record.refusedAddresses.empty());
    EXPECT_EQ(LedgerReader::open(path)->recordOfToken(77)->outcome, Outcome::locked);
    EXPECT_FALSE(LedgerReader::open(path)->recordOfToken(79));
}

TEST_F(RequestLedgerTest, MemoryIsThatOfTheRequest) {
    RequestLedger ledger;
    ledger.open(path);
    const RequestNotes notes;
    constexpr std::size_t large = 64 << 20;
    const auto entry = ledger.begin(1, 0, nullptr, nullptr);
    {
        const std::string memory(large, 'x');
        EXPECT_EQ(memory.back(), 'x');
    }
    ledger.complete(entry, Outcome::answered, nullptr, notes);
    const std::uint64_t most = latest().peakBytes;
    if (most == 0)
        GTEST_SKIP() << "the kernel does not tell";
    add(ledger, 2, nullptr);
    EXPECT_GT(latest().peakBytes, 0u);
#ifndef KELVO_SANITIZED // which holds on to memory that was given back
    EXPECT_GT(most, latest().peakBytes + large / 2);
#endif
}

TEST_F(RequestLedgerTest, LatestTakesThePlaceOfTheOldest) {
    RequestLedger ledger(RequestLedger::Measures::time);
    ledger.open(path);
    const RequestNotes notes;
    const auto first = ledger.begin(5, 0, u"/first", nullptr);
    for (std::uint64_t token = 100; token < 100 + 2 * places; ++token)
        add(ledger, token, u"/x");
    ledger.complete(first, Outcome::crashed, u"too late", notes);
    const auto found = records();
    ASSERT_EQ(found.size(), places);
    for (std::size_t index = 0; index < places; ++index) {
        EXPECT_EQ(found[index].sequence, places + 2 + index);
        EXPECT_EQ(found[index].token, 100 + places + index);
        EXPECT_EQ(found[index].outcome, Outcome::nothing);
    }
    EXPECT_EQ(records(3).front().sequence, 2 * places - 1);
    EXPECT_TRUE(records(0).empty());
    EXPECT_FALSE(LedgerReader::open(path)->recordOfToken(5));
}

TEST_F(RequestLedgerTest, TextThatDoesNotFitShowsWhereItWasCut) {
    RequestLedger ledger;
    ledger.open(path);
    std::string odd;
    for (int count = 0; count < 300; ++count)
        odd += "\xE9/\xC3\xA9";
    const struct {
        const char* name;
        NSString file;
        NSString end;
    } rows[] = {
        {"fits", string("/" + std::string(703, 'a')), string("/" + std::string(703, 'a'))},
        {"one too many", string("/" + std::string(704, 'a')), string("\u2026" + std::string(701, 'a'))},
        {"between characters", string("/a" + std::string(700, 'b') + "\u00E9"),
         string("/a" + std::string(700, 'b') + "\u00E9")},
        {"within a character", string("/\U0001F600" + std::string(698, 'b') + "cc"),
         string("\u2026" + std::string(698, 'b') + "cc")},
        {"huge, with a pair across", string(std::string(5000, 'a') + "\U0001F600" + std::string(703, 'b')),
         string("\u2026" + std::string(701, 'b'))},
        {"not UTF-8", NSFileManager::defaultManager().stringWithFileSystemRepresentation(odd),
         NSFileManager::defaultManager().stringWithFileSystemRepresentation("\xE2\x80\xA6" +
                                                                            odd.substr(odd.size() - 700))},
        {"no path of the system", NSString(std::u16string_view(u"/a\0b", 4)),
         NSString(std::u16string_view(u"/a\0b", 4))},
    };
    for (const auto& row : rows) {
        add(ledger, 1, row.file);
        EXPECT_EQ(latest().path, row.end) << row.name << " " << latest().path.UTF8String();
    }
    add(ledger, 1, nullptr, string(std::string(380, 's') + "\u00E9\u00E9\u00E9"));
    EXPECT_EQ(latest().sentence, string(std::string(380, 's') + "\u2026"));

    RequestNotes notes;
    notes.noteRefusedLoad(string("http://" + std::string(5000, 'l')));
    for (char letter = 'a'; letter < 'm'; ++letter)
        notes.noteRefusedLoad(string(std::string("http://") + letter));
    ledger.complete(ledger.begin(1, 0, nullptr, nullptr), Outcome::answered, nullptr, notes);
    const RequestRecord record = latest();
    EXPECT_EQ(record.refusedLoadCount, 13u);
    ASSERT_EQ(record.refusedAddresses.size(), RequestNotes::mostRefusedAddresses);
    EXPECT_EQ(record.refusedAddresses.front().characters().back(), u'\u2026');
    EXPECT_GT(record.refusedAddresses.front().length(), 80u);
    EXPECT_EQ(record.refusedAddresses.back(), u"http://g");
}

TEST_F(RequestLedgerTest, ReplacesWhatIsNoLedgerOfItsOwn) {
    const auto overwrite = [this](std::size_t place, const char* bytes) {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(place));
        file << bytes;
    };
    const struct {
        const char* name;
        std::function<void()> change;
        bool isKept;
    } rows[] = {
        {"as it was", [] {}, true},
        {"readable by others", [&] { chmod(path.c_str(), 0644); }, true},
        {"not there", [&] { std::filesystem::remove(path); }, false},
        {"empty", [&] { std::filesystem::resize_file(path, 0); }, false},
        {"too short", [&] { std::filesystem::resize_file(path, 6000); }, false},
        {"too long", [&] { std::filesystem::resize_file(path, 2 << 20); }, false},
        {"another magic", [&] { overwrite(0, "x"); }, false},
        {"another layout", [&] { overwrite(8, "\x02"); }, false},
        {"other records", [&] { overwrite(13, "\x04"); }, false},
        {"a link",
         [&] {
             std::filesystem::rename(path, folder.path("elsewhere"));
             std::filesystem::create_symlink("elsewhere", path);
         },
         false},
        {"a second name", [&] { std::filesystem::create_hard_link(path, folder.path("second")); }, false},
        {"a pipe",
         [&] {
             std::filesystem::remove(path);
             ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
         },
         false},
        {"another user's",
         [&] {
             if (geteuid() != 0 || chown(path.c_str(), 65534, 65534) != 0)
                 std::filesystem::remove(path);
         },
         false},
    };
    for (const auto& row : rows) {
        {
            RequestLedger old;
            old.open(path);
            add(old, 1, u"/old");
        }
        const std::uint64_t last = latest().sequence;
        row.change();
        RequestLedger ledger;
        EXPECT_TRUE(ledger.open(path).empty()) << row.name;
        EXPECT_TRUE(ledger.isOpen()) << row.name;
        add(ledger, 2, u"/new");
        EXPECT_EQ(latest().sequence, row.isKept ? last + 1 : 1u) << row.name;
        struct stat facts;
        ASSERT_EQ(lstat(path.c_str(), &facts), 0) << row.name;
        EXPECT_EQ(facts.st_mode, S_IFREG | 0600u) << row.name;
        EXPECT_EQ(facts.st_uid, geteuid()) << row.name;
        EXPECT_GE(facts.st_blocks * 512, facts.st_size) << row.name;
    }
    EXPECT_EQ(LedgerReader::open(folder.path("elsewhere"))->latestRecords(1).front().path, u"/old");
}

TEST_F(RequestLedgerTest, GoesOnWithoutAFile) {
    folder.write("file", "");
    std::filesystem::create_directories(folder.path("folder/full"));
    for (const std::string& unusable :
         {folder.path("none/x"), folder.path("file/x"), folder.path("folder")}) {
        const NSLogCapture log;
        RequestLedger ledger;
        EXPECT_TRUE(ledger.open(unusable).empty());
        EXPECT_FALSE(ledger.isOpen()) << unusable;
        EXPECT_EQ(log.messages().size(), 1u) << unusable;
        add(ledger, 1, u"/x");
        noteEngineStarted("x", getpid(), "");
    }
    // A full disk, as far as the process is concerned.
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{65536, 65536};
        setrlimit(RLIMIT_FSIZE, &limit);
        const NSLogCapture log;
        RequestLedger ledger;
        ledger.open(path);
        add(ledger, 1, u"/x");
        _exit(ledger.isOpen() || log.messages().size() != 1 ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(std::filesystem::exists(path) || std::filesystem::exists(path + ".new"));
}

TEST_F(RequestLedgerTest, KilledProcessLeavesWhatItWasAtWorkOn) {
    const pid_t child = fork();
    if (child == 0) {
        RequestLedger ledger;
        ledger.open(path);
        add(ledger, 1, u"/done");
        ledger.begin(2, 3, u"/outer", nullptr);
        ledger.begin(3, 4, u"/deadly", nullptr);
        noteEngineStarted("engine", getppid(), "");
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_FALSE(latest().isCompleted);
    EXPECT_EQ(latest().path, u"/deadly");

    RequestLedger ledger;
    const auto lost = ledger.open(path);
    ASSERT_EQ(lost.size(), 2u);
    EXPECT_EQ(lost[0].path, u"/outer");
    EXPECT_EQ(lost[1].path, u"/deadly");
    const auto found = records();
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0].outcome, Outcome::nothing);
    for (const RequestRecord& record : {lost[1], found[1], found[2]}) {
        EXPECT_TRUE(record.isCompleted);
        EXPECT_EQ(record.outcome, Outcome::crashed);
        EXPECT_EQ(record.sentence, sentenceOfEndedService);
    }
    EXPECT_TRUE(LedgerReader::open(path)->engines().empty());
    add(ledger, 4, u"/next");
    EXPECT_EQ(latest().sequence, 4u);
}

TEST_F(RequestLedgerTest, RecordsThatWereBeingWrittenAreBroughtToAnEnd) {
    const struct {
        const char* name;
        std::uint32_t version;
        ledger::RecordState state;
        std::optional<Outcome> outcome;
    } rows[] = {
        {"begun", 2, ledger::RecordState::begun, Outcome::crashed},
        {"in the middle of its beginning", 3, ledger::RecordState::empty, std::nullopt},
        {"in the middle of its end", 3, ledger::RecordState::begun, Outcome::crashed},
        {"at the end of its end", 3, ledger::RecordState::completed, Outcome::locked},
        {"no state", 2, static_cast<ledger::RecordState>(7), std::nullopt},
    };
    for (const auto& row : rows) {
        { RequestLedger{}.open(path); }
        ledger::Record record{};
        record.version = row.version;
        record.state = row.state;
        record.sequence = 3;
        record.outcome = static_cast<std::uint8_t>(Outcome::locked);
        record.pathLength = record.sentenceLength = record.refusedLength = 0xFFFF;
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(offsetof(ledger::File, records) + 3 * sizeof record);
        file.write(reinterpret_cast<const char*>(&record), sizeof record);
        file.close();
        RequestLedger ledger;
        EXPECT_EQ(ledger.open(path).size(), row.outcome == Outcome::crashed ? 1u : 0u) << row.name;
        const auto found = records();
        ASSERT_EQ(found.size(), row.outcome ? 1u : 0u) << row.name;
        if (row.outcome) {
            EXPECT_EQ(found.front().outcome, *row.outcome) << row.name;
        }
        std::filesystem::remove(path);
    }
}

/// What a record says of the request of that token, for readers who look for halves of two.
std::string lettersOf(std::uint64_t token) {
    return std::string(100 + token % 250, static_cast<char>('a' + token % 26));
}

TEST_F(RequestLedgerTest, IsReadAgainWheneverItsWriterWasKilled) {
    for (int turn = 0; turn < 60; ++turn) {
        const pid_t child = fork();
        if (child == 0) {
            RequestLedger ledger(RequestLedger::Measures::time);
            ledger.open(path);
            for (std::uint64_t token = 1;; ++token)
                add(ledger, token, string(lettersOf(token)), string(lettersOf(token)));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(3000 + 97 * turn));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        RequestLedger ledger(RequestLedger::Measures::time);
        EXPECT_LE(ledger.open(path).size(), 1u);
        for (const RequestRecord& record : records()) {
            EXPECT_TRUE(record.isCompleted);
            EXPECT_EQ(record.path, string(lettersOf(record.token)));
            EXPECT_EQ(record.sentence,
                      record.outcome == Outcome::crashed ? NSString(sentenceOfEndedService) : record.path);
        }
    }
}

TEST_F(RequestLedgerTest, ReadersNeverSeeHalfARecord) {
    RequestLedger ledger(RequestLedger::Measures::time);
    ledger.open(path);
    std::atomic<std::size_t> most = places;
    std::atomic<int> seen = 0;
    std::thread reader([&] {
        const auto file = LedgerReader::open(path);
        while (most > 0) {
            std::uint64_t last = 0;
            for (const RequestRecord& record : file->latestRecords(most)) {
                ASSERT_GT(record.sequence, last);
                last = record.sequence;
                ASSERT_EQ(record.path, string(lettersOf(record.token)));
                const std::string sentence = record.sentence.UTF8String();
                ASSERT_EQ(sentence, std::string(sentence.size(), sentence.empty() ? 'x' : sentence.front()));
                ++seen;
            }
        }
    });
    RequestLedger::Entry entry;
    for (std::uint64_t token = 1; token < 100'000; ++token)
        entry = add(ledger, token, string(lettersOf(token)), string(lettersOf(token)));
    most = 1;
    const RequestNotes notes;
    const int enough = seen + 20'000;
    for (std::uint64_t token = 1; token < 2'000'000 && seen < enough; ++token)
        ledger.complete(entry, Outcome::broken, string(lettersOf(token)), notes);
    most = 0;
    reader.join();
    EXPECT_GT(seen, 100);
}

TEST_F(RequestLedgerTest, ListsTheEnginesThatRun) {
    const auto listed = [this] {
        std::string text;
        for (const EngineFacts& engine : LedgerReader::open(path)->engines())
            text += engine.name.UTF8String() + "=" + engine.layers.UTF8String() +
                    (engine.processIdentifier == getpid() ? " own;" : ";");
        return text;
    };
    noteEngineStarted("nowhere", getpid(), "");
    RequestLedger ledger;
    ledger.open(path);
    EXPECT_EQ(listed(), "");
    noteEngineStarted("web", getpid(), "landlock, seccomp");
    noteEngineStarted("document", getppid(), std::string(300, 'l'));
    EXPECT_EQ(listed(), "web=landlock, seccomp own;document=" + std::string(189, 'l') + "\u2026;");
    noteEngineStarted("web again", getpid(), "");
    noteEngineEnded(getppid());
    noteEngineEnded(getppid());
    EXPECT_EQ(listed(), "web again= own;");
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    for (int count = 0; count < 20; ++count)
        noteEngineStarted("lost", child, "");
    waitpid(child, nullptr, 0);
    EXPECT_EQ(listed(), "web again= own;");
}

} // namespace
} // namespace kelvo
