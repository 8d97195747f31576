#include "jobs/LockObject.h"

LLockObject::LLockObject(bool recursive) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes,
                              recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_DEFAULT);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

LLockObject::~LLockObject() {
    pthread_mutex_destroy(&mutex_);
}
