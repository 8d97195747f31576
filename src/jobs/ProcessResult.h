#pragma once

// The outcome of a job. A result that has not been produced by a job yet holds PROCESS_FAILED.
enum LProcessResult : int {
    PROCESS_DONE = 0,    // the job ran to its end
    PROCESS_STOPPED = 1, // the job saw a stop request and returned early; its output so far stays
    PROCESS_FAILED = 2,  // bad input, a source in an error state, a write or burn error
};
