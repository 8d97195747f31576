#pragma once

#include "jobs/LockObject.h"

// The one lock of all tag reading and writing in the process. The wave chunk records and the
// cover image file are shared by every tag operation, so only one may run at a time; each
// operation takes the lock itself. A caller that reads one file's tags and writes them to
// another (carrying the bext coding history over) holds it across both calls. Recursive.
LLockObject& LAudioTagLock();
