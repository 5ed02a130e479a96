// Captures what the library writes to the Android log, so tests can assert on exact lines.
// Only one capture may be active at a time in a process; it restores stderr logging when it
// goes out of scope.
#pragma once

#include <string>
#include <vector>

namespace korva::test {

struct LogLine {
    int priority;
    std::string tag;
    std::string message;
};

class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    // Messages only, optionally only those of one tag.
    std::vector<std::string> messages(const std::string& tag = "") const;
    // Whether some line has exactly this message (and this tag, when one is given).
    bool contains(const std::string& message, const std::string& tag = "") const;
    size_t count(const std::string& message, const std::string& tag = "") const;
    void clear();
};

}  // namespace korva::test
