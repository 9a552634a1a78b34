#include "stack/stack.h"

#include "corvane/platform/workers.h"
#include "stack/stack_job.h"

namespace corvane::stack {

Result Stack(const Options& options, const Run& run)
{
    const platform::KeptThreads threads(run.Threads());
    StackJob job(options, run);
    job.Register();
    return job.Finish(job.Combine({0, job.Rows()}));
}

Registration Register(const Options& options, const Run& run)
{
    Registration result;
    Stopwatch stopwatch(result.laps);
    PreparedLights(options, result, stopwatch, run).Register();
    return result;
}

} // namespace corvane::stack
