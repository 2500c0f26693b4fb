#pragma once

#include <string>

#include <sys/types.h>

namespace kelvo {

/// A private X server without a screen, for an engine that will not draw without one. It ends with this
/// process, however that ends.
class DisplayServer {
public:
    /// Starts the server; does not wait for it.
    DisplayServer();
    DisplayServer(const DisplayServer&) = delete;
    DisplayServer& operator=(const DisplayServer&) = delete;
    ~DisplayServer();

    /// Waits until the server can be reached, at most that long, and gives the name of its display (":7");
    /// empty when there is no server.
    std::string waitForDisplay(int timeoutMilliseconds);

private:
    pid_t process_ = 0;
    int nameDescriptor_ = -1;
};

} // namespace kelvo
