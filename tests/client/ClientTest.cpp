#include <plumwick/Client.h>

#include "platform/foundation/connections/NSConnection.h"
#include "support/ServiceSession.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <vector>

namespace kelvo {
namespace {

using tests::ServiceSession;
using Kind = ClientError::Kind;

/// The error that the call ends with, if it does.
template <typename Call>
std::optional<ClientError> errorOf(Call call) {
    try {
        call();
        return std::nullopt;
    } catch (const ClientError& error) {
        return error;
    }
}

template <typename Call>
std::optional<Kind> kindOfError(Call call) {
    const auto error = errorOf(call);
    return error ? std::optional(error->kind()) : std::nullopt;
}

/// A connected socket that speaks no protocol yet.
int rawConnection(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    EXPECT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0)
        << std::strerror(errno);
    return descriptor;
}

/// Whether the other side closes the connection (within two seconds).
bool isClosed(int descriptor) {
    timeval limit{2, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    char byte;
    ssize_t length;
    while ((length = read(descriptor, &byte, 1)) > 0) {
    }
    return length == 0 || errno == ECONNRESET;
}

/// A client whose service does as the names of its files tell it.
class ClientTest : public testing::Test {
protected:
    ServiceSession session{"RehearsalService"};
    Client client{session.options()};

    NSDictionary tell(const char16_t* what) { return client.metaDataForFile(what); }
    /// Address space that is never touched: the length alone decides.
    const std::span<const std::uint8_t> overlong{
        static_cast<const std::uint8_t*>(mmap(nullptr, NSConnection::fieldLimitInBytes, PROT_READ,
                                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)),
        NSConnection::fieldLimitInBytes};
    ~ClientTest() override { munmap(const_cast<std::uint8_t*>(overlong.data()), overlong.size()); }

    void expectService() { EXPECT_EQ(tell(u"/still there").objectForKey(u"file").string(), u"/still there"); }
};

TEST_F(ClientTest, SendsPathsAbsoluteAndByteForByte) {
    const std::string here = std::filesystem::current_path().string();
    const NSString odd(std::u16string_view(u"caf\xDCE9 \U0001F600"));
    const NSString absolute = NSString::stringWithUTF8String(here + "/").stringByAppendingString(odd);
    EXPECT_EQ(client.metaDataForFile(odd).objectForKey(u"file").string(), absolute);
    EXPECT_EQ(client.searchableTextOfWebArchive(odd).objectForKey(u"archive").string(), absolute);
    EXPECT_EQ(client.attributedStringWithContentsOfFile(odd).objectForKey(u"document").string(), absolute);
    EXPECT_EQ(client.posterImageForMovieWithFile(odd).objectForKey(u"movie").string(), absolute);
    EXPECT_EQ(client.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(odd, true, true)
                  .objectForKey(u"file")
                  .string(),
              absolute);
    const std::string written = here + "/x";
    EXPECT_TRUE(client.writeRTFDData_toFile(NSData::dataWithBytes(written), u"x"));
}

TEST_F(ClientTest, ReportsWhatTheOperationThrew) {
    const auto error = errorOf([&] { tell(u"/throw"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind(), Kind::failed);
    EXPECT_STREQ(error->what(), "failed: NSRehearsalException: Thrown: as told.");
    expectService();
}

TEST_F(ClientTest, RefusesWhatTheWireCannotCarryAndGoesOn) {
    EXPECT_EQ(kindOfError([&] {
                  client.attributed_stringWithPDF(false, NSData::dataWithBytesNoCopy(overlong, nullptr));
              }),
              Kind::failed);
    EXPECT_EQ(kindOfError([&] { client.PDFImageRepOfFile(u"/536870912"); }), Kind::failed);
    EXPECT_TRUE(tell(u"/deep 500").objectForKey(u"deep").isArray());
    EXPECT_EQ(kindOfError([&] { tell(u"/deep 513"); }), Kind::failed);
    expectService();
}

TEST_F(ClientTest, GivesUpInTimeAndIsAnsweredAgainAfterwards) {
    expectService();
    client.setTimeout(0.1);
    EXPECT_EQ(kindOfError([&] { tell(u"/sleep 0.5"); }), Kind::timedOut);
    client.setTimeout(10);
    expectService();
}

TEST_F(ClientTest, AsksOnceMoreWhenTheServiceDiesInACallThatReads) {
    const std::string marker = session.folder().path("marker");
    EXPECT_EQ(client.metaDataForFile(NSString::stringWithUTF8String("/die unless " + marker))
                  .objectForKey(u"outcome")
                  .string(),
              u"survived");
    EXPECT_EQ(kindOfError([&] { tell(u"/die"); }), Kind::died);
    expectService();
}

TEST_F(ClientTest, ReportsDeathInACallThatWrites) {
    const pid_t first = (expectService(), client.status().processIdentifier);
    auto killer = std::async(std::launch::async, [first] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        ServiceSession::end(first);
    });
    EXPECT_EQ(kindOfError([&] { client.writeRTFDData_toFile(NSData::data(), u"/sleep"); }), Kind::died);
    killer.get();
    expectService();
    EXPECT_NE(client.status().processIdentifier, first);
}

TEST_F(ClientTest, TellsWhatBecameOfTheLatestRequest) {
    EXPECT_FALSE(client.outcomeOfLastRequest());
    const NSString file = NSString::stringWithUTF8String(
        session.folder().write("told", "note 4 the document is encrypted\nuse reader 1.5 4096\nnil\n"));
    const auto read = [&] { client.attributedStringWithContentsOfFile(file); };
    read();
    const auto locked = client.outcomeOfLastRequest();
    ASSERT_TRUE(locked);
    EXPECT_GT(locked->sequence, 0u);
    EXPECT_EQ(locked->path, file);
    EXPECT_EQ(locked->outcome, Outcome::locked);
    EXPECT_EQ(locked->sentence, u"the document is encrypted");
    EXPECT_EQ(locked->engine, u"reader");

    const struct {
        const char* name;
        std::function<void()> ask;
        Outcome outcome;
        const char16_t* sentence;
    } rows[] = {
        {"answer", [&] { tell(u"/x"); }, Outcome::answered, nullptr},
        {"throws", [&] { tell(u"/throw"); }, Outcome::broken, u"thrown: as told"},
        {"late",
         [&] {
             client.setTimeout(0.2);
             tell(u"/sleep 0.6");
         },
         Outcome::timedOut, u"no answer within 0.2 seconds"},
        {"dies",
         [&] {
             client.setTimeout(10);
             tell(u"/die");
         },
         Outcome::crashed, sentenceOfEndedService},
        {"cannot be sent",
         [&] { client.attributed_stringWithPDF(false, NSData::dataWithBytesNoCopy(overlong, nullptr)); },
         Outcome::broken, nullptr},
    };
    for (const auto& row : rows) {
        errorOf(row.ask);
        // What was late is answered by then, and stays late.
        Client(session.options()).metaDataForFile(u"/x");
        const auto found = client.outcomeOfLastRequest();
        ASSERT_TRUE(found) << row.name;
        EXPECT_TRUE(found->isCompleted) << row.name;
        EXPECT_EQ(found->outcome, row.outcome) << row.name;
        if (row.sentence || row.outcome == Outcome::answered) {
            EXPECT_EQ(found->sentence, NSString(row.sentence)) << row.name;
        }
    }
    const auto latest = client.outcomeOfLastRequest();
    EXPECT_EQ(latest->token, 0u) << "it was not sent, and is not the one before";
    EXPECT_EQ(latest->operation, 6);
    EXPECT_FALSE(latest->sentence.isNil());
}

TEST_F(ClientTest, OutcomeGoesByTheResultWhenNothingIsWrittenDown) {
    setenv("REHEARSAL_WITHOUT_LEDGER", "1", 1);
    expectService();
    unsetenv("REHEARSAL_WITHOUT_LEDGER");
    EXPECT_EQ(client.outcomeOfLastRequest()->outcome, Outcome::answered);
    client.PDFImageRepOfFile(nullptr);
    EXPECT_EQ(client.outcomeOfLastRequest()->outcome, Outcome::nothing);
    errorOf([&] { tell(u"/throw"); });
    EXPECT_EQ(client.outcomeOfLastRequest()->outcome, Outcome::broken);
    EXPECT_EQ(client.outcomeOfLastRequest()->sequence, 0u);
    EXPECT_EQ(kindOfError([] { Client::recentRequests(1); }), Kind::notThere);
}

TEST_F(ClientTest, KilledServiceLeavesTheRequestThatItWasAtWorkOn) {
    const pid_t first = (expectService(), client.status().processIdentifier);
    auto asking = std::async(std::launch::async, [this] {
        Client own(session.options(false));
        errorOf([&] { own.metaDataForFile(u"/sleep 30"); });
        return own.outcomeOfLastRequest();
    });
    const auto latest = [] {
        const auto found = Client::recentRequests(1);
        return found.empty() ? RequestRecord() : found.front();
    };
    tests::waitUntil([&] { return latest().path == u"/sleep 30"; });
    EXPECT_FALSE(latest().isCompleted);
    ServiceSession::end(first);
    const auto outcome = asking.get();
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->outcome, Outcome::crashed);
    EXPECT_EQ(outcome->sentence, sentenceOfEndedService);
    EXPECT_FALSE(latest().isCompleted) << "nobody has gone on with the ledger yet";
    expectService();
    const auto both = Client::recentRequests(2);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[0].path, u"/sleep 30");
    EXPECT_EQ(both[0].outcome, Outcome::crashed);
    EXPECT_EQ(both[0].sentence, sentenceOfEndedService);
    EXPECT_EQ(both[1].sequence, both[0].sequence + 1);
    EXPECT_EQ(both[1].token, client.outcomeOfLastRequest()->token);
}

TEST_F(ClientTest, AnswersConversationsOneAfterTheOther) {
    expectService();
    std::vector<std::future<std::pair<double, double>>> calls;
    for (int index = 0; index < 3; ++index) {
        calls.push_back(std::async(std::launch::async, [this] {
            Client own(session.options(false));
            const NSDictionary answer = own.metaDataForFile(u"/nest 0.15");
            return std::pair(answer.objectForKey(u"begin").numberIfAny()->doubleValue(),
                             answer.objectForKey(u"end").numberIfAny()->doubleValue());
        }));
    }
    std::vector<std::pair<double, double>> spans;
    for (auto& call : calls)
        spans.push_back(call.get());
    std::ranges::sort(spans);
    EXPECT_LE(spans[0].second, spans[1].first);
    EXPECT_LE(spans[1].second, spans[2].first);
}

TEST_F(ClientTest, ClosesOnlyTheConversationThatMisbehaves) {
    expectService();
    const int garbage = rawConnection(session.socketPath());
    const std::string noise(5000, '\xA7');
    EXPECT_GT(send(garbage, noise.data(), noise.size(), MSG_NOSIGNAL), 0);
    EXPECT_TRUE(isClosed(garbage));
    const int tooLarge = rawConnection(session.socketPath());
    const std::uint32_t oneSegmentOfSixteenGibibytes[] = {0, 0x7FFFFFFF};
    EXPECT_GT(send(tooLarge, oneSegmentOfSixteenGibibytes, 8, MSG_NOSIGNAL), 0);
    EXPECT_TRUE(isClosed(tooLarge));
    const int half = rawConnection(session.socketPath());
    const std::uint32_t oneSegmentOfAMebibyte[] = {0, 0x20000, 7};
    EXPECT_GT(send(half, oneSegmentOfAMebibyte, 12, MSG_NOSIGNAL), 0);
    expectService();
    close(half);
    close(garbage);
    close(tooLarge);
    expectService();
}

/// Begins a message of one segment and sends so much of it, or less when the service stops taking it for a
/// while. Tells how much went.
std::size_t beginMessage(int descriptor, std::uint32_t lengthInBytes, std::size_t sentInBytes) {
    const std::uint32_t head[] = {0, lengthInBytes / 8};
    EXPECT_EQ(send(descriptor, head, sizeof head, MSG_NOSIGNAL), 8);
    const timeval patience{0, 100'000};
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const std::string part(std::size_t{1} << 20, '\0');
    std::size_t sent = 0;
    while (sent < sentInBytes) {
        const ssize_t count = send(descriptor, part.data(), part.size(), MSG_NOSIGNAL);
        if (count <= 0)
            break;
        sent += static_cast<std::size_t>(count);
    }
    return sent;
}

TEST_F(ClientTest, UnfinishedMessagesTakeBoundedMemoryAndDelayOthersAtMost) {
    expectService();
    constexpr std::size_t sentInBytes = 16 << 20;
    std::vector<int> halves;
    std::size_t taken = 0;
    for (int count = 0; count < 5; ++count) {
        halves.push_back(rawConnection(session.socketPath()));
        taken += beginMessage(halves.back(), 256 << 20, sentInBytes);
    }
    EXPECT_LT(taken, 3 * sentInBytes) << "room for two";
    expectService();
    const NSData large = NSData::dataWithBytesNoCopy(std::vector<std::uint8_t>(70'000'000));
    for (int turn = 0; turn < 2; ++turn)
        EXPECT_EQ(
            client.attributed_stringWithPDF(false, large).objectForKey(u"length").numberIfAny()->intValue(),
            70'000'000);
    EXPECT_TRUE(isClosed(halves.front()));
    for (const int half : halves)
        close(half);
    expectService();
}

TEST_F(ClientTest, LargeMessagesOfManyClientsWaitForEachOther) {
    expectService();
    // Pages that are only read take no memory.
    constexpr std::size_t length = 200'000'000;
    void* const pages = mmap(nullptr, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    const std::span bytes(static_cast<const std::uint8_t*>(pages), length);
    std::vector<std::future<int>> calls;
    for (int count = 0; count < 3; ++count) {
        calls.push_back(std::async(std::launch::async, [this, bytes] {
            Client own(session.options(false));
            const NSData data = NSData::dataWithBytesNoCopy(bytes, nullptr);
            return own.attributed_stringWithPDF(true, data).objectForKey(u"length").numberIfAny()->intValue();
        }));
    }
    for (auto& call : calls)
        EXPECT_EQ(call.get(), 200'000'000);
    munmap(pages, length);
}

TEST_F(ClientTest, LetsClientsInAgainAfterTheDescriptorsWereUsedUp) {
#ifdef KELVO_SANITIZED
    GTEST_SKIP() << "the sanitizer opens a pipe to look at an object, and calls it invalid when it cannot";
#endif
    expectService();
    const pid_t service = client.status().processIdentifier;
    rlimit limit{};
    ASSERT_EQ(prlimit(service, RLIMIT_NOFILE, nullptr, &limit), 0);
    EXPECT_EQ(limit.rlim_cur, limit.rlim_max);
    limit.rlim_cur = 40;
    ASSERT_EQ(prlimit(service, RLIMIT_NOFILE, &limit, nullptr), 0);
    std::vector<int> crowd;
    for (int count = 0; count < 60; ++count)
        crowd.push_back(rawConnection(session.socketPath()));
    // Those that are in are served meanwhile.
    expectService();
    for (const int each : crowd)
        close(each);
    Client later(session.options(false));
    EXPECT_FALSE(later.metaDataForFile(u"/later").isNil());
}

TEST_F(ClientTest, ClientThatVanishesInACallHarmsNobody) {
    expectService();
    for (const char16_t* call : {u"/nest 0.3", u"/sleep 0.2"}) {
        const pid_t child = fork();
        if (child == 0) {
            // A new program, because an event loop does not survive a fork.
            const std::string folder = session.folder().path();
            setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
            const std::string file = NSString(call).UTF8String();
            execl(tests::builtProgram("RehearsalClient").c_str(), "RehearsalClient", file.c_str(), nullptr);
            _exit(127);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        ServiceSession::end(child);
        expectService();
    }
}

TEST_F(ClientTest, ManyClientsStartOneService) {
    std::vector<std::future<pid_t>> clients;
    for (int index = 0; index < 4; ++index) {
        clients.push_back(std::async(std::launch::async, [this] {
            Client own(session.options());
            own.metaDataForFile(u"/x");
            return own.status().processIdentifier;
        }));
    }
    std::vector<pid_t> processes;
    for (auto& each : clients)
        processes.push_back(each.get());
    EXPECT_EQ(std::ranges::count(processes, processes.front()), 4);
}

TEST_F(ClientTest, RefusesAnotherUser) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    expectService();
    // Let the other user through to the socket, so that it is the service that refuses.
    chmod(session.folder().path().c_str(), 0711);
    chmod(session.socketPath().c_str(), 0666);
    const pid_t child = fork();
    if (child == 0) {
        if (setuid(65534) != 0)
            _exit(2);
        _exit(isClosed(rawConnection(session.socketPath())) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    expectService();
}

TEST_F(ClientTest, SaysWhyNoServiceCanBeReached) {
    const auto expectReason = [&](const std::string& folder, std::string_view part) {
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        const auto error = errorOf([&] { Client(session.options()).metaDataForFile(u"/x"); });
        ASSERT_TRUE(error && error->kind() == Kind::notThere) << folder;
        EXPECT_NE(error->reason().UTF8String().find(part), std::string::npos) << folder;
    };
    const std::string& own = session.folder().path();
    const auto folder = [&](const std::string& name, mode_t mode) {
        std::filesystem::create_directories(own + "/" + name);
        chmod((own + "/" + name).c_str(), mode);
        return own + "/" + name;
    };
    expectReason(own + "/missing", "cannot be used");
    expectReason(session.folder().write("file", ""), "not a folder");
    expectReason(folder("unwritable", 0500), "cannot be written");
    expectReason(folder("open", 0777), "written by other users");
    expectReason(folder(std::string(90, 'l'), 0700), "the system allows 107");
    if (geteuid() == 0) {
        const std::string foreign = folder("foreign", 0700);
        ASSERT_EQ(chown(foreign.c_str(), 65534, 65534), 0);
        expectReason(foreign, "belongs to another user");
    }
    setenv("XDG_RUNTIME_DIR", own.c_str(), 1);
    ClientOptions options = session.options(false);
    EXPECT_STREQ(errorOf([&] { Client(options).metaDataForFile(u"/x"); })->what(),
                 "not there: The service does not run.");
    options.startsService = true;
    options.servicePath = u"/nowhere/PlumwickHelper";
    EXPECT_EQ(kindOfError([&] { Client(options).metaDataForFile(u"/x"); }), Kind::notThere);
    options.servicePath = u"/bin/true";
    EXPECT_NE(errorOf([&] { Client(options).metaDataForFile(u"/x"); })->reason().UTF8String().find("ended"),
              std::string::npos);
}

} // namespace
} // namespace kelvo
