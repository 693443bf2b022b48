// The scenario programs' entry and shared helpers. With NORVGL_SCENARIO_OUT set, the program
// also writes results.txt there: one line per test with its outcome, for the comparison of
// one system's run with the other's.
#include "scenario.h"
#include "scenario_gl.h"

#include "picture_assets.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

namespace scenario {

namespace {

// Each test's outcome and the log entries it caused. Test programs built by different
// toolchains register their tests in different orders, so each block stands on its own.
class ResultsFile : public ::testing::EmptyTestEventListener {
public:
    explicit ResultsFile(const std::string& path) : out_(path, std::ios::binary) {}

private:
    void OnTestProgramStart(const ::testing::UnitTest&) override {
        out_ << "(load)\n";
        writeLog(log_.appended());
    }
    void OnTestStart(const ::testing::TestInfo&) override { log_.appended(); }
    void OnTestEnd(const ::testing::TestInfo& test) override {
        const ::testing::TestResult& result = *test.result();
        const char* outcome = result.Skipped() ? "skipped" : result.Passed() ? "passed" : "failed";
        out_ << test.test_suite_name() << '.' << test.name() << ' ' << outcome << '\n';
        writeLog(log_.appended());
        out_.flush();
    }
    // One line per log line, its carriage return shown, indented under the test.
    void writeLog(const std::string& text) {
        std::size_t start = 0;
        while (start < text.size()) {
            std::size_t end = text.find('\n', start);
            end = end == std::string::npos ? text.size() : end + 1;
            std::string line = text.substr(start, end - start);
            for (std::size_t cr = line.find('\r'); cr != std::string::npos;
                 cr = line.find('\r', cr))
                line.replace(cr, 1, "\\r");
            out_ << "  " << line;
            if (line.empty() || line.back() != '\n')
                out_ << '\n';
            start = end;
        }
    }
    std::ofstream out_;
    LogWatch log_{0};
};

} // namespace

std::string errorReport(const std::string& title, const std::string& details) {
    return "Norvgl: Error report: " + title + ": " + details + "\r\nError details: (none)\r\n";
}

LastError lastError() {
    return lastErrorOf(&GFX_GetLastError);
}

LogWatch::LogWatch() : seen_(norvgl::assets::readText("debuglog.txt").size()) {}

LogWatch::LogWatch(std::size_t seen) : seen_(seen) {}

std::string LogWatch::appended() {
    const std::string log = norvgl::assets::readText("debuglog.txt");
    const std::string added = log.size() > seen_ ? log.substr(seen_) : std::string();
    seen_ = log.size();
    return added;
}

std::string outputPath(const std::string& file) {
    const char* directory = std::getenv("NORVGL_SCENARIO_OUT");
    if (!directory || !*directory)
        return "";
    return (std::filesystem::path(directory) / file).string();
}

bool saveCapture(const std::string& name, const Image& image) {
    const std::string path = outputPath(name + ".ppm");
    return path.empty() || image.savePpm(path);
}

void WindowScenario::SetUp() {
    window_ = std::make_unique<HostWindow>(width_, height_);
    GFX_SetProperty(PROP_WINDOW, window_->handle());
    ASSERT_EQ(GFX_Init(), 0);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
}

void WindowScenario::TearDown() {
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);
    GFX_Destroy();
    window_.reset();
    GFX_SetProperty(PROP_WINDOW, 0);
}

void WindowScenario::beginNearToFarFrame() {
    GFX_BeginRender();
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    if (function != GL_LESS) {
        GFX_EndRender();
        GFX_BeginRender();
    }
}

Image WindowScenario::endFrame() {
    GFX_EndRender();
    Image image = window_->capture();
    EXPECT_FALSE(image.empty()) << "the window could not be captured";
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(test->test_suite_name()) + "." + test->name() + "-" +
                             std::to_string(captures_++);
    EXPECT_TRUE(saveCapture(name, image)) << name;
    if (image.empty()) {
        image.width = window_->clientWidth();
        image.height = window_->clientHeight();
        image.pixels.assign(static_cast<std::size_t>(image.width) * image.height, {});
    }
    return image;
}

ScratchDirectory::ScratchDirectory() {
    std::random_device random;
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("norvgl-scenario-" + std::to_string(random()));
    std::filesystem::create_directories(path);
    path_ = path.string();
    previous_ = std::filesystem::current_path().string();
    std::filesystem::current_path(path);
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(previous_, ignored);
    std::filesystem::remove_all(path_, ignored);
}

} // namespace scenario

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const std::string results = scenario::outputPath("results.txt");
    if (!results.empty())
        ::testing::UnitTest::GetInstance()->listeners().Append(new scenario::ResultsFile(results));
    return RUN_ALL_TESTS();
}
