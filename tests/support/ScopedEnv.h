#pragma once

#include <cstdlib>
#include <optional>
#include <string>

// An environment variable for one scope: set to a value (or only remembered, for code that
// sets it later); its old value, or its absence, comes back when the scope ends.
class ScopedEnv {
public:
    explicit ScopedEnv(const char* name) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
    }
    ScopedEnv(const char* name, const std::string& value) : ScopedEnv(name) {
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv() {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};
