#include "io/output_file.h"

#include <csignal>

#include <sys/resource.h>

#include "io/frame.h"
#include "tests/io/files.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;
namespace fs = std::filesystem;

class Output : public InFolder {};

TEST_F(Output, AppearsWholeOrNotAtAll)
{
    Write("a", "old");
    {
        OutputFile file(Path("a"));
        file.Write("new text", 8);
        EXPECT_EQ(FileCount(), 2U);
        EXPECT_EQ(Read("a"), "old");
    }
    EXPECT_EQ(FileCount(), 1U);
    EXPECT_EQ(Read("a"), "old");

    fs::permissions(Path("a"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
    OutputFile file(Path("a"));
    file.Write("new text", 8);
    file.Seek(4, SEEK_SET);
    file.Write("TE", 2);
    EXPECT_EQ(file.Seek(-3, SEEK_END), 5U);
    char back[8] = {};
    EXPECT_EQ(file.Read(back, sizeof back), 3U);
    file.Commit();
    EXPECT_EQ(Read("a"), "new TExt");
    EXPECT_EQ(fs::status(Path("a")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
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

TEST_F(Output, RefusesBadPlaces)
{
    ExpectError([&] { OutputFile::Check(Path("")); }, Path(""), "is a folder");
    ExpectError([&] { OutputFile::Check(Path("no/a.fits")); }, Path("no/a.fits"), "there is no folder");
    ExpectError([&] { OutputFile::Check("/dev/null"); }, "/dev/null", "not an ordinary file");
    ExpectError([&] { CheckSave(Path("a.xyz")); }, Path("a.xyz"), "unknown format");
    EXPECT_EQ(FileCount(), 0U);
}

/// Stands in for a full disk: the system refuses to let files of the process grow further.
class SmallFiles {
public:
    SmallFiles()
    {
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit small{20000, old_.rlim_max};
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles()
    {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit old_{};
    void (*handler_)(int) = nullptr;
};

TEST_F(Output, AFullDiskLeavesTheOldFile)
{
    const CStlImage image = Numbered(500, 500, 3);
    for (const char* name : {"a.fits", "a.tif", "a.png"}) {
        Write(name, "old");
        {
            const SmallFiles full;
            ExpectError([&] { Save(Path(name), image, {}); }, Path(name), "cannot be written: ");
        }
        EXPECT_EQ(Read(name), "old");
    }
    EXPECT_EQ(FileCount(), 3U) << "nothing is left behind";
}

} // namespace
