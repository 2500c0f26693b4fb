#pragma once

namespace kelvo {

/// A library that is loaded when it is first needed: few files need it, and it would make every engine larger and
/// later. Once loaded it stays.
class LateLibrary {
public:
    /// A file name as the loader knows it.
    explicit LateLibrary(const char* fileName);

    /// Null, and the library not complete, where it is missing or has no such function. Of what type that is, its header
    /// says.
    template <typename Function>
    void find(Function*& function, const char* name) {
        function = reinterpret_cast<Function*>(address(name));
    }
    bool isComplete() const noexcept { return isComplete_; }

private:
    void* address(const char* name);

    void* handle_;
    bool isComplete_ = true;
};

} // namespace kelvo
