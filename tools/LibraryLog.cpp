#include "tools/LibraryLog.h"

#include <android/log.h>
#include <libxml/xmlerror.h>

namespace korva::tool {

namespace {

void dropLine(const struct __android_logger_data*, const char*) {}

// libxml2 prints its parser errors itself; the tool reports them in its own words instead.
void dropXmlError(void*, xmlErrorPtr) {}

}  // namespace

void LibraryLog::install(bool verbose) {
    if (verbose) {
        __android_log_set_logger(__android_log_stderr_logger);
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    } else {
        __android_log_set_logger(dropLine);
    }
    xmlSetStructuredErrorFunc(nullptr, dropXmlError);
}

}  // namespace korva::tool
