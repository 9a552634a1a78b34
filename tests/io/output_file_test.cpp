#include "io/output_file.h"

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/io/files.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;
namespace fs = std::filesystem;

class Output : public InFolder {};

TEST_F(Output, AppearsWholeOrNotAtAll)
{
    Write("a", "old");
    OutputFile(Path("a")).Write("new text", 8);
    EXPECT_EQ(FileCount(), 1U);
    EXPECT_EQ(Read("a"), "old");

    constexpr fs::perms kOdd = fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read;
    fs::permissions(Path("a"), kOdd);
    OutputFile file(Path("a"));
    file.Write("new text", 8);
    file.Seek(4, SEEK_SET);
    file.Write("TE", 2);
    EXPECT_EQ(file.Seek(-3, SEEK_END), 5U);
    char back[8] = {};
    EXPECT_EQ(file.Read(back, sizeof back), 3U);
    file.Commit();
    EXPECT_EQ(Read("a"), "new TExt");
    EXPECT_EQ(fs::status(Path("a")).permissions(), kOdd);
    EXPECT_EQ(FileCount(), 1U);
}

TEST_F(Output, FollowsLinks)
{
    fs::create_directory(Path("elsewhere"));
    fs::create_symlink("elsewhere/target", Path("link")); // dangling at first
    for (const char* text : {"one", "two"}) {
        OutputFile file(Path("link"));
        file.Write(text, 3);
        file.Commit();
        EXPECT_TRUE(fs::is_symlink(Path("link")));
        EXPECT_EQ(Read("elsewhere/target"), text);
    }
}

TEST_F(Output, LeavesNothingOfKilledProcesses)
{
    const pid_t killed = fork();
    if (killed == 0) {
        OutputFile(Path("b")).Write("text", 4);
        OutputFile file(Path("b"));
        file.Write("text", 4);
        raise(SIGKILL);
    }
    waitpid(killed, nullptr, 0);
    char host[65] = "";
    gethostname(host, sizeof host - 1);
    const auto name = [&](const std::string& on, pid_t process) {
        return ".corvane-" + on + "-" + std::to_string(process) + "-1.tmp";
    };
    Write(name(host, killed), "stale");
    Write(name(host, getpid()), "of a living process");
    Write(name("elsewhere", killed), "of another machine");
    for (const char* text : {"one", "two"}) {
        OutputFile file(Path("a"));
        file.Write(text, 3);
        file.Commit();
    }
    EXPECT_FALSE(fs::exists(Path(name(host, killed))));
    EXPECT_EQ(FileCount(), 3U) << "what others may still write stays";
}

TEST_F(Output, RefusesWhatIsNoFile)
{
    ExpectError([&] { OutputFile::Check(Path("")); }, Path(""), "is a folder");
    ExpectError([&] { OutputFile::Check("/dev/null"); }, "/dev/null", "not an ordinary file");
}

} // namespace
