#pragma once

#include <pthread.h>

// One mutex, recursive or not as chosen at construction. Also usable with std::lock_guard.
class LLockObject {
public:
    explicit LLockObject(bool recursive);
    ~LLockObject();
    LLockObject(const LLockObject&) = delete;
    LLockObject& operator=(const LLockObject&) = delete;

    void Lock() { pthread_mutex_lock(&mutex_); }
    void Unlock() { pthread_mutex_unlock(&mutex_); }

    void lock() { Lock(); }
    void unlock() { Unlock(); }

private:
    pthread_mutex_t mutex_;
};
