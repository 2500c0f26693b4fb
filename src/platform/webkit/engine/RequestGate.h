#pragma once

#include <glib.h>

#include <functional>
#include <string>

#include <sys/types.h>

namespace kelvo {

/// What the extension in a web process says of a request before it is sent.
struct GateQuestion {
    std::string url;
    /// Both unset unless the request follows a redirect.
    std::string redirectedFrom;
    int statusCode = 0;
};

/// Where the extension in a web process asks whether a request may be sent: a socket in a folder of its own,
/// which a sandbox can be given. Both are there only until the one process has connected that they are meant
/// for, so that nothing is left behind by an engine that is killed.
class RequestGate {
public:
    /// Gives the address to send to; the empty string refuses the request.
    using Decision = std::function<std::string(const GateQuestion&)>;

    /// `folder` is this process's alone; it is made again when it is gone.
    RequestGate(std::string folder, Decision decide);
    RequestGate(const RequestGate&) = delete;
    RequestGate& operator=(const RequestGate&) = delete;
    ~RequestGate();

    const std::string& folder() const noexcept { return folder_; }
    /// For the extension.
    std::string socketPath() const { return folder_ + "/gate"; }
    /// Before a web process is started: it and no other can connect. Whatever was connected before is cut
    /// off.
    bool openForOne();
    void close();
    /// The process that has connected, 0 before.
    pid_t peerProcess() const noexcept { return peer_; }

private:
    static gboolean accept(gint descriptor, GIOCondition condition, gpointer self);
    static gboolean serve(gint descriptor, GIOCondition condition, gpointer self);
    bool answerOne();
    void stopListening();
    void disconnect();

    std::string folder_;
    Decision decide_;
    int listening_ = -1;
    guint listeningSource_ = 0;
    int connected_ = -1;
    guint connectedSource_ = 0;
    pid_t peer_ = 0;
};

} // namespace kelvo
