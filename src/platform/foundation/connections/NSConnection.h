#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/connections/NSPortName.h"

#include <sys/types.h>

#include <memory>

namespace kelvo {

/// What a connection vends; a protocol's adapter makes it from the object that does the work.
class NSVendedObject;

/// Distributed objects between processes of one user, over a unix socket that stands for the registered name.
///
/// The socket lies in $XDG_RUNTIME_DIR, or else in a folder of mode 0700 below /tmp that belongs to the user
/// alone. A lock file beside it says who holds the name, so that the socket of a killed process is taken over
/// and that of a live one is not. Only processes of the same user are served, and only a service of the same
/// user is asked.
class NSConnection {
public:
    struct Internals;

    /// The longest path that a unix socket can have, in bytes.
    static constexpr std::size_t longestSocketPath = 107;
    /// Data or text of one argument or result must stay below this many bytes.
    static constexpr std::size_t fieldLimitInBytes = std::size_t{512} << 20;

    /// The calling thread's own connection for vending an object, made at its first use. It is an input
    /// source of that thread's run loop for as long as the thread lives, whether or not a name could be
    /// registered.
    static NSConnection& defaultConnection();
    /// A conversation with whoever vends an object under that name; null when nobody does. Throws NSException
    /// (NSPortException) when the socket's folder cannot be used, the path is too long, or the one who
    /// answers is another user.
    static std::unique_ptr<NSConnection> connectionWithRegisteredName(const NSString& name);

    NSConnection(const NSConnection&) = delete;
    NSConnection& operator=(const NSConnection&) = delete;
    ~NSConnection();

    /// What later conversations are given. Kept until replaced.
    void setRootObject(std::shared_ptr<NSVendedObject> rootObject);
    /// Publishes the connection. False, with one line in the log, when another live process holds the name or
    /// the socket cannot be made.
    bool registerName(const NSString& name);
    /// On: while one request is performed, every other waits, also during nested runs of the loop. Off (as
    /// made): a nested run performs requests of other conversations.
    void setIndependentConversationQueueing(bool waits);
    /// For requests that this side sends: how long reaching the other side, and how long its answer, may
    /// take. As made: for ever.
    void setRequestTimeout(double seconds);
    void setReplyTimeout(double seconds);
    double requestTimeout() const;
    double replyTimeout() const;

    /// False once the other side has gone away. For a vending connection always true.
    bool isValid();
    /// The process at the other end of a conversation; 0 for a vending connection.
    pid_t peerProcessIdentifier() const;

    /// For the transport.
    Internals& internals() { return *internals_; }

private:
    NSConnection();

    std::unique_ptr<Internals> internals_;
};

} // namespace kelvo
