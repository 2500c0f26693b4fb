#pragma once

namespace kelvo {

/// Lets this process open as many files and sockets as the system allows it. The programs that it starts get
/// the limit that it was started with: some go through all numbers below theirs, or cannot wait on large
/// ones.
void raiseDescriptorLimit();

/// While it lives, the limit is as it was before raiseDescriptorLimit. What is open stays open.
class FormerDescriptorLimit {
public:
    FormerDescriptorLimit();
    FormerDescriptorLimit(const FormerDescriptorLimit&) = delete;
    FormerDescriptorLimit& operator=(const FormerDescriptorLimit&) = delete;
    ~FormerDescriptorLimit();
};

} // namespace kelvo
