#include "LogCapture.h"

#include <android/log.h>

#include <mutex>

namespace korva::test {

namespace {

std::mutex sMutex;
std::vector<LogLine> sLines;

void capture(const struct __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(sMutex);
    sLines.push_back({data->priority, data->tag != nullptr ? data->tag : "",
                      message != nullptr ? message : ""});
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

std::vector<std::string> LogCapture::messages(const std::string& tag) const {
    std::vector<std::string> out;
    for (const LogLine& line : lines()) {
        if (tag.empty() || line.tag == tag) {
            out.push_back(line.message);
        }
    }
    return out;
}

size_t LogCapture::count(const std::string& message, const std::string& tag) const {
    size_t n = 0;
    for (const std::string& m : messages(tag)) {
        n += m == message ? 1 : 0;
    }
    return n;
}

bool LogCapture::contains(const std::string& message, const std::string& tag) const {
    return count(message, tag) > 0;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(sMutex);
    sLines.clear();
}

}  // namespace korva::test
