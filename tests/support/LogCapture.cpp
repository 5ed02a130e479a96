#include "LogCapture.h"

#include <android/log.h>

#include <algorithm>
#include <mutex>

namespace korva::test {

namespace {

std::mutex sMutex;
std::vector<LogLine> sLines;

void capture(const struct __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(sMutex);
    sLines.push_back(
        {data->priority, data->tag != nullptr ? data->tag : "", message != nullptr ? message : ""});
}

}  // namespace

LogCapture::LogCapture() {
    clear();
    __android_log_set_logger(capture);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

LogCapture::~LogCapture() {
    __android_log_set_logger(__android_log_stderr_logger);
    __android_log_set_minimum_priority(ANDROID_LOG_INFO);
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(sMutex);
    return sLines;
}

std::vector<std::string> LogCapture::messages(const std::string& tag, int priority) const {
    std::vector<std::string> out;
    for (const LogLine& line : lines()) {
        if ((tag.empty() || line.tag == tag) && (priority < 0 || line.priority == priority)) {
            out.push_back(line.message);
        }
    }
    return out;
}

size_t LogCapture::count(const std::string& message, const std::string& tag) const {
    const std::vector<std::string> all = messages(tag);
    return std::count(all.begin(), all.end(), message);
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(sMutex);
    sLines.clear();
}

}  // namespace korva::test
