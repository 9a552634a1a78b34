#include "corvane/platform/processors.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <thread>

#include <sched.h>

namespace corvane::platform {
namespace {

/// The first word of a file as a number; 0 for other words ("max") and without the file.
double FirstNumber(const std::string& name)
{
    double number = 0.0;
    std::ifstream(name) >> number;
    return number;
}

/// The quota of one group in processors; 0 or less for none.
double QuotaOf(const std::string& folder, bool isFirstVersion)
{
    if (isFirstVersion) { // a quota of -1 is none
        return FirstNumber(folder + "/cpu.cfs_quota_us") / std::max(FirstNumber(folder + "/cpu.cfs_period_us"), 1.0);
    }
    double quota = 0.0;
    double period = 0.0;
    std::ifstream(folder + "/cpu.max") >> quota >> period;
    return quota / std::max(period, 1.0);
}

/// The smallest quota of a group and those about it, up to the root of the hierarchy.
double LeastQuota(const std::string& hierarchy, std::string group, bool isFirstVersion)
{
    double least = 0.0;
    for (;;) {
        const double quota = QuotaOf(hierarchy + group, isFirstVersion);
        least = quota > 0.0 && (least == 0.0 || quota < least) ? quota : least;
        if (group.empty()) {
            return least;
        }
        group.resize(std::min(group.rfind('/'), group.size() - 1));
    }
}

bool IsListed(const std::string& name, const std::string& commaList)
{
    return ("," + commaList + ",").find("," + name + ",") != std::string::npos;
}

} // namespace

// A line of the list of groups is "id:controllers:/group"; the second version has no controllers there.
int ProcessorQuota(const std::string& root)
{
    std::ifstream groups(root + "/proc/self/cgroup");
    double least = 0.0;
    for (std::string line; std::getline(groups, line);) {
        std::istringstream parts(line);
        std::string id;
        std::string controllers;
        std::string group;
        std::getline(std::getline(std::getline(parts, id, ':'), controllers, ':'), group);
        const bool isFirstVersion = !controllers.empty();
        if (isFirstVersion && !IsListed("cpu", controllers)) {
            continue;
        }
        const double quota =
            LeastQuota(root + "/sys/fs/cgroup" + (isFirstVersion ? "/cpu" : ""), group, isFirstVersion);
        least = quota > 0.0 && (least == 0.0 || quota < least) ? quota : least;
    }
    return static_cast<int>(std::ceil(std::min(least, 1e6)));
}

int AvailableProcessors()
{
    cpu_set_t ours;
    CPU_ZERO(&ours);
    const bool isKnown = sched_getaffinity(0, sizeof ours, &ours) == 0;
    const int processors = isKnown ? CPU_COUNT(&ours) : static_cast<int>(std::thread::hardware_concurrency());
    const int quota = ProcessorQuota("");
    return std::max(quota > 0 ? std::min(quota, processors) : processors, 1);
}

} // namespace corvane::platform
