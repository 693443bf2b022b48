// Driver and render property tables, the last error with its table of texts, and the library
// entry that initialises them. Every failure of the driver is recorded through ReportError.
#include "core/core.h"
#include "core/messages.h"

#include <cstdio>
#include <cstring>

namespace norvgl {

DriverState driver = {};

namespace {

const ErrorEntry* findError(std::int32_t code) {
    for (const ErrorEntry& entry : kErrorTable)
        if (entry.code == code)
            return &entry;
    return nullptr;
}

void resetTables() {
    std::memset(driver.properties, 0, sizeof driver.properties);
    std::memset(driver.renderProperties, 0, sizeof driver.renderProperties);
    driver.properties[PROP_DRIVER_NAME] = reinterpret_cast<std::intptr_t>(kDriverName);
    driver.properties[PROP_DRIVER_VERSION] = reinterpret_cast<std::intptr_t>(kDriverVersion);
    driver.properties[PROP_SPARE] = -1;
    driver.properties[PROP_ENABLED] = -1;
    driver.properties[PROP_MODE_CURSOR] = 0;
    driver.renderProperties[RPROP_DEPTH_TEST] = -1;
    driver.renderProperties[RPROP_SPARE] = -1;
}

} // namespace

static_assert(kErrorTable[kErrorCount - 1].code == ERR_UNKNOWN && kErrorCount == ERR_UNKNOWN + 1,
              "error table must have one row per code");

void libraryAttach() {
    DebugLog("%s", kBannerStars);
    DebugLog("%s", kBannerEntry);
    resetTables();
    driver.clientWidth = driver.clientHeight = 0;
    driver.objectIdCounter = 0;
    driver.objectIdHeld = nullptr;
    ReportError(ERR_NONE, nullptr);
}

std::uint32_t IssueObjectId() {
    std::uint32_t id = driver.objectIdCounter;
    do {
        ++id;
    } while (id == 0 || (driver.objectIdHeld && driver.objectIdHeld(id)));
    driver.objectIdCounter = id;
    return id;
}

void ReturnObjectId(std::uint32_t id) {
    if (id != 0 && driver.objectIdCounter == id)
        driver.objectIdCounter = id - 1;
}

void SetObjectIdHeldCheck(bool (*held)(std::uint32_t id)) {
    driver.objectIdHeld = held;
}

void ReportError(std::int32_t code, const char* detailFormat, ...) {
    if (code >= kErrorCount)
        return;
    driver.lastError = code;
    char detail[kErrorDetailSize];
    if (detailFormat) {
        va_list args;
        va_start(args, detailFormat);
        std::vsnprintf(detail, sizeof detail, detailFormat, args); // truncates what does not fit
        va_end(args);
    } else {
        std::snprintf(detail, sizeof detail, "%s", kNoDetail);
    }
    if (code == ERR_NONE)
        return;
    const ErrorEntry* entry = findError(code);
    if (!entry)
        return;
    DebugLog(kErrorReportFormat, entry->title, entry->details, detail);
}

void getLastError(char* title, char* details) {
    const ErrorEntry* entry = findError(driver.lastError);
    if (!entry)
        return;
    if (title)
        std::strcpy(title, entry->title);
    if (details)
        std::strcpy(details, entry->details);
}

std::intptr_t getProperty(std::uint32_t index) {
    if (index >= kDriverPropertyCount) {
        ReportError(ERR_BAD_PROPERTY, nullptr);
        return 1;
    }
    return driver.properties[index];
}

int setProperty(std::uint32_t index, std::intptr_t value) {
    if (index >= kDriverPropertyCount) {
        ReportError(ERR_BAD_PROPERTY, nullptr);
        return 1;
    }
    driver.properties[index] = value;
    return 0;
}

int getRenderProperty(std::int32_t index) {
    if (index < 0 || index >= kRenderPropertyCount) {
        ReportError(ERR_BAD_PROPERTY, nullptr);
        return 1;
    }
    return driver.renderProperties[index];
}

} // namespace norvgl
