// Property tables, the last error and its texts, the debug log and the file layer.
#include "core/core.h"
#include "core/messages.h"
#include "picture_assets.h"
#include "support/driver_fixture.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace norvgl;
using nvtest::DriverTest;

// Every code's title as the host reads it, in buffers of the sizes the header names.
TEST_F(DriverTest, EachErrorCodeHasItsTitleAndBothTextsFitTheHostsBuffers) {
    const char* const titles[] = {
        "No error has occured",  "SetPixelFormat failed", "wglCreateContext failed",
        "wglMakeCurrent failed", "Bad property",          "Feature not supported",
        "File not found",        "Invalid file data",     "Invalid parameter",
        "Out of memory",         "Unknown error"};
    for (int code = ERR_NONE; code <= ERR_UNKNOWN; ++code) {
        ReportError(code, nullptr);
        char title[ERROR_TITLE_SIZE + 8];
        char details[ERROR_DETAILS_SIZE + 8];
        std::memset(title, 'x', sizeof title);
        std::memset(details, 'x', sizeof details);
        GFX_GetLastError(title, details);
        EXPECT_STREQ(title, titles[code]) << code;
        EXPECT_LT(std::strlen(title), std::size_t{ERROR_TITLE_SIZE}) << code;
        EXPECT_LT(std::strlen(details), std::size_t{ERROR_DETAILS_SIZE}) << code;
        // A report is logged for every code but none.
        EXPECT_EQ(log().find(std::string("Error report: ") + titles[code]) != std::string::npos,
                  code != ERR_NONE)
            << code;
    }
}

TEST_F(DriverTest, ReportErrorIgnoresUnknownCodesAndLeavesBuffersForNegativeOnes) {
    ReportError(ERR_FILE_NOT_FOUND, "file %s", "a.bmp");
    ReportError(11, "never");
    char title[ERROR_TITLE_SIZE];
    GFX_GetLastError(title, nullptr);
    EXPECT_STREQ(title, "File not found");
    EXPECT_EQ(log().find("never"), std::string::npos);
    EXPECT_NE(log().find("Error details: file a.bmp\r\n"), std::string::npos);

    const std::string before = log();
    ReportError(-3, nullptr);
    std::strcpy(title, "untouched");
    char details[ERROR_DETAILS_SIZE] = "untouched";
    GFX_GetLastError(title, details);
    EXPECT_STREQ(title, "untouched");
    EXPECT_STREQ(details, "untouched");
    EXPECT_EQ(log(), before);
}

TEST_F(DriverTest, LogLinesAppendWithCrLfAndLongLinesAreCut) {
    const std::string before = log();
    DebugLog("one");
    DebugLog("two %d", 2);
    DebugLog("%s", "three");
    const std::string three = "one\r\ntwo 2\r\nthree\r\n";
    EXPECT_EQ(log(), before + three);

    // An entry keeps at most 2045 characters before its CR LF, around the limit as far off.
    for (const std::size_t length : {2044u, 2045u, 2046u, 2047u, 5000u}) {
        const std::size_t seen = log().size();
        DebugLog("%s", std::string(length, 'x').c_str());
        const std::size_t kept = std::min<std::size_t>(length, 2045);
        EXPECT_EQ(log().substr(seen), std::string(kept, 'x') + "\r\n") << length;
    }

    ReportError(ERR_UNKNOWN, "%s", std::string(5000, 'x').c_str());
    EXPECT_EQ(log().substr(log().size() - 2), "\r\n");
}

TEST_F(DriverTest, FileLayer) {
    std::intptr_t handle = 12345;
    EXPECT_EQ(FileOpen(&handle, "missing.bin", FILE_READ), 1);
    EXPECT_EQ(FileOpen(&handle, "any.bin", 0), 1);
    EXPECT_EQ(FileOpen(&handle, "any.bin", 8 | 64), 1);
    EXPECT_EQ(handle, 12345);

    ASSERT_EQ(FileOpen(&handle, "data.bin", FILE_WRITE), 0);
    EXPECT_EQ(FileWrite("abcdef", 6, handle), 0);
    FileClose(handle);
    ASSERT_EQ(FileOpen(&handle, "data.bin", FILE_READ | FILE_WRITE), 0);
    EXPECT_EQ(FileSize(handle), 6u);
    void* block = nullptr;
    EXPECT_EQ(FileReadAll(&block, 6, handle), 0);
    EXPECT_EQ(std::memcmp(block, "abcdef", 6), 0);
    EXPECT_EQ(FileRead(block, 1, handle), 1); // at the end: a short read fails
    FileClose(handle);
    EXPECT_EQ(MemFree(&block), 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(MemFree(&block), 1);
    EXPECT_EQ(FileReadAll(nullptr, 6, handle), 1);

    ASSERT_EQ(FileOpen(&handle, "data.bin", FILE_APPEND), 0);
    FileWrite("gh", 2, handle);
    FileClose(handle);
    EXPECT_EQ(norvgl::assets::readText("data.bin"), "abcdefgh");
    // With several mode bits the lowest decides: writing, which truncates.
    ASSERT_EQ(FileOpen(&handle, "data.bin", FILE_APPEND | FILE_WRITE), 0);
    FileClose(handle);
    EXPECT_EQ(norvgl::assets::readText("data.bin"), "");
}

TEST_F(DriverTest, ClockSecondsUsesTheSinglePrecisionMillisecondFactor) {
    const double a = ClockSeconds();
    const double b = ClockSeconds();
    EXPECT_GE(b, a);
    // Every value is a whole tick count times 0.001f widened, not 0.001.
    const double ticks = a / static_cast<double>(0.001f);
    EXPECT_DOUBLE_EQ(ticks, static_cast<double>(static_cast<std::uint32_t>(ticks + 0.5)));
}

extern "C" int norvgl_header_is_c90(void);
extern "C" int norvgl_header_is_c17(void);
extern "C" int norvgl_header_is_c23(void);

TEST(Header, IsUsableFromCOfEveryStandard) {
    EXPECT_EQ(norvgl_header_is_c90(), 1);
    EXPECT_EQ(norvgl_header_is_c17(), 1);
    EXPECT_EQ(norvgl_header_is_c23(), 1);
}
