#include "corvane/platform/processors.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace corvane::platform {
namespace {

using Files = std::map<std::string, std::string>;

TEST(Processors, KeepToTheQuotaOfTheControlGroup)
{
    const std::string list = "/proc/self/cgroup";
    const std::string second = "/sys/fs/cgroup";
    const std::string first = second + "/cpu";
    const struct {
        const char* name;
        int processors;
        Files files;
    } cases[] = {
        {"nothing", 0, {}},
        {"none", 0, {{list, "0::/a/b\n"}, {second + "/a/b/cpu.max", "max 100000\n"}}},
        {"own", 3, {{list, "0::/a/b\n"}, {second + "/a/b/cpu.max", "250000 100000\n"}, {second + "/cpu.max", "max 1"}}},
        {"parent",
         1,
         {{list, "0::/a/b\n"}, {second + "/a/b/cpu.max", "9 2\n"}, {second + "/a/cpu.max", "40000 100000"}}},
        {"root", 2, {{list, "0::/\n"}, {second + "/cpu.max", "200000 100000\n"}}},
        {"first",
         4,
         {{list, "5:memory:/m\n4:cpu,cpuacct:/a\n0::/\n"},
          {first + "/m/cpu.cfs_quota_us", "1"},
          {first + "/a/cpu.cfs_quota_us", "-1\n"},
          {first + "/a/cpu.cfs_period_us", "100000\n"},
          {first + "/cpu.cfs_quota_us", "400000\n"},
          {first + "/cpu.cfs_period_us", "100000\n"}}},
    };
    std::string folder = (std::filesystem::temp_directory_path() / "corvane-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    for (const auto& [name, processors, files] : cases) {
        const std::string root = folder + '/' + name;
        for (const auto& [file, text] : files) {
            const std::filesystem::path path = root + file;
            std::filesystem::create_directories(path.parent_path());
            std::ofstream(path) << text;
        }
        EXPECT_EQ(ProcessorQuota(root), processors) << name;
    }
    std::filesystem::remove_all(folder);
    EXPECT_GE(AvailableProcessors(), 1);
}

} // namespace
} // namespace corvane::platform
