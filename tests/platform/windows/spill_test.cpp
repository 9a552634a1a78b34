#include <filesystem>

#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "tests/support/images.h"
#include "tests/support/storage.h"

using namespace corvane;

namespace {

TEST(SystemFile, HoldsWhatIsBeyondTheBudgetInAFolderOfAnyName)
{
    const test::TightMemory tight(1 << 20);
    const std::filesystem::path folder = tight.Folder() / L"Bilder \u00e4\u661f";
    std::filesystem::create_directory(folder);
    SetSpillFolder({});
    SetEnvironmentVariableW(L"CORVANE_SPILL_DIR", folder.c_str());
    EXPECT_EQ(SpillFolder(), folder.string());
    {
        const auto value = [](int x, int y, int p) { return x + 2 * y + 1000 * p; };
        const CStlImage image = test::Make(700, 900, 3, value); // 7.2 MiB
        const std::filesystem::directory_iterator file(folder);
        ASSERT_NE(file, std::filesystem::directory_iterator());
        EXPECT_EQ(file->file_size(), 700U * 900U * 3U * sizeof(float));
        EXPECT_LT(MemoryInUse(), file->file_size());
        for (int i = 0; i < 700 * 900 * 3; ++i) {
            const int x = i % 700;
            const int y = i / 700 % 900;
            const int p = i / 700 / 900;
            ASSERT_EQ(image.GetPixelGrayRaw(x, y, p), value(x, y, p));
        }
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    SetEnvironmentVariableW(L"CORVANE_SPILL_DIR", nullptr);
    EXPECT_EQ(SpillFolder(), std::filesystem::temp_directory_path().string());
}

} // namespace
