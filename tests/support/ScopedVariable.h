#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace kelvo::tests {

/// A variable of the environment that has another value, or none, until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ~ScopedVariable() { set(old_ ? old_->c_str() : nullptr); }

private:
    void set(const char* value) const {
        static_cast<void>(value ? ::setenv(name_, value, 1) : ::unsetenv(name_));
    }

    const char* name_;
    std::optional<std::string> old_;
};

} // namespace kelvo::tests
