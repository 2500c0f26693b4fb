#pragma once

#include <string>

#include <sys/types.h>

namespace kelvo {

/// A private X server without a screen, for an engine that will not draw without one. It ends with this
/// process, however that ends.
///
/// An X server without authority takes every user of the machine for a client, and a client can have others
/// load libraries. This one takes whoever shows its cookie.
class DisplayServer {
public:
    /// Starts the server; does not wait for it. The cookie, random bytes, is written to the file
    /// `authorityPath`, in a folder that is this user's alone, and has to stay there. `screen` is the size of
    /// what is not seen ("640x480x24").
    DisplayServer(std::string authorityPath, const char* screen);
    DisplayServer(const DisplayServer&) = delete;
    DisplayServer& operator=(const DisplayServer&) = delete;
    ~DisplayServer();

    /// Waits until the server can be reached, at most that long, and gives the name of its display (":7");
    /// empty when there is no server.
    std::string waitForDisplay(int timeoutMilliseconds);
    /// Where the authority file is that its clients need (XAUTHORITY).
    const std::string& authorityPath() const noexcept { return authorityPath_; }

private:
    std::string authorityPath_;
    pid_t process_ = 0;
    int nameDescriptor_ = -1;
};

} // namespace kelvo
