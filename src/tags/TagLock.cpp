#include "tags/TagLock.h"

LLockObject& LAudioTagLock() {
    static LLockObject lock(true);
    return lock;
}
