#include "tools/load/LibraryLog.h"

#include <android/log.h>
#include <libxml/xmlerror.h>

namespace korva::tool {

namespace {

bool sVerbose = false;
std::vector<std::string> sErrors;

void keepLine(const struct __android_logger_data* data, const char* message) {
    if (data->priority >= ANDROID_LOG_ERROR && message != nullptr) {
        sErrors.emplace_back(message);
    }
    if (sVerbose) {
        __android_log_stderr_logger(data, message);
    }
}

// libxml2 prints its parser errors itself; the tool reports them in its own words instead.
void dropXmlError(void*, xmlErrorPtr) {}

}  // namespace

void LibraryLog::install(bool verbose) {
    sVerbose = verbose;
    __android_log_set_logger(keepLine);
    if (verbose) {
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    }
    xmlSetStructuredErrorFunc(nullptr, dropXmlError);
}

std::vector<std::string> LibraryLog::takeErrors() {
    std::vector<std::string> errors;
    errors.swap(sErrors);
    return errors;
}

}  // namespace korva::tool
