#include "platform/foundation/connections/MessageRoom.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSConnectionInternals.h"

#include <capnp/serialize.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <endian.h>

namespace kelvo {
namespace {

constexpr std::size_t largestUncountedMessage = 64 << 10;
constexpr auto timeBetweenChecks = 500 * kj::MILLISECONDS;
/// So much in that time is what the slowest of machines lets through.
constexpr std::size_t leastProgressInBytes = 64 << 10;
/// The first check may come right after a request that kept this thread from reading.
constexpr int checksUntilGivenUp = 2;
constexpr std::size_t bytesReadAtOnce = 1 << 20;
constexpr std::size_t mostSegments = 512;

} // namespace

MessageRoom::Share::Share(MessageRoom& room, std::size_t bytes) : room_(kj::addRef(room)), size_(bytes) {
    room.free_ -= bytes;
    room.shares_.push_back(this);
}

MessageRoom::Share::~Share() noexcept(false) {
    std::erase(room_->shares_, this);
    room_->free_ += size_;
    room_->giveToThoseWaiting();
}

kj::Promise<void> MessageRoom::Share::whenGivenUp() {
    auto pair = kj::newPromiseAndFulfiller<void>();
    giveUp_ = kj::mv(pair.fulfiller);
    return kj::mv(pair.promise);
}

kj::Promise<kj::Own<MessageRoom::Share>> MessageRoom::take(std::size_t bytes) {
    if (bytes <= largestUncountedMessage)
        bytes = 0;
    if (bytes == 0 || (waiting_.empty() && bytes <= free_))
        return kj::heap<Share>(*this, bytes);
    auto pair = kj::newPromiseAndFulfiller<kj::Own<Share>>();
    waiting_.push_back({bytes, kj::mv(pair.fulfiller)});
    if (!isChecking_) {
        isChecking_ = true;
        checking_ = checkWhileOthersWait().eagerlyEvaluate(nullptr);
    }
    return kj::mv(pair.promise);
}

void MessageRoom::giveToThoseWaiting() {
    while (!waiting_.empty()) {
        Waiting& next = waiting_.front();
        // Its client may have gone away.
        if (next.fulfiller->isWaiting()) {
            if (next.bytes > free_)
                return;
            next.fulfiller->fulfill(kj::heap<Share>(*this, next.bytes));
        }
        waiting_.pop_front();
    }
}

kj::Promise<void> MessageRoom::checkWhileOthersWait() {
    return timer_.afterDelay(timeBetweenChecks).then([this]() -> kj::Promise<void> {
        giveToThoseWaiting();
        if (waiting_.empty()) {
            isChecking_ = false;
            return kj::READY_NOW;
        }
        giveUpUnfinished();
        return checkWhileOthersWait();
    });
}

void MessageRoom::giveUpUnfinished() {
    for (Share* share : shares_) {
        if (share->isFinished_ || share->size_ == 0)
            continue;
        const std::size_t progress =
            share->received_ - std::exchange(share->receivedAtCheck_, share->received_);
        share->checksWithoutProgress_ =
            progress < leastProgressInBytes ? share->checksWithoutProgress_ + 1 : 0;
        if (share->checksWithoutProgress_ != checksUntilGivenUp)
            continue;
        NSLog(u"A client's conversation was ended: %lld of the %lld bytes of a message came and no more, and "
              u"others waited for the memory.",
              static_cast<long long>(share->received_), static_cast<long long>(share->size_));
        KJ_IF_MAYBE (giveUp, share->giveUp_) {
            (*giveUp)->reject(failureOfCall("The message stayed unfinished."));
        }
    }
}

namespace {

/// One message, in the form in which it comes over the wire: a count of segments, their lengths, and their
/// contents.
class Reading {
public:
    Reading(kj::AsyncIoStream& stream, MessageRoom& room, capnp::ReaderOptions options)
        : stream_(stream), room_(room), options_(options) {}

    kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>> read() {
        head_ = kj::heapArray<capnp::word>(1);
        return stream_.tryRead(head_.begin(), 1, sizeof(capnp::word))
            .then([this](std::size_t count) -> kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>> {
                if (count == 0)
                    return kj::Maybe<capnp::MessageReaderAndFds>();
                return readHeadFrom(count)
                    .then([this] { return readHead(); })
                    .then([this] { return room_.take(wordsOfMessage() * sizeof(capnp::word)); })
                    .then([this](kj::Own<MessageRoom::Share>&& share) {
                        share_ = kj::mv(share);
                        makeMessage();
                        return readBody().exclusiveJoin(share_->whenGivenUp());
                    })
                    .then([this] { return kj::Maybe<capnp::MessageReaderAndFds>(reader()); });
            });
    }

private:
    std::size_t number(std::size_t index) const {
        std::uint32_t value;
        std::memcpy(&value, head_.asBytes().begin() + index * sizeof value, sizeof value);
        return le32toh(value);
    }

    kj::Promise<void> readHead() {
        const std::size_t segments = number(0) + 1;
        KJ_REQUIRE(segments <= mostSegments, "A message has too many segments.");
        const std::size_t words = segments / 2 + 1;
        auto whole = kj::heapArray<capnp::word>(words);
        std::memcpy(whole.begin(), head_.begin(), sizeof(capnp::word));
        head_ = kj::mv(whole);
        return readHeadFrom(sizeof(capnp::word));
    }

    kj::Promise<void> readHeadFrom(std::size_t place) {
        kj::ArrayPtr<kj::byte> bytes = head_.asBytes();
        if (place == bytes.size())
            return kj::READY_NOW;
        return stream_.read(bytes.begin() + place, bytes.size() - place);
    }

    std::size_t wordsOfMessage() const {
        std::size_t words = head_.size();
        for (std::size_t index = 1; index <= number(0) + 1; ++index)
            words += number(index);
        KJ_REQUIRE(words <= options_.traversalLimitInWords, "A message is too large.");
        return words;
    }

    void makeMessage() {
        message_ = kj::heapArray<capnp::word>(wordsOfMessage());
        std::memcpy(message_.begin(), head_.begin(), head_.asBytes().size());
        filled_ = head_.asBytes().size();
    }

    kj::Promise<void> readBody() {
        kj::ArrayPtr<kj::byte> bytes = message_.asBytes();
        if (filled_ == bytes.size())
            return kj::READY_NOW;
        const std::size_t wanted = std::min(bytes.size() - filled_, bytesReadAtOnce);
        return stream_.tryRead(bytes.begin() + filled_, 1, wanted).then([this](std::size_t count) {
            if (count == 0)
                kj::throwFatalException(KJ_EXCEPTION(DISCONNECTED, "A message ended early."));
            filled_ += count;
            share_->addReceived(count);
            return readBody();
        });
    }

    capnp::MessageReaderAndFds reader() {
        share_->finish();
        const kj::ArrayPtr<const capnp::word> words = message_.asPtr();
        return {
            kj::heap<capnp::FlatArrayMessageReader>(words, options_).attach(kj::mv(message_), kj::mv(share_)),
            nullptr};
    }

    kj::AsyncIoStream& stream_;
    MessageRoom& room_;
    capnp::ReaderOptions options_;
    kj::Array<capnp::word> head_;
    kj::Array<capnp::word> message_;
    std::size_t filled_ = 0;
    kj::Own<MessageRoom::Share> share_;
};

} // namespace

kj::Maybe<capnp::MessageReaderAndFds> LocalMessageStream::messageRead(capnp::ReaderOptions options) {
    const kj::ArrayPtr<const kj::byte> bytes = stream_.bytesRead();
    // Requests and short answers consist of one segment.
    std::uint32_t head[2];
    if (bytes.size() < sizeof head)
        return nullptr;
    std::memcpy(head, bytes.begin(), sizeof head);
    const std::size_t words = le32toh(head[1]);
    if (head[0] != 0 || words > bytes.size() / sizeof(capnp::word) - 1)
        return nullptr;
    auto copy = kj::heapArray<capnp::word>(1 + words);
    std::memcpy(copy.begin(), bytes.begin(), copy.asBytes().size());
    stream_.skipRead(copy.asBytes().size());
    const kj::ArrayPtr<const capnp::word> message = copy.asPtr();
    return capnp::MessageReaderAndFds{
        kj::heap<capnp::FlatArrayMessageReader>(message, options).attach(kj::mv(copy)), nullptr};
}

kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>>
LocalMessageStream::tryReadMessage(kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options,
                                   kj::ArrayPtr<capnp::word> scratchSpace) {
    auto next = [this, fdSpace, options,
                 scratchSpace]() -> kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>> {
        KJ_IF_MAYBE (message, messageRead(options)) {
            return kj::Maybe<capnp::MessageReaderAndFds>(kj::mv(*message));
        }
        return readPieceByPiece(fdSpace, options, scratchSpace);
    };
    return stream_.bytesRead().size() > 0 ? next() : stream_.whenAnythingIsRead().then(kj::mv(next));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the promise owns what is attached to it.

kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>>
LocalMessageStream::readPieceByPiece(kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options,
                                     kj::ArrayPtr<capnp::word> scratchSpace) {
    if (!room_)
        return whole_.tryReadMessage(fdSpace, options, scratchSpace);
    auto reading = kj::heap<Reading>(stream_, *room_, options);
    auto message = reading->read();
    return message.attach(kj::mv(reading));
}

} // namespace kelvo
